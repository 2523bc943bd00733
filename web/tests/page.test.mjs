// The page: opening images, sliders, downloads. Results are those of the command.
import assert from "node:assert/strict";
import { execFileSync } from "node:child_process";
import { readFileSync, writeFileSync } from "node:fs";
import { join } from "node:path";
import { test } from "node:test";
import { encode } from "fast-png";
import { count, drop, openPage, saved, slide } from "./browser.mjs";
import { randomImage, readSample, root, runCommand, samples, temporaryFolder } from "./support.mjs";

const folder = temporaryFolder();
const dense = samples.find((file) => file.includes("dense"));
const sparse = samples.find((file) => file.includes("sparse"));
const histology = samples.find((file) => file.includes("histw"));

const tableOf = (...words) => runCommand(words[0], "--quiet", ...words.slice(1)).toString();
const rowsOf = (...words) => tableOf(...words).trim().split("\n").length - 1;

function assertSame(bytes, expected, what) {
  assert.ok(expected.length > 0);
  assert.ok(Buffer.compare(bytes, expected) === 0, `${what}: ${bytes.length} bytes, not those of the command`);
}

// A file of the command.
function written(subcommand, option, name, ...words) {
  const file = join(folder, name);
  const table = option === "--table" ? [] : ["--table", join(folder, "unused.csv")];
  runCommand(subcommand, "--quiet", ...words.slice(0, -1), ...table, option, file, words.at(-1));
  return readFileSync(file);
}

test("a dropped image is counted", async (t) => {
  const page = await openPage(t);
  assert.match(await page.textContent(".promise"), /Images stay on this machine/);
  await drop(page, dense);
  assert.equal(await count(page), rowsOf("segment", dense));
  assert.match(await page.textContent("#summary"), /^bright, radius about 10\.\d px, confidence 0\.\d\d$/);
  assert.match(await page.getAttribute("#histogram", "aria-label"), /^Histogram of 237 radii from/);
  assert.deepEqual(page.faults, []);
});

