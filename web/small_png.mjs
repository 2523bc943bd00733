// Small PNG files of 8-bit grey images.
import { crc32 } from "./checksum.mjs";
import { constants, deflateSync } from "node:zlib";

function chunk(type, content) {
  const bytes = Buffer.alloc(content.length + 12);
  bytes.writeUInt32BE(content.length, 0);
  bytes.write(type, 4, "latin1");
  bytes.set(content, 8);
  bytes.writeUInt32BE(crc32(bytes.subarray(4, content.length + 8)), content.length + 8);
  return bytes;
}

function paeth(a, b, c) {
  const [pa, pb, pc] = [Math.abs(b - c), Math.abs(a - c), Math.abs(a + b - 2 * c)];
  return pa <= pb && pa <= pc ? a : pb <= pc ? b : c;
}

// What the filters of PNG predict of a pixel from its left, upper and upper left neighbours.
const FILTERS = [() => 0, (a) => a, (a, b) => b, (a, b) => (a + b) >> 1, paeth];

const STRATEGIES = [constants.Z_DEFAULT_STRATEGY, constants.Z_FILTERED, constants.Z_HUFFMAN_ONLY, constants.Z_RLE];

// The rows behind the numbers of their filters: for each row that of `filters` with the smallest differences.
function filtered({ data, width, height }, filters) {
  const rows = Buffer.alloc(height * (width + 1));
  for (let y = 0; y < height; ++y) {
    const at = (x, row) => (x < 0 || row < 0 ? 0 : data[row * width + x]);
    let lowest = Infinity;
    for (const filter of filters) {
      const predict = FILTERS[filter];
      const row = Uint8Array.from({ length: width }, (_, x) => at(x, y) - predict(at(x - 1, y), at(x, y - 1), at(x - 1, y - 1)));
      const sum = row.reduce((total, v) => total + Math.min(v, 256 - v), 0);
      if (sum >= lowest) continue;
      lowest = sum;
      rows[y * (width + 1)] = filter;
      rows.set(row, y * (width + 1) + 1);
    }
  }
  return rows;
}

export function smallPng(image) {
  const { width, height } = image;
  const choices = [[0, 1, 2, 3, 4], [0], [1], [2], [3], [4]].map((filters) => filtered(image, filters));
  const packed = choices.flatMap((rows) => STRATEGIES.map((strategy) => deflateSync(rows, { level: 9, memLevel: 9, strategy })));
  const smallest = packed.reduce((best, bytes) => (bytes.length < best.length ? bytes : best));
  const header = Buffer.from([0, 0, 0, 0, 0, 0, 0, 0, 8, 0, 0, 0, 0]);
  header.writeUInt32BE(width, 0);
  header.writeUInt32BE(height, 4);
  return Buffer.concat([
    Buffer.from("\x89PNG\r\n\x1a\n", "latin1"),
    chunk("IHDR", header),
    chunk("IDAT", smallest),
    chunk("IEND", Buffer.alloc(0)),
  ]);
}
