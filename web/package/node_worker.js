// The worker of node.js.
import { readFile } from "node:fs/promises";
import { parentPort } from "node:worker_threads";
import { Engine } from "./engine.js";
import { serve } from "./messages.js";

const engine = new Engine(async () => WebAssembly.compile(await readFile(new URL("./orva.wasm", import.meta.url))));

serve(
  engine,
  (handle) => parentPort.on("message", handle),
  (message, buffers) => parentPort.postMessage(message, buffers),
);
