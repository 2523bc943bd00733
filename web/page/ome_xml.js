// The planes of an OME-TIFF file, from the description of its first page.
import { decimal, micrometres, squareSize } from "./length_unit.js";

const MAX_PLANES = 2 ** 24;

function fail(what) {
  throw new Error(`is an OME-TIFF file whose OME-XML is wrong: ${what}`);
}

const childrenOf = (node, name) => [...node.children].filter((child) => child.localName === name);

// A whole number from `min` to `max`; undefined where the attribute is missing.
function numberOf(node, name, min, max) {
  const text = node.getAttribute(name);
  if (text === null) return undefined;
  const value = /^-?\d+$/.test(text) ? Number(text) : NaN;
  if (!(value >= min && value <= max)) fail(`${name} is "${text.slice(0, 40)}"`);
  return value;
}

function sizeOf(pixels, name) {
  return numberOf(pixels, name, 1, 2 ** 31 - 1) ?? fail(`${name} is missing`);
}

// {C, Z, T, samples}: planes along each axis, and the samples of each plane.
function sizesOf(pixels, channels, { samplesPerColour }) {
  const sizeC = sizeOf(pixels, "SizeC");
  const sizes = { C: sizeC, Z: sizeOf(pixels, "SizeZ"), T: sizeOf(pixels, "SizeT"), samples: 1 };
  if (sizes.C * sizes.Z * sizes.T > MAX_PLANES) fail("it has too many planes");
  const samples = channels.map((channel) => numberOf(channel, "SamplesPerPixel", 1, sizeC) ?? 1);
  if (new Set(samples).size > 1) {
    throw new Error(
      "is an OME-TIFF file whose channels differ in SamplesPerPixel, which is not read; save each channel as a page of its own",
    );
  }
  sizes.samples = samples[0] ?? 1;
  // Some writers state no channel for colour.
  if (sizes.samples === 1 && samplesPerColour > 1 && sizeC % samplesPerColour === 0) sizes.samples = samplesPerColour;
  if (sizeC % sizes.samples !== 0) fail("SizeC does not fit SamplesPerPixel");
  sizes.C = sizeC / sizes.samples;
  return sizes;
}

// The axes that vary from page to page, the fastest first: of "XYCZT" these are C, Z and T.
function orderOf(pixels) {
  const order = pixels.getAttribute("DimensionOrder") ?? "";
  if (!/^XY(?=.*C)(?=.*Z)(?=.*T)...$/.test(order)) fail(`DimensionOrder is "${order.slice(0, 40)}"`);
  return [...order.slice(2)];
}

// A file may name itself in every TiffData element.
function requireOneFile(ome, parts) {
  const [only] = childrenOf(ome, "BinaryOnly");
  if (only) {
    const file = only.getAttribute("MetadataFile") ?? "another file";
    throw new Error(`is one file of an OME-TIFF set whose description is in ${file}; save the set as a single file`);
  }
  const own = ome.getAttribute("UUID");
  const others = new Map();
  for (const uuid of parts.flatMap((part) => childrenOf(part, "UUID"))) {
    if (!own || uuid.textContent !== own) others.set(uuid.textContent, uuid.getAttribute("FileName") ?? "another file");
  }
  // Without a name of its own, the only file that is named is this one.
  if (others.size === 0 || (!own && others.size === 1)) return;
  const names = [...new Set(others.values())].sort();
  const list = names.slice(0, 3).join(", ") + (names.length > 3 ? " and others" : "");
  throw new Error(`is one file of an OME-TIFF set, with planes in ${list}; save the set as a single file`);
}

// The page of each plane by the place of the plane in the order of the axes.
function pagesOf(parts, { count, strides, sizes, pages }) {
  if (parts.length === 0) return Array.from({ length: Math.min(count, pages) }, (_, i) => i);
  const result = [];
  for (const part of parts) {
    const page = numberOf(part, "IFD", 0, pages - 1);
    const c = numberOf(part, "FirstC", 0, sizes.C * sizes.samples - 1) ?? 0;
    const z = numberOf(part, "FirstZ", 0, sizes.Z - 1) ?? 0;
    const t = numberOf(part, "FirstT", 0, sizes.T - 1) ?? 0;
    const firstPage = page ?? 0;
    const first = Math.floor(c / sizes.samples) * strides.C + z * strides.Z + t * strides.T;
    const most = Math.min(pages - firstPage, count - first);
    const stated = numberOf(part, "PlaneCount", 0, MAX_PLANES);
    if (stated > most) {
      fail(`it describes ${stated} planes from page ${firstPage} on, and the file has ${pages} pages`);
    }
    const planes = stated ?? (page === undefined ? most : 1);
    for (let i = 0; i < planes; ++i) result[first + i] = firstPage + i;
  }
  return result;
}

export function isOmeXml(description) {
  const text = description.replace(/[\s\0]+$/, "");
  if (!/^\ufeff?</.test(text)) return false;
  const at = text.indexOf("<OME ");
  return text.endsWith("OME>") || (at >= 0 && at < 1000);
}

// As tiffAxes().
export function omeAxes(description, facts) {
  const xml = new DOMParser().parseFromString(description.replace(/^\ufeff|[\s\0]+$/g, ""), "text/xml");
  const ome = xml.documentElement;
  if (xml.querySelector("parsererror")) fail("it is no XML");
  if (ome.localName !== "OME") fail("it has no OME element");
  requireOneFile(ome, []);
  const images = childrenOf(ome, "Image");
  if (images.length === 0) fail("it has no Image");
  if (images.length > 1) throw new Error(`holds ${images.length} images; save the one to be searched as a file of its own`);
  const [pixels] = childrenOf(images[0], "Pixels");
  if (!pixels) fail("its image has no Pixels");
  const parts = childrenOf(pixels, "TiffData");
  requireOneFile(ome, parts);
  const channels = childrenOf(pixels, "Channel");
  const sizes = sizesOf(pixels, channels, facts);
  const strides = {};
  let count = 1; // of planes
  for (const axis of orderOf(pixels)) {
    strides[axis] = count;
    count *= sizes[axis];
  }
  const pages = pagesOf(parts, { count, strides, sizes, pages: facts.pages });
  const side = (axis) => {
    const size = decimal(pixels.getAttribute(`PhysicalSize${axis}`));
    return micrometres(size, pixels.getAttribute(`PhysicalSize${axis}Unit`) ?? "um");
  };
  return {
    channels: sizes.C,
    slices: sizes.Z,
    times: sizes.T,
    channelNames: channels.map((channel) => channel.getAttribute("Name") ?? ""),
    pixelSize: squareSize(side("X"), side("Y")),
    statedSize: { width: sizeOf(pixels, "SizeX"), height: sizeOf(pixels, "SizeY") },
    pageOf: ({ c, z, t }) => pages[c * strides.C + z * strides.Z + t * strides.T],
  };
}
