// Checks Python sources by ruff: node check.mjs MODULES <INPUT
//
// MODULES is the folder node_modules. INPUT is JSON: {"settings": the table [tool.ruff], "files": paths}.
// Prints a line per finding; the status is 1 if there is any.
import { createRequire } from "node:module";
import { readFileSync } from "node:fs";
import { resolve } from "node:path";

const require = createRequire(resolve(process.argv[2], "modules.cjs"));
const { PositionEncoding, Workspace } = require("@astral-sh/ruff-wasm-nodejs");

const { settings, files } = JSON.parse(readFileSync(0, "utf-8"));
const ruff = new Workspace(settings, PositionEncoding.Utf32);
let findings = 0;
for (const file of files) {
  for (const { code, message, start_location: at } of ruff.check(readFileSync(file, "utf-8"))) {
    console.log(`${file}:${at.row}:${at.column}: ${code ?? "error"} ${message}`);
    ++findings;
  }
}
console.log(`ruff: ${findings} findings in ${files.length} files`);
process.exitCode = findings > 0 ? 1 : 0;
