// What the page promises: nothing leaves it, it works offline, everyone can use it, it stays small.
import assert from "node:assert/strict";
import { readFileSync, readdirSync, statSync, writeFileSync } from "node:fs";
import { createServer } from "node:http";
import { createRequire } from "node:module";
import { join } from "node:path";
import { test } from "node:test";
import { address, browser, count, drop, openPage, saved, slide } from "./browser.mjs";
import { built, randomImage, samples, temporaryFolder } from "./support.mjs";

const sparse = samples.find((file) => file.includes("sparse"));
const dense = samples.find((file) => file.includes("dense"));
const axe = readFileSync(createRequire(import.meta.url).resolve("axe-core/axe.min.js"), "utf-8");

// Waits until the service worker has kept all files.
const isKept = (page) => page.evaluate(() => navigator.serviceWorker.ready.then(({ active }) => new Promise((done) => {
  if (active.state === "activated") done();
  else active.addEventListener("statechange", () => active.state === "activated" && done());
})));

test("no request leaves the page", async (t) => {
  const page = await openPage(t);
  await drop(page, sparse, dense);
  await count(page);
  await saved(page, "[data-format=segment-csv]");
  await slide(page, "#score", 0.3);
  await isKept(page);
  const elsewhere = page.requests.filter((url) => !url.startsWith(address) && !/^(data|blob):/.test(url));
  assert.ok(page.requests.length > 5);
  assert.deepEqual(elsewhere, []);
  assert.deepEqual(page.faults, []);
});

test("the policy stops requests to elsewhere", async (t) => {
  const seen = [];
  const other = createServer((request, response) => {
    seen.push(request.url);
    response.writeHead(200, { "Access-Control-Allow-Origin": "*" }).end();
  });
  await new Promise((done) => other.listen(0, "127.0.0.1", done));
  t.after(() => other.close());
  const url = `http://127.0.0.1:${other.address().port}/`;
  const page = await openPage(t);
  const outcome = await page.evaluate(async (to) => {
    const tries = {
      fetch: () => fetch(to, { mode: "no-cors" }),
      socket: () => new Promise((done, failed) => {
        const socket = new WebSocket(to.replace("http", "ws"));
        Object.assign(socket, { onopen: done, onerror: failed });
      }),
      picture: () => new Promise((done, failed) => Object.assign(new Image(), { onload: done, onerror: failed, src: `${to}a.png` })),
      script: () => import(`${to}a.js`),
      code: () => Function("return 1")(),
    };
    const result = {};
    for (const [name, attempt] of Object.entries(tries)) {
      result[name] = await Promise.resolve().then(attempt).then(() => "done", () => "stopped");
    }
    navigator.sendBeacon(`${to}beacon`, "pixels");
    return result;
  }, url);
  assert.deepEqual([...new Set(Object.values(outcome))], ["stopped"], JSON.stringify(outcome));
  await page.waitForTimeout(300);
  assert.deepEqual(seen, []);
});

test("it works offline once loaded", async (t) => {
  const page = await openPage(t);
  await isKept(page);
  await page.context().setOffline(true);
  await page.reload();
  await page.click(".sample >> nth=1");
  assert.equal(await count(page), 23);
  await drop(page, sparse);
  assert.equal(await count(page), 11);
  const { bytes } = await saved(page, "[data-format=roi]");
  assert.equal(bytes.subarray(0, 2).toString(), "PK");
});

test("axe finds no violation", async (t) => {
  const violations = async (page, where) => {
    await page.evaluate(axe);
    const result = await page.evaluate(() => window.axe.run());
    assert.ok(result.passes.length > 10);
    return result.violations.map(({ id, nodes }) => `${where}: ${id} ${nodes.map((node) => node.html).join(" ")}`);
  };
  for (const colorScheme of ["light", "dark"]) {
    for (const viewport of [{ width: 1600, height: 1000 }, { width: 390, height: 844 }]) {
      const where = `${colorScheme} ${viewport.width}`;
      const page = await openPage(t, { colorScheme, viewport });
      assert.deepEqual(await violations(page, `${where} start`), []);
      await drop(page, sparse, dense);
      await count(page);
      assert.deepEqual(await violations(page, `${where} results`), []);
      await page.click("#help");
      assert.deepEqual(await violations(page, `${where} help`), []);
    }
  }
});

