// TIFF files of 8, 16 and 32 bits, grey, colour or with a palette, of one or several pages.
import { fromBlob } from "geotiff";
import { tiffAxes } from "./tiff_axes.js";

const WHITE_IS_ZERO = 0;
const RGB = 2;
const PALETTE = 3;

// As a single-precision number, which the command reads.
const ratio = (value) => Math.fround(value?.length === 2 ? value[0] / value[1] : Number(value ?? 0));

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

async function readPage(page) {
  const directory = page.fileDirectory;
  const photometric = directory.getValue("PhotometricInterpretation") ?? 1;
  const [width, height, samples] = [page.getWidth(), page.getHeight(), page.getSamplesPerPixel()];
  if (photometric === PALETTE) {
    const data = await page.readRasters({ interleave: true });
    return { data: withPalette(data, await directory.loadValue("ColorMap")), width, height, channels: 3 };
  }
  const isColour = photometric === RGB && samples >= 3;
  if (!isColour && photometric > RGB) {
    return { data: new Uint8Array(await page.readRGB({ interleave: true })), width, height, channels: 3 };
  }
  const wanted = isColour ? [0, 1, 2] : [0];
  let data = await page.readRasters({ interleave: true, samples: wanted });
  if (data instanceof Float64Array) data = Float32Array.from(data);
  if (photometric === WHITE_IS_ZERO) data = inverted(data);
  return { data, width, height, channels: wanted.length };
}

export async function openTiff(file) {
  const tiff = await fromBlob(file);
  const first = await tiff.getImage(0);
  const directory = first.fileDirectory;
  const description = directory.hasTag("ImageDescription") ? await directory.loadValue("ImageDescription") : "";
  const resolution = async (tag) => (directory.hasTag(tag) ? ratio(await directory.loadValue(tag)) : 0);
  const isColour = directory.getValue("PhotometricInterpretation") === RGB;
  const axes = tiffAxes(String(description ?? "").replace(/\0+$/, ""), {
    pages: await tiff.getImageCount(),
    samplesPerColour: isColour ? first.getSamplesPerPixel() : 1,
    xResolution: await resolution("XResolution"),
    yResolution: await resolution("YResolution"),
    resolutionUnit: directory.hasTag("ResolutionUnit") ? await directory.loadValue("ResolutionUnit") : 2,
  });
  const { pageOf, ...facts } = axes;
  return {
    ...facts,
    pageOf,
    width: first.getWidth(),
    height: first.getHeight(),
    read: async (plane) => readPage(await tiff.getImage(pageOf(plane))),
  };
}
