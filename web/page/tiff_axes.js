// What the pages of a TIFF file are: channels, slices and times, and the size of a pixel.
import { decimal, micrometres, squareSize } from "./length_unit.js";
import { isOmeXml, omeAxes } from "./ome_xml.js";

const SCREEN = 20; // micrometres from which a resolution is that of a screen or a printer
const RESOLUTION_UNITS = { 2: "inch", 3: "cm" };

// The shortest decimal number that is nearest to the same number of 32 bits.
function shortestSingle(value) {
  const single = Math.fround(value);
  for (let digits = 1; digits < 9; ++digits) {
    const shorter = Number(single.toPrecision(digits));
    if (Math.fround(shorter) === single) return shorter;
  }
  return Number(single.toPrecision(9));
}

// A resolution has 32 bits in the file; its size has the digits that such a number has.
function sideOf(resolution, unit) {
  const side = resolution > 0 ? micrometres(1 / resolution, unit) : undefined;
  const shorter = side === undefined ? 0 : shortestSingle(side);
  return shorter > 0 && Number.isFinite(shorter) ? shorter : side;
}

// Pages without a description are slices.
function plainAxes(facts) {
  const unit = RESOLUTION_UNITS[facts.resolutionUnit] ?? "";
  const [x, y] = [sideOf(facts.xResolution, unit), sideOf(facts.yResolution, unit)];
  return {
    channels: 1,
    slices: facts.pages,
    times: 1,
    channelNames: [],
    pixelSize: x < SCREEN && y < SCREEN ? squareSize(x, y) : undefined,
    pageOf: ({ z }) => z,
  };
}

// ImageJ writes characters beyond ASCII as \uXXXX.
const unescaped = (text) => text.replace(/\\u([0-9a-fA-F]{4})/g, (_, digits) => String.fromCharCode(Number.parseInt(digits, 16)));

// Channels vary fastest from page to page, then slices, then times.
function imageJAxes(description, facts) {
  const axes = plainAxes(facts);
  const field = (name) => new RegExp(`\n${name}=([^\r\n]*)`).exec(description)?.[1] ?? "";
  const count = (name) => (/^[1-9]\d{0,8}$/.test(field(name)) ? Number(field(name)) : 1);
  const sizes = { channels: count("channels"), slices: count("slices"), times: count("frames") };
  if (sizes.channels * sizes.slices * sizes.times === facts.pages) {
    Object.assign(axes, sizes, { pageOf: ({ c, z, t }) => c + sizes.channels * (z + sizes.slices * t) });
  }
  const unit = unescaped(field("unit"));
  if (unit) axes.pixelSize = squareSize(sideOf(facts.xResolution, unit), sideOf(facts.yResolution, unit));
  return axes;
}

// The planes that ImageJ puts behind the only page of stacks above 4 GB.
export function requireNoPlanesBehind(description, facts) {
  const planes = description.startsWith("ImageJ=") ? (decimal(/\nimages=(\d+)/.exec(description)?.[1]) ?? 1) : 1;
  if (facts.pages > 1 || planes < 2 || !facts.hasRoomForTwo) return;
  throw new Error(
    `is a TIFF file with ${planes} planes in one page, as ImageJ writes stacks of over 4 GB, of which only the first could be read; save each plane as a page of its own`,
  );
}

// `facts` of the first page: {pages, samplesPerColour, xResolution, yResolution, resolutionUnit}.
// Returns {channels, slices, times, channelNames, pixelSize, statedSize, pageOf({c, z, t})}, where pageOf() is
// undefined for a plane that the file lacks.
export function tiffAxes(description, facts) {
  if (description.startsWith("ImageJ=")) return imageJAxes(description, facts);
  return isOmeXml(description) ? omeAxes(description, facts) : plainAxes(facts);
}
