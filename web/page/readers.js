// Opens image files: what planes they have, and the pixels of one.
import { convertIndexedToRgb, decode } from "fast-png";
import { requireSize } from "./image_size.js";
import { readPnm } from "./pnm.js";
import { openTiff } from "./tiff.js";

function kindOf(bytes) {
  const starts = (...start) => start.every((byte, i) => byte === null || bytes[i] === byte);
  if (starts(0x89, 0x50, 0x4e, 0x47)) return "png";
  if (starts(0xff, 0xd8, 0xff)) return "jpeg";
  if (starts(0x49, 0x49) || starts(0x4d, 0x4d)) return "tiff";
  if (starts(0x50, 0x35) || starts(0x50, 0x36)) return "pnm";
  return undefined;
}

// Grey with opacity is grey; palettes are colours; samples of few bits count from 0 to 255.
function pngPixels(bytes) {
  const header = new DataView(bytes.buffer, bytes.byteOffset, bytes.byteLength);
  if (bytes.length >= 24) requireSize(header.getUint32(16), header.getUint32(20));
  let png;
  try {
    png = decode(bytes);
  } catch (cause) {
    throw new Error(`is a damaged PNG file: ${cause.message}`, { cause });
  }
  const { width, height } = png;
  if (png.palette) {
    const channels = png.palette[0].length;
    return { data: new Uint8Array(convertIndexedToRgb(png)), width, height, channels };
  }
  let { data, channels } = png;
  if (png.depth < 8) data = spread(png);
  if (channels === 2) {
    data = data.filter((_, i) => i % 2 === 0);
    channels = 1;
  }
  return { data, width, height, channels };
}

// One byte per sample of rows that pack several of them into a byte.
function spread({ data, width, height, depth }) {
  const perByte = 8 / depth;
  const rowBytes = Math.ceil(width / perByte);
  const max = 2 ** depth - 1;
  const result = new Uint8Array(width * height);
  for (let y = 0; y < height; ++y) {
    for (let x = 0; x < width; ++x) {
      const byte = data[y * rowBytes + Math.floor(x / perByte)];
      result[y * width + x] = (((byte >> (8 - depth * ((x % perByte) + 1))) & max) * 255) / max;
    }
  }
  return result;
}

// The width and height that a JPEG file states; undefined for a damaged one.
function jpegSize(bytes) {
  const view = new DataView(bytes.buffer, bytes.byteOffset, bytes.byteLength);
  for (let at = 2; at + 9 < bytes.length && bytes[at] === 0xff; ) {
    const marker = bytes[at + 1];
    const isFrame = marker >= 0xc0 && marker <= 0xcf && ![0xc4, 0xc8, 0xcc].includes(marker);
    if (isFrame) return [view.getUint16(at + 7), view.getUint16(at + 5)];
    at += marker === 0xff ? 1 : 2 + view.getUint16(at + 2);
  }
  return undefined;
}

// By the browser, with the colours as they are in the file.
async function jpegPixels(blob) {
  const size = jpegSize(new Uint8Array(await blob.arrayBuffer()));
  if (size) requireSize(...size);
  let bitmap;
  try {
    bitmap = await createImageBitmap(blob, { colorSpaceConversion: "none", imageOrientation: "none" });
  } catch (cause) {
    throw new Error("is a damaged JPEG file", { cause });
  }
  const { width, height } = bitmap;
  const context = new OffscreenCanvas(width, height).getContext("2d", { willReadFrequently: true });
  if (!context) throw new Error(`is too large for this browser: ${width} x ${height} pixels`);
  context.drawImage(bitmap, 0, 0);
  bitmap.close();
  const { data } = context.getImageData(0, 0, width, height);
  let isGrey = true;
  for (let i = 0; i < data.length && isGrey; i += 4) isGrey = data[i] === data[i + 1] && data[i] === data[i + 2];
  if (!isGrey) return { data, width, height, channels: 4 };
  return { data: new Uint8Array(width * height).map((_, i) => data[4 * i]), width, height, channels: 1 };
}

const READERS = {
  png: async (blob) => pngPixels(new Uint8Array(await blob.arrayBuffer())),
  pnm: async (blob) => readPnm(new Uint8Array(await blob.arrayBuffer())),
  jpeg: jpegPixels,
};

// An image file: {channels, slices, times, channelNames, pixelSize, pageOf(plane), read(plane)} with
// planes {c, z, t} counted from 0. Throws an error whose message continues the name of the file.
export async function openImage(blob) {
  if (blob.size === 0) throw new Error("is empty");
  let start;
  try {
    start = new Uint8Array(await blob.slice(0, 8).arrayBuffer());
  } catch (cause) {
    throw new Error("cannot be read; it may have been moved or deleted", { cause });
  }
  const kind = kindOf(start);
  if (!kind) throw new Error("is not a PNG, JPEG, TIFF, PGM or PPM image");
  if (kind === "tiff") return openTiff(blob);
  return {
    channels: 1,
    slices: 1,
    times: 1,
    channelNames: [],
    pageOf: () => 0,
    read: () => READERS[kind](blob),
  };
}

// The plane that `choice` {channel, slice, time} means, clamped to what the image has; a slice "max"
// is the maximum of all of them.
export async function readPlane(source, { channel, slice, time }) {
  const c = Math.min(channel, source.channels - 1);
  const t = Math.min(time, source.times - 1);
  if (slice !== "max") return source.read({ c, t, z: Math.min(slice, source.slices - 1) });
  const first = await source.read({ c, t, z: 0 });
  if (source.slices === 1) return first;
  const plane = luminanceOf(first);
  for (let z = 1; z < source.slices; ++z) takeMax(plane, luminanceOf(await source.read({ c, t, z })));
  return plane;
}

// A grey plane, with the weights of the library.
function luminanceOf(plane) {
  const { data, width, height, channels } = plane;
  if (channels < 3) return plane;
  const grey = new Float32Array(width * height);
  for (let i = 0, k = 0; i < grey.length; ++i, k += channels) {
    grey[i] = 0.072169 * data[k + 2] + 0.71516 * data[k + 1] + 0.212671 * data[k];
  }
  return { data: grey, width, height, channels: 1 };
}

// The brighter of both at each pixel.
function takeMax(plane, other) {
  if (plane.data.constructor !== other.data.constructor) {
    throw new Error("has slices of different pixel types; choose one");
  }
  const { data } = plane;
  for (let i = 0; i < data.length; ++i) {
    if (other.data[i] > data[i] || Number.isNaN(data[i])) data[i] = other.data[i];
  }
}
