// What the tests share: where things are, sample images, random images.
import { execFileSync } from "node:child_process";
import { mkdtempSync, readFileSync, readdirSync, rmSync } from "node:fs";
import { tmpdir } from "node:os";
import { dirname, join } from "node:path";
import { after } from "node:test";
import { fileURLToPath } from "node:url";
import { readPnm } from "../page/pnm.js";

function required(name) {
  const value = process.env[name];
  if (!value) throw new Error(`${name} is not set; run the tests by scripts/test web`);
  return value;
}

export const root = join(dirname(fileURLToPath(import.meta.url)), "..", "..");
export const built = required("ORVA_WEB"); // the folder that scripts/web fills
export const command = required("ORVA_COMMAND");
export const samples = readdirSync(join(root, "data", "images")).map((name) => join(root, "data", "images", name));

// A folder that is removed at the end.
export function temporaryFolder() {
  const folder = mkdtempSync(join(tmpdir(), "orva_web_"));
  after(() => rmSync(folder, { recursive: true, force: true }));
  return folder;
}

export const readSample = (file) => readPnm(new Uint8Array(readFileSync(file)));

export const runCommand = (...words) => execFileSync(command, words, { maxBuffer: 1 << 28 });

// Numbers from 0 to 1 that depend on the seed only.
export function randomNumbers(seed) {
  let state = seed >>> 0;
  return () => {
    state = (Math.imul(state, 1664525) + 1013904223) >>> 0;
    return (state >>> 8) / 2 ** 24;
  };
}

const ARRAYS = { uint8: Uint8Array, uint16: Uint16Array, int16: Int16Array, float32: Float32Array };

// Discs of random place, size and brightness with soft edges on a noisy ground.
export function randomImage(seed, type) {
  const random = randomNumbers(seed);
  const width = 96 + Math.floor(random() * 160);
  const height = 96 + Math.floor(random() * 160);
  const sign = seed % 3 === 0 ? -1 : 1;
  const values = Float64Array.from({ length: width * height }, () => 100 + 8 * (random() + random() - 1));
  const discs = 4 + Math.floor(random() * 20);
  for (let k = 0; k < discs; ++k) {
    const [cx, cy, radius, step] = [random() * width, random() * height, 4 + random() * 12, 30 + random() * 60];
    for (let y = 0; y < height; ++y) {
      for (let x = 0; x < width; ++x) {
        const inside = Math.min(Math.max(radius - Math.hypot(x - cx, y - cy) + 0.5, 0), 1);
        values[y * width + x] += sign * step * inside;
      }
    }
  }
  const [scale, shift] = { uint8: [1, 0], uint16: [150, 0], int16: [100, -15000], float32: [1.37, -3.3] }[type];
  const clamped = (v) => (type === "float32" ? v : Math.round(v));
  const limit = type === "uint8" ? 255 : type === "uint16" ? 65535 : 32767;
  const data = ARRAYS[type].from(values, (v) => clamped(Math.min(Math.max(v, 0) * scale + shift, limit)));
  return { data, width, height };
}
