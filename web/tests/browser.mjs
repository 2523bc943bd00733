// The page in headless Chromium, for the tests of the page.
import { readFileSync } from "node:fs";
import { basename, join } from "node:path";
import { after } from "node:test";
import { chromium } from "playwright-core";
import { serve } from "../serve.mjs";
import { built } from "./support.mjs";

const ARGUMENTS = [
  "--no-sandbox", "--disable-gpu", "--disable-quic", "--no-first-run", "--disable-background-networking",
  "--disable-component-update", "--disable-sync", "--disable-dev-shm-usage",
];
export const PATIENCE = 240_000;

const { server, address } = await serve(join(built, "page"));
export const browser = await chromium.launch({ executablePath: "/usr/bin/chromium", args: ARGUMENTS });
export { address };
after(async () => {
  await browser.close();
  server.closeAllConnections();
  server.close();
});

// A page in a context of its own. A test fails for an error in the console and, at the end, for a
// request to anywhere else, which `requests` lists.
export async function openPage(t, options = {}) {
  const context = await browser.newContext({ viewport: { width: 1280, height: 800 }, ...options });
  t.after(() => context.close());
  const page = await context.newPage();
  page.setDefaultTimeout(PATIENCE);
  const faults = [];
  page.requests = [];
  page.on("pageerror", (error) => faults.push(error.message));
  page.on("console", (message) => message.type() === "error" && faults.push(message.text()));
  context.on("request", (request) => page.requests.push(request.url()));
  page.faults = faults;
  await page.goto(address);
  return page;
}

// Drops files on the page, as a file manager does.
export async function drop(page, ...files) {
  const contents = files.map((file) => [basename(file), readFileSync(file).toString("base64")]);
  const transfer = await page.evaluateHandle((list) => {
    const data = new DataTransfer();
    for (const [name, text] of list) {
      data.items.add(new File([Uint8Array.from(atob(text), (c) => c.charCodeAt(0))], name));
    }
    return data;
  }, contents);
  await page.dispatchEvent("body", "drop", { dataTransfer: transfer });
}

// Waits until everything has been searched; returns the number on the screen.
export async function count(page) {
  await page.waitForFunction(() => {
    const cells = [...document.querySelectorAll("#images tr td.number:nth-of-type(1)")];
    return cells.length > 0 && cells.every((cell) => /^\d+$|failed/.test(cell.textContent)) &&
      document.querySelector("#images .pending") === null && document.getElementById("progress").hidden;
  });
  return Number(await page.textContent("#count"));
}

// Sets a slider to a value in its own units; returns the milliseconds until the screen has followed.
export const slide = (page, selector, value) =>
  page.evaluate(
    ([query, to]) =>
      new Promise((done) => {
        const input = document.querySelector(query);
        const start = performance.now();
        input.value = to;
        input.dispatchEvent(new Event("input", { bubbles: true }));
        requestAnimationFrame(() => setTimeout(() => done(performance.now() - start)));
      }),
    [selector, String(value)],
  );

// The bytes that a button saves, and their name.
export async function saved(page, button) {
  const [download] = await Promise.all([page.waitForEvent("download"), page.click(button)]);
  return { name: download.suggestedFilename(), bytes: readFileSync(await download.path()) };
}