test("every control has a name and is reached by keys", async (t) => {
  const page = await openPage(t);
  await drop(page, sparse);
  await count(page);
  const reached = new Set();
  await page.evaluate(() => document.activeElement.blur());
  for (let i = 0; i < 60; ++i) {
    await page.keyboard.press("Tab");
    const id = await page.evaluate(() => {
      const e = document.activeElement;
      return e.id || e.getAttribute("aria-label") || e.dataset.format || e.name || e.className;
    });
    reached.add(id);
  }
  for (const id of [
    "open", "theme", "help", "canvas", "zoom-in", "fit", "Smallest radius", "Largest radius", "low", "high", "score",
    "polarity", "shape", "contrast-auto", "find-csv", "overlay", "summary-csv", "Remove dsb_sparse_a.pgm",
  ]) {
    assert.ok(reached.has(id), `${id} is not among ${[...reached].join(", ")}`);
  }
  await page.focus("#score");
  for (let i = 0; i < 45; ++i) await page.keyboard.press("ArrowRight");
  assert.ok((await count(page)) < 11);
});

test("a choice of light or dark is kept", async (t) => {
  const page = await openPage(t, { colorScheme: "light" });
  const ground = () => page.evaluate(() => getComputedStyle(document.body).backgroundColor);
  const light = await ground();
  await page.click("#theme");
  const dark = await ground();
  assert.notEqual(dark, light);
  await page.reload();
  assert.equal(await ground(), dark);
});

test("the page is below 1.5 MB", () => {
  const sizes = readdirSync(join(built, "page"), { recursive: true, withFileTypes: true })
    .filter((entry) => entry.isFile())
    .map((entry) => statSync(join(entry.parentPath ?? entry.path, entry.name)).size);
  const total = sizes.reduce((sum, size) => sum + size, 0);
  // Uncompressed, with the samples and what a service worker keeps.
  assert.ok(sizes.length > 10 && total < 1.5e6, `${total} bytes`);
});

test("a hundred images in a row keep the memory", async (t) => {
  const folder = temporaryFolder();
  const page = await openPage(t);
  const session = await browser.newBrowserCDPSession();
  const collector = await page.context().newCDPSession(page);
  // Of all processes of pages and their workers, in MiB.
  const memory = async () => {
    await collector.send("HeapProfiler.collectGarbage");
    await page.waitForTimeout(500);
    const { processInfo } = await session.send("SystemInfo.getProcessInfo");
    return processInfo
      .filter(({ type }) => type === "renderer")
      .map(({ id }) => Number(/VmRSS:\s+(\d+)/.exec(readFileSync(`/proc/${id}/status`, "utf-8"))[1]) / 1024)
      .reduce((sum, size) => sum + size, 0);
  };
  const side = 512;
  const used = [];
  for (let start = 0; start < 100; start += 25) {
    const files = [];
    for (let i = start; i < start + 25; ++i) {
      const { data, width, height } = randomImage(i, "uint16");
      const pixels = Buffer.alloc(side * side * 2);
      for (let k = 0; k < side * side; ++k) {
        pixels.writeUInt16BE(data[(Math.floor(k / side) % height) * width + ((k % side) % width)], 2 * k);
      }
      files.push(join(folder, `${i}.pgm`));
      writeFileSync(files.at(-1), Buffer.concat([Buffer.from(`P5 ${side} ${side} 65535\n`), pixels]));
    }
    await page.setInputFiles("#files", files);
    await count(page);
    used.push(await memory());
  }
  assert.equal(await page.locator("#images tr").count(), 100);
  // Each image has half a MiB of pixels; what stays of one is its objects and a small picture.
  const growth = used[3] - used[0];
  t.diagnostic(`MiB after 25, 50, 75 and 100 images: ${used.map(Math.round).join(", ")}`);
  assert.ok(growth < 20, `MiB: ${used.map(Math.round)}`);
});
