// TIFF files of 8, 16 and 32 bits, grey, colour or with a palette, of one or several pages.
import { fromBlob } from "geotiff";
import { requireSize } from "./image_size.js";
import { requireNoPlanesBehind, tiffAxes } from "./tiff_axes.js";

const WHITE_IS_ZERO = 0;
const RGB = 2;
const PALETTE = 3;
const UNCOMPRESSED = 1;
const MAX_PAGES = 2 ** 20;

// The outcome of a part of the reader, whose errors get the form of the others.
async function parsed(promise) {
  try {
    return await promise;
  } catch (cause) {
    const reason = cause instanceof RangeError ? "it ends too early" : cause.message;
    throw new Error(`is a damaged TIFF file, or one of an unsupported kind: ${reason}`, { cause });
  }
}

const tag = (page, name) => page.fileDirectory.getValue(name);
const loaded = (page, name) =>
  page.fileDirectory.hasTag(name) ? parsed(page.fileDirectory.loadValue(name)) : undefined;

// As a single-precision number, which the command reads.
const ratio = (value) => Math.fround(value?.length === 2 ? value[0] / value[1] : Number(value ?? 0));

async function countPages(tiff) {
  const places = new Set([tiff.firstIFDOffset]);
  for (;;) {
    const { nextIFDByteOffset: next } = await parsed(tiff.requestIFD(places.size - 1));
    if (next === 0) return places.size;
    if (places.has(next) || places.size >= MAX_PAGES) throw new Error("is a damaged TIFF file: its pages have no end");
    places.add(next);
  }
}

function inverted(data) {
  if (data instanceof Float32Array) return data.map((v) => -v);
  return data.map((v) => ~v);
}

// The colours of a palette as bytes.
function withPalette(data, colours) {
  const n = colours.length / 3;
  const pixels = new Uint8Array(data.length * 3);
  for (let i = 0; i < data.length; ++i) {
    for (let k = 0; k < 3; ++k) pixels[3 * i + k] = colours[k * n + data[i]] >> 8;
  }
  return pixels;
}

async function requirePixels(page) {
  const sizes = await loaded(page, page.isTiled ? "TileByteCounts" : "StripByteCounts");
  if (sizes === undefined || [...sizes].some((size) => Number(size) === 0)) {
    throw new Error("is a damaged TIFF file: pixels are missing");
  }
}

// Grey or colour, with a sample of opacity at most.
async function requireNothingLeftOut(page, samples, wanted) {
  const kinds = await loaded(page, "ExtraSamples");
  const extra = samples - wanted;
  if (extra === 0 || (extra === 1 && (kinds?.[0] === 1 || kinds?.[0] === 2))) return;
  throw new Error(
    `is a TIFF file with ${samples} samples per pixel, more than grey or colour and opacity have; save each channel as a page of its own`,
  );
}

async function readPage(page) {
  const photometric = tag(page, "PhotometricInterpretation") ?? 1;
  const [width, height, samples] = [page.getWidth(), page.getHeight(), page.getSamplesPerPixel()];
  requireSize(width, height);
  await requirePixels(page);
  if (photometric === PALETTE) {
    const data = await parsed(page.readRasters({ interleave: true }));
    return { data: withPalette(data, await loaded(page, "ColorMap")), width, height, channels: 3 };
  }
  if (photometric > RGB || (photometric === RGB && samples < 3)) {
    const data = await parsed(page.readRGB({ interleave: true }));
    return { data: new Uint8Array(data), width, height, channels: 3 };
  }
  const wanted = photometric === RGB ? [0, 1, 2] : [0];
  await requireNothingLeftOut(page, samples, wanted.length);
  let data = await parsed(page.readRasters({ interleave: true, samples: wanted }));
  if (data instanceof Float64Array) data = Float32Array.from(data);
  const bits = page.getBitsPerSample();
  if (bits < 8) data = data.map((v) => (v * 255) / (2 ** bits - 1));
  if (photometric === WHITE_IS_ZERO) data = inverted(data);
  return { data, width, height, channels: wanted.length };
}

async function factsOf(tiff, first, file) {
  const photometric = tag(first, "PhotometricInterpretation") ?? 1;
  const [width, height, samples] = [first.getWidth(), first.getHeight(), first.getSamplesPerPixel()];
  const start = Number((await loaded(first, "StripOffsets"))?.[0] ?? Infinity);
  const planeBytes = width * height * samples * Math.ceil(first.getBitsPerSample() / 8);
  return {
    pages: await countPages(tiff),
    samplesPerColour: photometric > 1 && photometric !== PALETTE ? samples : 1,
    xResolution: ratio(await loaded(first, "XResolution")),
    yResolution: ratio(await loaded(first, "YResolution")),
    resolutionUnit: (await loaded(first, "ResolutionUnit")) ?? 2,
    hasRoomForTwo: (tag(first, "Compression") ?? 1) === UNCOMPRESSED && file.size - start >= 2 * planeBytes,
  };
}

export async function openTiff(file) {
  const tiff = await parsed(fromBlob(file));
  const first = await parsed(tiff.getImage(0));
  const description = String((await loaded(first, "ImageDescription")) ?? "").replace(/\0[^]*$/, "");
  const facts = await factsOf(tiff, first, file);
  requireNoPlanesBehind(description, facts);
  const axes = tiffAxes(description, facts);
  const [width, height] = [first.getWidth(), first.getHeight()];
  const stated = axes.statedSize;
  if (stated && (stated.width !== width || stated.height !== height)) {
    throw new Error(
      `is an OME-TIFF file whose OME-XML is wrong: it states ${stated.width} x ${stated.height} pixels, and its pages have ${width} x ${height}`,
    );
  }
  return {
    ...axes,
    width,
    height,
    async read(plane) {
      const index = axes.pageOf(plane);
      if (index === undefined) {
        throw new Error(`lacks the plane of channel ${plane.c + 1}, slice ${plane.z + 1} and time ${plane.t + 1}`);
      }
      const page = await parsed(tiff.getImage(index));
      if (page.getWidth() !== width || page.getHeight() !== height) throw new Error("has pages of different sizes");
      return readPage(page);
    },
  };
}
