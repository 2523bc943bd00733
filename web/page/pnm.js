// Binary PGM and PPM files (P5 and P6) of 8 or 16 bits.

import { requireSize } from "./image_size.js";

// The image in `bytes`. Throws for other files.
export function readPnm(bytes) {
  let at = 2;
  const isSpace = (c) => c === 32 || (c >= 9 && c <= 13);
  const next = () => {
    for (;;) {
      while (isSpace(bytes[at])) ++at;
      if (bytes[at] !== 35) break; // #
      while (at < bytes.length && bytes[at] !== 10) ++at;
    }
    let value = 0;
    const start = at;
    for (; bytes[at] >= 48 && bytes[at] <= 57; ++at) value = 10 * value + bytes[at] - 48;
    if (at === start) throw new Error("is a damaged PGM or PPM file");
    return value;
  };
  const channels = bytes[1] === 0x36 ? 3 : 1;
  const [width, height, max] = [next(), next(), next()];
  requireSize(width, height);
  if (max < 1 || max > 65535) throw new Error(`is a damaged PGM or PPM file: its largest value is ${max}`);
  const count = width * height * channels;
  const start = ++at; // behind one blank
  const size = max > 255 ? 2 : 1;
  if (bytes.length < start + count * size) throw new Error("is a damaged PGM or PPM file: pixels are missing");
  if (size === 1) return { data: bytes.slice(start, start + count), width, height, channels };
  const data = new Uint16Array(count);
  for (let i = 0; i < count; ++i) data[i] = (bytes[start + 2 * i] << 8) | bytes[start + 2 * i + 1];
  return { data, width, height, channels };
}
