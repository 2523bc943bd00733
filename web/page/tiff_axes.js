// What the pages of a TIFF file are: channels, slices and times, and the size of a pixel.

const UNITS = {
  m: 1e6, cm: 1e4, mm: 1e3, micron: 1, microns: 1, micrometer: 1, micrometers: 1, micrometre: 1, micrometres: 1,
  um: 1, "\u00b5m": 1, "\u03bcm": 1, "\\u00B5m": 1, nm: 1e-3, pm: 1e-6, inch: 25400, in: 25400,
};
const SCREEN = 20; // micrometres from which a resolution is that of a screen or a printer

// The micrometres per pixel of square pixels.
function square(x, y) {
  if (!(x > 0 && y > 0 && Number.isFinite(x + y))) return undefined;
  return Math.abs(x - y) < 0.01 * Math.max(x, y) ? (x + y) / 2 : undefined;
}

function sizeByResolution({ xResolution, yResolution }, unit) {
  return unit && xResolution > 0 && yResolution > 0 ? square(unit / xResolution, unit / yResolution) : undefined;
}

function imageJAxes(description, facts) {
  const field = (name) => new RegExp(`^${name}=(.*)$`, "m").exec(description)?.[1].trim();
  const count = (name) => Math.max(1, Number.parseInt(field(name) ?? "1", 10) || 1);
  const axes = { channels: count("channels"), slices: count("slices"), times: count("frames") };
  if (axes.channels * axes.slices * axes.times !== facts.pages) return undefined;
  const pixelSize = sizeByResolution(facts, UNITS[field("unit")]);
  return { ...axes, pixelSize, pageOf: ({ c, z, t }) => c + axes.channels * (z + axes.slices * t) };
}

function omeAxes(description, facts) {
  const pixels = new DOMParser().parseFromString(description, "text/xml").querySelector("Image > Pixels");
  if (!pixels) return undefined;
  const number = (name) => Number(pixels.getAttribute(name));
  const unit = (name) => UNITS[pixels.getAttribute(name) ?? "\u00b5m"] ?? NaN;
  const sizes = { C: number("SizeC") / facts.samplesPerColour, Z: number("SizeZ"), T: number("SizeT") };
  const order = (pixels.getAttribute("DimensionOrder") ?? "XYCZT").slice(2);
  if (sizes.C * sizes.Z * sizes.T !== facts.pages) return undefined;
  const strides = {};
  let stride = 1;
  for (const axis of order) {
    strides[axis] = stride;
    stride *= sizes[axis];
  }
  const pages = new Map(); // of planes that the description places
  for (const data of pixels.querySelectorAll("TiffData")) {
    const value = (name) => Number(data.getAttribute(name) ?? 0);
    if (!data.hasAttribute("IFD")) continue;
    let plane = value("FirstC") * strides.C + value("FirstZ") * strides.Z + value("FirstT") * strides.T;
    const planes = data.hasAttribute("PlaneCount") ? value("PlaneCount") : 1;
    for (let k = 0; k < planes; ++k) pages.set(plane++, value("IFD") + k);
  }
  const size = square(
    number("PhysicalSizeX") * unit("PhysicalSizeXUnit"),
    number("PhysicalSizeY") * unit("PhysicalSizeYUnit"),
  );
  return {
    channels: sizes.C,
    slices: sizes.Z,
    times: sizes.T,
    channelNames: [...pixels.querySelectorAll("Channel")].map((channel) => channel.getAttribute("Name") ?? ""),
    pixelSize: size,
    pageOf({ c, z, t }) {
      const plane = c * strides.C + z * strides.Z + t * strides.T;
      return pages.get(plane) ?? plane;
    },
  };
}

// Pages without a description are slices.
function plainAxes(facts) {
  const size = sizeByResolution(facts, { 2: UNITS.inch, 3: UNITS.cm }[facts.resolutionUnit]);
  return {
    channels: 1,
    slices: facts.pages,
    times: 1,
    pixelSize: size < SCREEN ? size : undefined,
    pageOf: ({ z }) => z,
  };
}

// `facts` of the first page: {pages, samplesPerColour, xResolution, yResolution, resolutionUnit}.
// Returns {channels, slices, times, channelNames, pixelSize, pageOf({c, z, t})}.
export function tiffAxes(description, facts) {
  const axes = description.startsWith("ImageJ=")
    ? imageJAxes(description, facts)
    : description.includes("<OME")
      ? omeAxes(description, facts)
      : undefined;
  return axes ?? plainAxes(facts);
}
