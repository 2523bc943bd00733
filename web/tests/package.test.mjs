// The packed package in a fresh folder, its arguments, its errors and its memory.
import assert from "node:assert/strict";
import { execFileSync } from "node:child_process";
import { mkdirSync, readFileSync, readdirSync, symlinkSync, writeFileSync } from "node:fs";
import { join } from "node:path";
import { test } from "node:test";
import { Engine } from "../package/engine.js";
import { operations } from "../package/operations.js";
import { built, randomImage, readSample, root, samples, temporaryFolder } from "./support.mjs";

const orva = await import(join(built, "package", "node.js"));
const [archive] = readdirSync(built).filter((name) => /^orva-.*\.tgz$/.test(name));
const image = readSample(samples.find((file) => file.includes("sparse")));

const USER = `
import { findObjects, type FindResult, type Image } from "orva";
const image: Image = { data: new Uint8Array(64 * 64), width: 64, height: 64 };
for (let y = 20; y < 40; ++y) for (let x = 20; x < 40; ++x) {
  if ((x - 30) ** 2 + (y - 30) ** 2 < 81) (image.data as Uint8Array)[y * 64 + x] = 200;
}
const { objects, settings }: FindResult = await findObjects(image, { minScore: 0.3 });
console.log(objects.length, Math.round(objects[0].x), Math.round(objects[0].radius), settings.polarity);
`;

test("a fresh folder installs and uses the archive", () => {
  const folder = temporaryFolder();
  writeFileSync(join(folder, "package.json"), '{"type": "module"}');
  execFileSync("npm", ["install", "--offline", "--no-audit", "--no-fund", join(built, archive)], { cwd: folder });
  writeFileSync(join(folder, "user.ts"), USER);
  const tsc = join(root, "web", "node_modules", "typescript", "bin", "tsc");
  const options = ["--strict", "--target", "es2022", "--module", "nodenext", "--lib", "es2022,dom"];
  execFileSync("node", [tsc, ...options, "user.ts"], { cwd: folder, stdio: "inherit" });
  assert.equal(execFileSync("node", ["user.js"], { cwd: folder }).toString(), "1 30 9 bright\n");
});

test("the programs of the documents run", () => {
  const folder = temporaryFolder();
  symlinkSync(join(root, "data"), join(folder, "data"));
  mkdirSync(join(folder, "node_modules"));
  symlinkSync(join(built, "package"), join(folder, "node_modules", "orva"));
  const outputs = ["docs/web.md", "web/package/README.md"].map((document) => {
    const blocks = [...readFileSync(join(root, document), "utf-8").matchAll(/^```js\n(.*?)^```/gms)];
    assert.equal(blocks.length, 1, document);
    writeFileSync(join(folder, "program.mjs"), blocks[0][1]);
    return execFileSync("node", ["--preserve-symlinks", "program.mjs"], { cwd: folder }).toString();
  });
  assert.match(outputs[0], /^23 bright objects\n/);
  assert.equal(outputs[0].split("\n").length, 25);
  assert.match(readFileSync(join(folder, "nuclei.csv"), "utf-8"), /^label,centroid-0,/);
});