test("samples and several files fill the list", async (t) => {
  const page = await openPage(t);
  await page.click(".sample >> nth=2");
  assert.equal(await count(page), rowsOf("segment", histology));
  const broken = join(folder, "broken.tif");
  writeFileSync(broken, "II*\0 is no TIFF file");
  await page.setInputFiles("#files", [sparse, dense, broken]);
  await count(page);
  const cells = await page.locator("#images tr").evaluateAll((rows) =>
    rows.map((row) => [".name", ".number", ".message"].map((part) => row.querySelector(part).textContent)));
  assert.deepEqual(cells.map(([name]) => name), ["dsb_histw_a.png", "dsb_sparse_a.pgm", "dsb_dense_a.pgm", "broken.tif"]);
  assert.deepEqual(cells.map((cell) => cell[1]), ["70", "11", "237", "failed"]);
  assert.match(cells[3][2], /^is a damaged TIFF file/);
  assert.match(await page.textContent("#totals"), /3 of 4 images\s*318/);
  const { bytes } = await saved(page, "#summary-csv");
  const [header, ...rows] = bytes.toString().trim().split("\n");
  assert.equal(header, "file,width,height,objects,radius,polarity,confidence,seconds");
  // But for the time, the rows of a batch of the command.
  const out = join(folder, "batch");
  runCommand("segment", "--quiet", "--out", out, sparse, dense);
  const [, ...expected] = readFileSync(join(out, "summary.csv"), "utf-8").trim().split("\n");
  const facts = (row) => row.replace(/^.*\//, "").replace(/,[^,]*$/, "");
  assert.deepEqual(rows.slice(1).map(facts), expected.map(facts));
  await page.click('[aria-label="Remove broken.tif"]');
  assert.equal(await page.locator("#images tr").count(), 3);
  await page.keyboard.press("n");
  assert.equal(await count(page), 11);
});

test("sliders follow with the next frame", async (t) => {
  const { data, width, height } = readSample(dense);
  const size = 1024;
  const tiled = new Uint8Array(size * size).map(
    (_, i) => data[(Math.floor(i / size) % height) * width + ((i % size) % width)],
  );
  const file = join(folder, "large.pgm");
  writeFileSync(file, Buffer.concat([Buffer.from(`P5 ${size} ${size} 255\n`), tiled]));
  const page = await openPage(t);
  await drop(page, file);
  const all = await count(page);
  assert.equal(all, rowsOf("segment", file));

  // What was found with lower scores and of any radius follows with the next frame.
  const times = [];
  for (const score of [0.2, 0.4, 0.6, 0.8]) {
    times.push(await slide(page, "#score", score));
    assert.equal(Number(await page.textContent("#count")), rowsOf("find", "--min-score", String(score), file));
  }
  // Then come the regions.
  assert.equal(await count(page), rowsOf("segment", "--min-score", "0.8", file));
  await slide(page, "#score", 0.5);
  const slider = "#radius-range input[aria-label='Smallest radius']";
  times.push(await slide(page, slider, 350));
  const kept = Number(await page.textContent("#count"));
  assert.ok(kept > 0 && kept < all, `${kept} of ${all} at once`);
  t.diagnostic(`milliseconds: ${times.map(Math.round)}`);
  const low = await page.inputValue("#low");
  const range = ["--radius", `${low}:1000000`, "--polarity", "bright"];
  assert.equal(await count(page), rowsOf("segment", ...range, file));
  assertSame((await saved(page, "[data-format=find-csv]")).bytes, written("find", "--table", "a.csv", ...range, file), "range");
  await page.click("#radius-reset");
  assert.equal(await count(page), all);
});

test("downloads are the command's files", async (t) => {
  const page = await openPage(t);
  for (const file of [dense, histology]) {
    await drop(page, file);
    await count(page);
    const bytesOf = async (format) => (await saved(page, `[data-format=${format}]`)).bytes;
    assertSame(await bytesOf("find-csv"), written("find", "--table", "a.csv", file), "objects");
    assertSame(await bytesOf("segment-csv"), written("segment", "--table", "a.csv", file), "measurements");
    assertSame(await bytesOf("labels"), written("segment", "--labels", "a.png", file), "labels");
    assertSame(await bytesOf("geojson"), written("segment", "--table", "a.geojson", file), "outlines");
    assertSame(await bytesOf("roi"), written("segment", "--table", "a.zip", file), "outlines as ROIs");
    assertSame(await bytesOf("overlay"), written("segment", "--outlines", "a.png", file), "picture of outlines");
    await page.check("#shape [value=circles]", { force: true });
    assertSame(await bytesOf("geojson"), written("find", "--table", "a.geojson", file), "circles");
    assertSame(await bytesOf("roi"), written("find", "--table", "a.zip", file), "circles as ROIs");
    assertSame(await bytesOf("overlay"), written("find", "--overlay", "a.png", file), "picture of circles");
    await page.check("#shape [value=regions]", { force: true });
  }
  await slide(page, "#score", 0.7);
  const { name, bytes } = await saved(page, "[data-format=segment-csv]");
  assert.equal(name, "dsb_histw_a_regions.csv");
  assertSame(bytes, written("segment", "--table", "a.csv", "--min-score", "0.7", histology), "surer objects");
});

test("files of every kind have the command's results", async (t) => {
  const made = join(root, "web", "tests", "make_files.py");
  execFileSync("/usr/bin/python3", [made, dense, folder]);
  const page = await openPage(t);
  const png = join(folder, "grey16.png");
  const grey = randomImage(7, "uint16");
  writeFileSync(png, encode({ ...grey, channels: 1, depth: 16 }));
  const files = [
    ["grey16.png"], ["uint8.tif"], ["uint16.tif"], ["float32.tif"], ["white.tif"], ["colour.tif"], ["colour.png"],
    ["imagej.tif", "--channel", "0"], ["stack.ome.tif", "--channel", "0"],
  ];
  for (const [name, ...words] of files) {
    const file = join(folder, name);
    await drop(page, file);
    const n = await count(page);
    const { bytes } = await saved(page, "[data-format=find-csv]");
    const expected = tableOf("find", ...words, file);
    assert.equal(bytes.toString(), expected, name);
    assert.ok(n > 3, `${n} objects in ${name}`);
  }
  // Another channel and one slice.
  await page.selectOption("#channel", { label: "other" });
  await page.selectOption("#slice", { label: "slice 2" });
  await count(page);
  const { bytes } = await saved(page, "[data-format=geojson]");
  const file = join(folder, "stack.ome.tif");
  assertSame(bytes, written("segment", "--table", "a.geojson", "--channel", "1", "--z", "1", file), "a slice");
  // The command reads no JPEG files.
  await drop(page, join(folder, "picture.jpg"));
  assert.ok(Math.abs((await count(page)) - 236) < 30);
  assert.deepEqual(page.faults, []);
});

test("planes of every order of axes are the command's", async (t) => {
  const made = join(root, "web", "tests", "make_hyperstacks.py");
  const names = execFileSync("/usr/bin/python3", [made, sparse, folder]).toString().trim().split("\n");
  assert.equal(names.length, 7);
  const page = await openPage(t);
  for (const name of names) {
    const file = join(folder, name);
    await drop(page, file);
    await count(page);
    const labels = await page.locator("#channel option").allTextContents();
    assert.deepEqual(labels, name.includes("ome") ? ["DAPI", "tubulin"] : ["channel 1", "channel 2"]);
    for (const [c, z, time] of [[1, 2, 0], [0, "max", 1]]) {
      await page.selectOption("#channel", String(c));
      await page.selectOption("#slice", String(z));
      await page.selectOption("#time", String(time));
      assert.ok((await count(page)) > 0);
      const { bytes } = await saved(page, "[data-format=find-csv]");
      const words = ["--channel", String(c), "--z", String(z), "--time", String(time)];
      assertSame((await saved(page, "[data-format=roi]")).bytes, written("segment", "--table", "a.zip", ...words, file), `ROIs of ${name}`);
      assert.equal(bytes.toString(), tableOf("find", ...words, file), `${name} ${words}`);
    }
  }
  assert.deepEqual(page.faults, []);
});

test("keys, wheel and fingers move the image", async (t) => {
  const page = await openPage(t, { hasTouch: true });
  await drop(page, sparse);
  await count(page);
  const box = await page.locator("#canvas").boundingBox();
  const [x, y] = [box.x + box.width / 2, box.y + box.height / 2];
  // The pixel under a point.
  const pixelAt = async (dx) => {
    await page.mouse.move(x + dx, y);
    const [, px, py] = /x (\d+) {2}y (\d+)/.exec(await page.textContent("#readout"));
    return { x: Number(px), y: Number(py) };
  };
  const span = async () => (await pixelAt(100)).x - (await pixelAt(0)).x;
  const fitted = await span();
  assert.ok(fitted > 5);
  await page.focus("#canvas");
  await page.keyboard.press("+");
  await page.keyboard.press("+");
  const closer = await span();
  assert.ok(closer < fitted);
  const before = await pixelAt(0);
  await page.keyboard.press("ArrowRight");
  assert.ok((await pixelAt(0)).x > before.x);
  await page.keyboard.press("0");
  assert.equal(await span(), fitted);
  await page.mouse.move(x, y);
  await page.mouse.wheel(0, -400);
  await page.waitForTimeout(100);
  assert.ok((await span()) < fitted);
  await page.click("#fit");
  const session = await page.context().newCDPSession(page);
  const touch = (type, ...points) =>
    session.send("Input.dispatchTouchEvent", { type, touchPoints: points.map(([tx], id) => ({ x: tx, y, id })) });
  await touch("touchStart", [x - 40], [x + 40]);
  for (let d = 50; d <= 120; d += 10) await touch("touchMove", [x - d], [x + d]);
  await touch("touchEnd");
  const pinched = await span();
  assert.ok(pinched < 0.6 * fitted, `${pinched} after ${fitted}`);
  await page.keyboard.press("o");
  assert.ok(await page.isChecked("#shape [value=none]"));
});
