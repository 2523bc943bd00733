// Files that cannot be read, and those at the edge of what can: [name, bytes, the message or the number of objects].
import { encode } from "fast-png";
import { crc32 } from "../checksum.mjs";
import { randomImage } from "./support.mjs";

const text = (string) => Buffer.from(string, "latin1");

// A chunk of a PNG file.
function chunk(type, content) {
  const body = Buffer.concat([text(type), content]);
  const whole = Buffer.alloc(body.length + 8);
  whole.writeUInt32BE(content.length, 0);
  body.copy(whole, 4);
  whole.writeUInt32BE(crc32(body), body.length + 4);
  return whole;
}

function pngHeader(width, height) {
  const header = Buffer.alloc(13);
  header.writeUInt32BE(width, 0);
  header.writeUInt32BE(height, 4);
  header.set([8, 0, 0, 0, 0], 8);
  return Buffer.concat([Buffer.from([0x89, 0x50, 0x4e, 0x47, 0x0d, 0x0a, 0x1a, 0x0a]), chunk("IHDR", header)]);
}

// A JPEG file that ends behind the size that it states.
const jpegHeader = (width, height) => {
  const frame = Buffer.from([0xff, 0xd8, 0xff, 0xc0, 0, 11, 8, 0, 0, 0, 0, 1, 1, 0x11, 0]);
  frame.writeUInt16BE(height, 7);
  frame.writeUInt16BE(width, 9);
  return frame;
};

// A TIFF file of one strip of uncompressed samples.
function tiff({ width, height, pixels, bits = 8, format = 1, samples = 1, byteCount = pixels.length, next = 0, description }) {
  const entries = [
    [256, 3, 1, width], [257, 3, 1, height], [258, 3, 1, bits], [259, 3, 1, 1], [262, 3, 1, 1],
    [273, 4, 1, 8], [277, 3, 1, samples], [278, 3, 1, height], [279, 4, 1, byteCount], [339, 3, 1, format],
  ];
  let start = 8 + pixels.length;
  const words = description ? text(`${description}\0`) : Buffer.alloc(0);
  if (description) entries.splice(5, 0, [270, 2, words.length, start]);
  start += words.length;
  const directory = Buffer.alloc(2 + 12 * entries.length + 4);
  directory.writeUInt16LE(entries.length, 0);
  entries.forEach(([tag, type, count, value], i) => {
    directory.writeUInt16LE(tag, 2 + 12 * i);
    directory.writeUInt16LE(type, 4 + 12 * i);
    directory.writeUInt32LE(count, 6 + 12 * i);
    directory.writeUInt32LE(value, 10 + 12 * i);
  });
  directory.writeUInt32LE(next === "itself" ? start : next, directory.length - 4);
  const header = Buffer.from("II*\0    ");
  header.writeUInt32LE(start, 4);
  return Buffer.concat([header, pixels, words, directory]);
}

const ome = (attributes, rest = "") =>
  `<OME xmlns="http://www.openmicroscopy.org/Schemas/OME/2016-06"><Image><Pixels SizeX="16" SizeY="16" ${attributes}/></Image>${rest}</OME>`;
const withDescription = (description) => tiff({ width: 16, height: 16, pixels: Buffer.alloc(256, 7), description });

const grey = randomImage(7, "uint8");
const png = Buffer.from(encode({ ...grey, channels: 1, depth: 8 }));
const small = { width: 16, height: 16, pixels: Buffer.alloc(256, 7) };
const floats = Buffer.from(new Float32Array(256).fill(NaN).buffer);

export const damagedFiles = [
  ["empty.tif", Buffer.alloc(0), "is empty"],
  ["text.png", text("hello"), "is not a PNG, JPEG, TIFF, PGM or PPM image"],
  ["cut.png", png.subarray(0, png.length / 2), "is a damaged PNG file"],
  ["bomb.png", pngHeader(100000, 100000), "is too large for a browser: 100000 x 100000 pixels"],
  ["none.png", pngHeader(0, 5), "has no pixels"],
  ["none.pgm", text("P5 0 0 255\n"), "has no pixels"],
  ["short.pgm", text("P5 9 9 255\nabc"), "pixels are missing"],
  ["zero.pgm", text("P5 1 1 0\na"), "its largest value is 0"],
  ["header.pgm", text("P5 # "), "is a damaged PGM or PPM file"],
  ["cut.jpg", jpegHeader(40, 40), "is a damaged JPEG file"],
  ["huge.jpg", jpegHeader(65500, 65500), "is too large for a browser: 65500 x 65500 pixels"],
  ["cut.tif", tiff(small).subarray(0, 300), "is a damaged TIFF file"],
  ["short.tif", tiff({ ...small, height: 60 }), "is a damaged TIFF file"],
  ["huge.tif", tiff({ ...small, width: 65535, height: 65535 }), "is too large for a browser"],
  ["none.tif", tiff({ ...small, width: 0 }), "has no pixels"],
  ["sparse.tif", tiff({ ...small, byteCount: 0 }), "pixels are missing"],
  ["loop.tif", tiff({ ...small, next: "itself" }), "its pages have no end"],
  ["nowhere.tif", tiff({ ...small, next: 0x7ffffff0 }), "is a damaged TIFF file"],
  ["samples.tif", tiff({ ...small, width: 4, samples: 4 }), "with 4 samples per pixel"],
  ["order.ome.tif", withDescription(ome('SizeC="1" SizeZ="1" SizeT="1" DimensionOrder="XYZZT"')), 'DimensionOrder is "XYZZT"'],
  ["sizes.ome.tif", withDescription(ome('SizeC="x" SizeZ="1" SizeT="1"')), 'SizeC is "x"'],
  ["planes.ome.tif", withDescription(ome('SizeC="1" SizeZ="4" SizeT="1" DimensionOrder="XYCZT"')), "lacks the plane of"],
  ["xml.ome.tif", withDescription("<OME ><Image></OME>"), "OME-XML is wrong"],
  ["set.ome.tif", withDescription(ome('SizeC="1" SizeZ="1" SizeT="1"', '<BinaryOnly MetadataFile="a.ome"/>')), "is one file of an OME-TIFF set"],
  ["stated.ome.tif", withDescription(ome('SizeC="1" SizeZ="1" SizeT="1" DimensionOrder="XYCZT"').replace('X="16"', 'X="17"')), "it states 17 x 16 pixels"],
  ["one.pgm", text("P5 1 1 255\na"), 0],
  ["line.pgm", text(`P5 300 1 255\n${"a".repeat(300)}`), 0],
  ["nan.tif", tiff({ ...small, bits: 32, format: 3, pixels: floats }), 0],
];
