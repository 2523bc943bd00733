// Opens image files: what planes they have, and the pixels of one.
import { convertIndexedToRgb, decode } from "fast-png";
import { readPnm } from "./pnm.js";
import { openTiff } from "./tiff.js";

const MAX_PIXELS = 2 ** 28;

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
  const png = decode(bytes);
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

// By the browser, with the colours as they are in the file.
async function jpegPixels(blob) {
  const bitmap = await createImageBitmap(blob, { colorSpaceConversion: "none", imageOrientation: "none" });
  const { width, height } = bitmap;
  const context = new OffscreenCanvas(width, height).getContext("2d", { willReadFrequently: true });
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
  const kind = kindOf(new Uint8Array(await blob.slice(0, 8).arrayBuffer()));
  if (!kind) throw new Error("is not a PNG, JPEG, TIFF, PGM or PPM image");
  if (kind === "tiff") return openTiff(blob);
  return {
    channels: 1,
    slices: 1,
    times: 1,
    pageOf: () => 0,
    read: () => READERS[kind](blob),
  };
}

// The plane that `choice` {channel, slice, time} means, clamped to what the image has; a slice "max"
// is the maximum of all of them.
export async function readPlane(source, { channel, slice, time }) {
  const c = Math.min(channel, source.channels - 1);
  const t = Math.min(time, source.times - 1);
  if (slice !== "max" || source.slices === 1) {
    return checked(await source.read({ c, t, z: slice === "max" ? 0 : Math.min(slice, source.slices - 1) }));
  }
  const plane = checked(await source.read({ c, t, z: 0 }));
  for (let z = 1; z < source.slices; ++z) {
    const { data } = await source.read({ c, t, z });
    for (let i = 0; i < data.length; ++i) if (data[i] > plane.data[i]) plane.data[i] = data[i];
  }
  return plane;
}

function checked(plane) {
  if (plane.width * plane.height > MAX_PIXELS) throw new Error("is too large for a browser");
  return plane;
}
