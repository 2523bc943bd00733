// Files that cannot be read are told and harm nothing else; haste leads to the same results.
import assert from "node:assert/strict";
import { writeFileSync } from "node:fs";
import { join } from "node:path";
import { test } from "node:test";
import { count, drop, openPage, slide } from "./browser.mjs";
import { damagedFiles } from "./damaged_files.mjs";
import { runCommand, samples, temporaryFolder } from "./support.mjs";

const folder = temporaryFolder();
const sparse = samples.find((file) => file.includes("sparse"));
const dense = samples.find((file) => file.includes("dense"));
const regionsOf = (...words) => runCommand("segment", "--quiet", ...words).toString().trim().split("\n").length - 1;

const rowsOf = (page) =>
  page.locator("#images tr").evaluateAll((rows) =>
    rows.map((row) => [".name", ".number", ".message"].map((part) => row.querySelector(part).textContent)));

test("damaged files are told and harm no others", async (t) => {
  const files = damagedFiles.map(([name, bytes]) => {
    writeFileSync(join(folder, name), bytes);
    return join(folder, name);
  });
  const page = await openPage(t);
  await page.setInputFiles("#files", [sparse, ...files, dense]);
  await count(page);
  const rows = await rowsOf(page);
  assert.equal(rows.length, damagedFiles.length + 2);
  assert.deepEqual([rows[0][1], rows.at(-1)[1]], [String(regionsOf(sparse)), String(regionsOf(dense))]);
  damagedFiles.forEach(([name, , outcome], i) => {
    const [shownName, shownCount, message] = rows[i + 1];
    assert.equal(shownName, name);
    if (typeof outcome === "number") assert.equal(shownCount, String(outcome), name);
    else assert.ok(shownCount === "failed" && message.includes(outcome), `${name}: ${shownCount} ${message}`);
  });
  // The message stands in place of the image, and nothing can be downloaded.
  await page.locator(".open", { hasText: "bomb.png" }).click();
  assert.match(await page.textContent("#failure"), /^bomb\.png is too large for a browser/);
  assert.ok(await page.isDisabled("[data-format=find-csv]"));
  await page.locator(".open").first().click();
  assert.ok(await page.isHidden("#failure"));
  assert.equal(await count(page), regionsOf(sparse));
  // Chromium styles the error that its parser puts into a damaged XML text, which the policy does not allow.
  assert.deepEqual(page.faults.filter((fault) => !fault.startsWith("Applying inline style")), []);
});

test("images may go while they are searched", async (t) => {
  const page = await openPage(t);
  await page.setInputFiles("#files", Array.from({ length: 20 }, (_, i) => (i % 2 === 0 ? dense : sparse)));
  for (let i = 0; i < 18; ++i) await page.locator(".remove").first().click();
  await count(page);
  assert.deepEqual((await rowsOf(page)).map((row) => row[1]), [dense, sparse].map((file) => String(regionsOf(file))));
  for (let i = 0; i < 2; ++i) await page.locator(".remove").first().click();
  assert.ok(await page.isVisible("#start"));
  await drop(page, sparse);
  assert.equal(await count(page), regionsOf(sparse));
  assert.deepEqual(page.faults, []);
});

test("hasty changes lead to the last one's result", async (t) => {
  const page = await openPage(t);
  await drop(page, sparse);
  await page.evaluate(() => {
    const click = (selector) => document.querySelector(selector).click();
    for (let i = 0; i < 30; ++i) {
      click(`#polarity [value=${["dark", "bright"][i % 2]}]`);
      click(`#shape [value=${["circles", "regions", "none"][i % 3]}]`);
    }
    click("#shape [value=regions]");
  });
  for (let i = 5; i < 95; i += 3) await slide(page, "#score", i / 100);
  await slide(page, "#score", 0.4);
  await page.setViewportSize({ width: 500, height: 700 });
  await page.setViewportSize({ width: 1000, height: 600 });
  assert.equal(await count(page), regionsOf("--min-score", "0.4", "--polarity", "bright", sparse));
  assert.deepEqual(page.faults, []);
});