test("the archive names no other package and no host", () => {
  const facts = JSON.parse(readFileSync(join(built, "package", "package.json"), "utf-8"));
  assert.equal(facts.dependencies, undefined);
  const cmake = readFileSync(join(root, "CMakeLists.txt"), "utf-8");
  assert.equal(facts.version, /project\(orva VERSION ([0-9.]+)/.exec(cmake)[1]);
  for (const name of readdirSync(join(built, "package")).filter((file) => file.endsWith(".js"))) {
    const text = readFileSync(join(built, "package", name), "utf-8");
    assert.doesNotMatch(text, /https?:\/\/|\beval\(|new Function/, name);
  }
  assert.doesNotMatch(readFileSync(join(root, "web", "package-lock.json"), "utf-8"), /"resolved"/);
});

test("the module imports what the package offers", async () => {
  const module = await WebAssembly.compile(readFileSync(join(built, "package", "orva.wasm")));
  const names = WebAssembly.Module.imports(module).map(({ module: from, name }) => `${from}.${name}`);
  const system = ["environ_get", "environ_sizes_get", "fd_close", "fd_read", "fd_seek", "fd_write", "proc_exit"];
  assert.deepEqual(names.sort(), [
    "env.emscripten_notify_memory_growth",
    "host.copyDeflated",
    "host.deflate",
    ...system.map((name) => `wasi_snapshot_preview1.${name}`),
  ]);
});

test("arguments of another type or out of range are errors", async () => {
  const { findObjects, segment, vote, measure, measureLabels, encode } = orva;
  const found = await findObjects(image);
  const small = { data: new Uint8Array(4), width: 2, height: 2 };
  const wrong = [
    [TypeError, "image must be an object", () => findObjects(null)],
    [TypeError, "typed array", () => findObjects({ data: [1, 2], width: 2, height: 1 })],
    [TypeError, "not Float64Array", () => findObjects({ data: new Float64Array(1), width: 1, height: 1 })],
    [RangeError, "image.data has 4 numbers, 3 x 2 x 1 are 6", () => findObjects({ ...small, width: 3 })],
    [RangeError, "image.width", () => findObjects({ ...small, width: 0 })],
    [TypeError, "image.height must be a whole number", () => findObjects({ ...small, height: 1.5 })],
    [RangeError, "channels", () => findObjects({ ...small, channels: 2 })],
    [RangeError, "minScore must be from 0 to 1, not 2", () => findObjects(image, { minScore: 2 })],
    [TypeError, "minScore must be a number", () => findObjects(image, { minScore: "0.5" })],
    [RangeError, "radius", () => findObjects(image, { radius: NaN })],
    [RangeError, "the upper radius", () => findObjects(image, { radius: [5, 4] })],
    [RangeError, "polarity must be one of bright, dark, not both", () => findObjects(image, { polarity: "both" })],
    [TypeError, "there is no option min_score", () => findObjects(image, { min_score: 0.5 })],
    [TypeError, "options must be an object", () => findObjects(image, 3)],
    [RangeError, "minArea must not exceed maxArea", () => segment(image, { minArea: 9, maxArea: 8 })],
    [TypeError, "excludeBorder", () => segment(image, { excludeBorder: 1 })],
    [RangeError, "2 x 2", () => segment(image, { measure: small })],
    [TypeError, "objects[0].radius", () => segment(image, { objects: [{ x: 1, y: 1 }] })],
    [RangeError, "minRadius must not exceed maxRadius", () => vote(image, { minRadius: 21 })],
    [TypeError, "coneWidth must be a whole number", () => vote(image, { coneWidth: 1.5 })],
    [RangeError, "threshold", () => measure(image, { threshold: Infinity })],
    [RangeError, "labels must be from 0", () => measureLabels({ data: Int32Array.of(-1), width: 1, height: 1 }, small)],
    [TypeError, "whole numbers", () => measureLabels({ data: new Float32Array(4), width: 2, height: 2 }, small)],
    [RangeError, "format must be one of", () => encode(image, found, "labels")],
    [TypeError, "result must be an object", () => encode(image, null, "csv")],
    [TypeError, "objects must be an array", () => encode(image, {}, "csv")],
    [TypeError, "settings must be an object", () => encode(image, { objects: [] }, "csv")],
    [RangeError, "settings.polarity", () => encode(image, { ...found, settings: { ...found.settings, polarity: "x" } }, "csv")],
    [TypeError, "centers must be an array", () => encode(image, { centers: 1 }, "csv")],
    [TypeError, "centers[0].x must be a number", () => encode(image, { centers: [{}], settings: { coneWidth: 1, sigma: 1, gradient: 1 } }, "csv")],
    [TypeError, "options must be an object, not 3", () => segment(image, 3)],
    [TypeError, "options must be an object, not null", () => segment(image, null)],
    [RangeError, "settings.polarity", () => segment(image, { objects: [], settings: { radius: 1, polarity: "both", confidence: 1 } })],
    [RangeError, "image.width must be from 1", () => findObjects({ ...small, width: -2, height: -2 })],
    [TypeError, "not bigint", () => findObjects({ ...small, width: 2n })],
    [TypeError, "not DataView", () => findObjects({ ...small, data: new DataView(new ArrayBuffer(4)) })],
    [RangeError, "image.data has 0 numbers", () => {
      const data = new Uint8Array(4);
      structuredClone(data, { transfer: [data.buffer] });
      return findObjects({ ...small, data });
    }],
  ];
  for (const [type, text, call] of wrong) {
    await assert.rejects(call, (error) => error instanceof type && error.message.includes(text), text);
  }
});

test("images without objects have none", async () => {
  for (const [width, height] of [[1, 1], [1, 40], [64, 64]]) {
    const flat = { data: new Float32Array(width * height).fill(7), width, height };
    const { objects, settings } = await orva.findObjects(flat);
    assert.deepEqual([objects, settings.radius, settings.confidence], [[], 0, 0]);
    const { regions, labels } = await orva.segment(flat);
    assert.deepEqual([regions, labels.data.some((v) => v !== 0)], [[], false]);
  }
});

test("colour counts as luminance", async () => {
  const grey = randomImage(2, "uint8");
  const colour = { ...grey, channels: 3, data: Uint8Array.from({ length: grey.data.length * 3 }, (_, i) => grey.data[Math.floor(i / 3)]) };
  const opaque = { ...grey, channels: 4, data: Uint8Array.from({ length: grey.data.length * 4 }, (_, i) => (i % 4 === 3 ? 255 : grey.data[i >> 2])) };
  const found = await orva.findObjects(colour);
  assert.ok(found.objects.length > 3);
  assert.deepEqual(found, await orva.findObjects(opaque));
});

test("given objects are segmented", async () => {
  const { objects, settings } = await orva.findObjects(image);
  const all = await orva.segment(image);
  assert.deepEqual(await orva.segment(image, { objects, settings }), all);
  const one = await orva.segment(image, { objects: objects.slice(0, 1), settings });
  assert.deepEqual([one.regions.length, one.objects], [1, objects.slice(0, 1)]);
  const measures = await orva.measureLabels(all.labels, image);
  assert.deepEqual(measures, all.regions.map(({ score, ...region }) => region));
});

test("brightness of another image is measured", async () => {
  const negative = { ...image, data: image.data.map((v) => 255 - v) };
  const plain = await orva.segment(image);
  const other = await orva.segment(image, { measure: negative });
  assert.deepEqual(other.labels, plain.labels);
  other.regions.forEach((r, i) => assert.equal(r.minIntensity, 255 - plain.regions[i].maxIntensity));
});

test("an image that does not fit is an error and no harm", async () => {
  const width = 30000;
  const huge = { data: new Uint8Array(width * width), width, height: width };
  await assert.rejects(orva.findObjects(huge), /could not be processed|too large|out of memory/);
  assert.equal((await orva.findObjects(image)).objects.length, 11);
});

test("many calls keep the memory", async (t) => {
  // The module in this thread, whose memory can be seen.
  const { instantiate } = WebAssembly;
  t.after(() => (WebAssembly.instantiate = instantiate));
  const memories = [];
  WebAssembly.instantiate = async (...parts) => {
    const instance = await instantiate(...parts);
    memories.push(instance.exports.memory);
    return instance;
  };
  const wasm = readFileSync(join(built, "package", "orva.wasm"));
  const engine = new Engine(() => WebAssembly.compile(wasm));
  const local = operations((request) => engine.perform(request));
  const small = randomImage(3, "uint16");
  const side = 384; // so that the pixels and labels of all calls would not fit
  const data = new Uint16Array(side * side).map(
    (_, i) => small.data[(Math.floor(i / side) % small.height) * small.width + ((i % side) % small.width)],
  );
  const sizes = [];
  for (let i = 0; i < 40; ++i) {
    const { regions } = await local.segment({ data, width: side, height: side });
    assert.ok(regions.length > 5);
    sizes.push(memories[0].buffer.byteLength);
  }
  assert.equal(memories.length, 1);
  assert.deepEqual([...new Set(sizes.slice(2))], [sizes[2]]);
});

test("calls after close() start another worker", async () => {
  const pending = orva.findObjects(image);
  orva.close();
  await assert.rejects(pending, /closed/);
  assert.equal((await orva.findObjects(image)).objects.length, 11);
});
