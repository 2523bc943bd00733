// Builds the npm package and the page: node build.mjs VERSION ORVA.wasm FOLDER
//
// FOLDER gets `package`, the content of the package orva, and `page`, a folder of files to serve.
import { build } from "esbuild";
import { decode } from "fast-png";
import { createHash } from "node:crypto";
import { cp, mkdir, readFile, readdir, rm, writeFile } from "node:fs/promises";
import { dirname, join } from "node:path";
import { fileURLToPath } from "node:url";
import { readPnm } from "./page/pnm.js";
import { smallPng } from "./small_png.mjs";

const here = dirname(fileURLToPath(import.meta.url));
const [version, wasm, folder] = process.argv.slice(2);

const common = {
  bundle: true,
  format: "esm",
  target: ["es2022"],
  legalComments: "none", // licences.txt has them all
  metafile: true,
  logLevel: "warning",
};

async function buildPackage(to) {
  const source = (name) => join(here, "package", name);
  await rm(to, { recursive: true, force: true });
  await mkdir(to, { recursive: true });
  // The files import each other, so that both entries share them; pako is in engine.js.
  const { metafile } = await build({
    ...common,
    entryPoints: ["browser", "local", "worker", "node", "node_worker"].map((name) => source(`${name}.js`)),
    outdir: to,
    splitting: true,
    chunkNames: "shared_[hash]",
    platform: "neutral",
    mainFields: ["module", "main"],
    external: ["node:*"],
  });
  await cp(source("index.d.ts"), join(to, "index.d.ts"));
  await cp(source("README.md"), join(to, "README.md"));
  await cp(wasm, join(to, "orva.wasm"));
  await writeFile(join(to, "licences.txt"), await licencesOf(Object.keys(metafile.inputs)));
  const facts = JSON.parse(await readFile(source("package.json"), "utf-8"));
  await writeFile(join(to, "package.json"), `${JSON.stringify({ ...facts, version }, null, 2)}\n`);
}

// The sample images as PNG files, which are smaller.
async function buildSamples(to) {
  const from = join(here, "..", "data", "images");
  await mkdir(to, { recursive: true });
  for (const name of await readdir(from)) {
    const image = readPnm(await readFile(join(from, name)));
    const png = smallPng(image);
    if (Buffer.compare(decode(png).data, image.data) !== 0) throw new Error(`${name} changed`);
    await writeFile(join(to, name.replace(/\.pgm$/, ".png")), png);
  }
}

// The licences of the npm packages of which `inputs` name files, and of what the module is linked
// with.
const LINKED = {
  "nlohmann-json": "/usr/share/doc/nlohmann-json3-dev/copyright",
  musl: "/usr/share/emscripten/system/lib/libc/musl/COPYRIGHT",
};

async function licencesOf(inputs) {
  const folders = new Set();
  for (const input of inputs) {
    const match = /node_modules\/((?:@[^/]+\/)?[^/]+)\//.exec(input);
    if (match) folders.add(match[1]);
  }
  const texts = [];
  for (const [name, file] of Object.entries(LINKED)) texts.push(name, await readFile(file, "utf-8"));
  for (const name of [...folders].sort()) {
    const from = join(here, "node_modules", name);
    const file = (await readdir(from)).find((entry) => /^licen[cs]e/i.test(entry));
    if (!file) throw new Error(`${name} has no licence`);
    texts.push(name, await readFile(join(from, file), "utf-8"));
  }
  return `${texts.map((text) => text.trim()).join("\n\n")}\n`;
}

async function filesIn(folder, under = "") {
  const files = [];
  for (const entry of await readdir(join(folder, under), { withFileTypes: true })) {
    const name = under ? `${under}/${entry.name}` : entry.name;
    if (entry.isDirectory()) files.push(...(await filesIn(folder, name)));
    else files.push(name);
  }
  return files.sort();
}

async function buildPage(to) {
  const source = join(here, "page");
  await rm(to, { recursive: true, force: true });
  await mkdir(to, { recursive: true });
  const { metafile } = await build({
    ...common,
    entryPoints: { app: join(source, "app.js"), worker: join(here, "package", "worker.js") },
    outdir: to,
    splitting: true,
    chunkNames: "part_[hash]",
    platform: "browser",
    minify: true,
    define: { ORVA_VERSION: JSON.stringify(version) },
    // No microscope writes the formats of surveying.
    alias: { lerc: join(source, "no_decoder.js"), orva: join(here, "package", "browser.js") },
  });
  for (const name of ["index.html", "icon.svg", "manifest.webmanifest"]) await cp(join(source, name), join(to, name));
  await build({ ...common, entryPoints: [join(source, "style.css")], outdir: to, minify: true });
  await cp(wasm, join(to, "orva.wasm"));
  await writeFile(join(to, "licences.txt"), await licencesOf(Object.keys(metafile.inputs)));
  await buildSamples(join(to, "samples"));

  // The service worker keeps all files under a name that changes with their content.
  const files = await filesIn(to);
  const hash = createHash("sha256");
  for (const name of files) hash.update(name).update(await readFile(join(to, name)));
  await build({
    ...common,
    entryPoints: [join(source, "service_worker.js")],
    outdir: to,
    format: "iife",
    minify: true,
    define: {
      FILES: JSON.stringify(["./", ...files.filter((name) => name !== "index.html")]),
      CACHE_NAME: JSON.stringify(`orva-${version}-${hash.digest("hex").slice(0, 12)}`),
    },
  });
}

await buildPackage(join(folder, "package"));
await buildPage(join(folder, "page"));
