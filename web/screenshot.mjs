// Writes the picture of docs/web.md from the page that scripts/web has built: node web/screenshot.mjs FILE.png
import { dirname, join } from "node:path";
import { fileURLToPath } from "node:url";
import { chromium } from "playwright-core";
import { serve } from "./serve.mjs";

const root = join(dirname(fileURLToPath(import.meta.url)), "..");
const { server, address } = await serve(join(root, "build", "web", "page"));
const browser = await chromium.launch({ executablePath: "/usr/bin/chromium", args: ["--no-sandbox", "--disable-gpu"] });
const page = await browser.newPage({ viewport: { width: 1240, height: 860 }, colorScheme: "light" });
await page.goto(address);
for (const sample of [1, 2, 0]) {
  await page.locator(".sample").nth(sample).evaluate((button) => button.click());
  await page.waitForTimeout(500);
}
await page.waitForFunction(() =>
  [...document.querySelectorAll("#images .number")].every((cell) => /^[\d.]+$/.test(cell.textContent)),
);
await page.waitForTimeout(5000); // for the outlines
await page.screenshot({ path: process.argv[2] });
await browser.close();
server.close();
