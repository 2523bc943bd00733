// The package finds what the compiled library finds, bit for bit.
import assert from "node:assert/strict";
import { execFileSync } from "node:child_process";
import { readFileSync, writeFileSync } from "node:fs";
import { basename, join } from "node:path";
import { test } from "node:test";
import { crc32 } from "../checksum.mjs";
import { built, randomImage, readSample, root, runCommand, samples, temporaryFolder } from "./support.mjs";

const orva = await import(join(built, "package", "node.js"));
const folder = temporaryFolder();

// Numbers that JSON does not have, as native_results.py writes them.
const exact = (v) => (typeof v !== "number" || Number.isFinite(v) ? v : Number.isNaN(v) ? "nan" : v > 0 ? "inf" : "-inf");
const rowsOf = (objects, names) => objects.map((object) => names.map((name) => exact(object[name])));

const OBJECT = ["x", "y", "radius", "score", "coverage"];
const SETTINGS = ["radius", "polarity", "confidence"];

const CALLS = {
  async find_objects(image, options) {
    return rowsOf((await orva.findObjects(image, options)).objects, OBJECT);
  },
  async estimate_settings(image) {
    const settings = await orva.estimateSettings(image);
    return rowsOf([settings, settings.runnerUp], SETTINGS);
  },
  async segment(image, options) {
    const { labels, regions } = await orva.segment(image, options);
    const rows = regions.map(({ touchesBorder, score, ...measures }) =>
      [...Object.values(measures), score].map(exact).concat(touchesBorder));
    return { labels: crc32(new Uint8Array(labels.data.buffer)), rows };
  },
  async find_centers(image, options) {
    return rowsOf((await orva.vote(image, options)).centers, ["x", "y", "weight"]);
  },
};

const snake = (options) =>
  Object.fromEntries(Object.entries(options).map(([k, v]) => [k.replace(/[A-Z]/g, (c) => `_${c.toLowerCase()}`), v]));

// The answers of both to the calls [function, options] on every image.
async function compare(images, calls) {
  const jobs = images.map(({ image, type }, i) => {
    const file = join(folder, `${i}.raw`);
    writeFileSync(file, new Uint8Array(image.data.buffer));
    return { file, type, width: image.width, height: image.height, calls: calls.map(([f, o]) => [f, snake(o)]) };
  });
  const script = join(root, "web", "tests", "native_results.py");
  const output = execFileSync("/usr/bin/python3", [script], { input: JSON.stringify(jobs), maxBuffer: 1 << 28 });
  const expected = JSON.parse(output);
  let rows = 0;
  for (const [i, { image, name }] of images.entries()) {
    for (const [k, [call, options]] of calls.entries()) {
      const found = await CALLS[call](image, options);
      assert.deepEqual(found, expected[i][k], `${call} of ${name}`);
      rows += (found.rows ?? found).length;
    }
  }
  return rows;
}

test("sample images have the native results", async () => {
  const images = samples.map((file) => ({ name: basename(file), image: readSample(file), type: "uint8" }));
  const rows = await compare(images, [
    ["find_objects", {}],
    ["find_objects", { minScore: 0.1 }],
    ["find_objects", { radius: 8, polarity: "bright" }],
    ["find_objects", { radius: [4, 14], minScore: 0.2 }],
    ["estimate_settings", {}],
    ["segment", {}],
    ["segment", { minArea: 40, maxArea: 2000, excludeBorder: true }],
    ["find_centers", { maxRadius: 16 }],
  ]);
  assert.ok(rows > 1000, `only ${rows} rows were compared`);
});

test("random images of every type have the native results", async () => {
  const images = [];
  for (const type of ["uint8", "uint16", "int16", "float32"]) {
    for (let seed = 0; seed < 5; ++seed) images.push({ name: `${type} ${seed}`, image: randomImage(seed, type), type });
  }
  const rows = await compare(images, [
    ["find_objects", {}],
    ["segment", { minScore: 0.2 }],
    ["find_centers", { maxRadius: 12, polarity: "both", power: 1, relativeGradient: 0.1 }],
  ]);
  assert.ok(rows > 500, `only ${rows} rows were compared`);
});

test("pixels that are no numbers have the native results", async () => {
  const image = randomImage(4, "float32");
  image.data[1000] = NaN;
  image.data[2000] = Infinity;
  image.data[3000] = -Infinity;
  assert.ok((await compare([{ name: "NaN", image, type: "float32" }], [["find_objects", {}], ["segment", {}]])) > 0);
});

// [what is encoded, the words of the command, where it writes]
const FILES = [
  ["csv", ["--format", "csv"], "--table"],
  ["json", ["--format", "json"], "--table"],
  ["geojson", ["--format", "geojson"], "--table"],
  ["roi", ["--format", "roi"], "--table"],
  ["napari", ["--format", "napari"], "--table"],
];

function written(subcommand, words, option, image, extension) {
  const file = join(folder, `written.${extension}`);
  const table = option === "--table" ? [] : ["--table", join(folder, "other.csv")];
  runCommand(subcommand, "--quiet", ...words, ...table, option, file, image);
  return readFileSync(file);
}

test("encoded results are the command's files", async () => {
  for (const file of samples) {
    const image = readSample(file);
    const found = await orva.findObjects(image, { minScore: 0.4 });
    const segmented = await orva.segment(image, { excludeBorder: true });
    const same = async (result, subcommand, words, option, format, extension) => {
      const bytes = await orva.encode(image, result, format, { file });
      const expected = written(subcommand, words, option, file, extension);
      assert.ok(Buffer.compare(Buffer.from(bytes), expected) === 0, `${subcommand} ${format} of ${basename(file)}`);
    };
    for (const [format, words, option] of FILES) {
      await same(found, "find", ["--min-score", "0.4", ...words], option, format, "table");
      await same(segmented, "segment", ["--exclude-border", ...words], option, format, "table");
    }
    await same(found, "find", ["--min-score", "0.4"], "--overlay", "overlay", "png");
    await same(found, "find", ["--min-score", "0.4"], "--table", "geojson.gz", "geojson.gz");
    await same(segmented, "segment", ["--exclude-border"], "--outlines", "overlay", "png");
    await same(segmented, "segment", ["--exclude-border"], "--labels", "labels", "png");
  }
});

test("votes and thresholds are the command's", async () => {
  for (const file of samples) {
    const image = readSample(file);
    const votes = await orva.vote(image, { maxRadius: 14, relativeThreshold: 0.2 });
    const table = runCommand("vote", "--quiet", "--max-radius", "14", "--relative-threshold", "0.2", file);
    assert.equal(Buffer.from(await orva.encode(image, votes, "csv")).toString(), table.toString());

    const { regions, threshold } = await orva.measure(image, { auto: 4, minSize: 20, fill: true });
    const csv = join(folder, "measured.csv");
    const words = ["--auto", "4", "--min-size", "20", "--fill", "--table", csv, file];
    const report = runCommand("measure", ...words).toString();
    assert.equal(Math.fround(Number(/threshold: (\S+)/.exec(report)[1])), threshold);
    const [header, ...rows] = readFileSync(csv, "utf-8").trim().split("\n");
    assert.deepEqual(Object.keys(regions[0]).join(), header);
    assert.deepEqual(
      regions.map((r) => Object.values(r)),
      rows.map((row) => row.split(",").map((v, k) => (k < 11 ? Number(v) : Math.fround(Number(v))))),
    );
  }
});
