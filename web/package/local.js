// The module in the thread that loads this file, by its address.
import { Engine } from "./engine.js";

const address = new URL("./orva.wasm", import.meta.url);

export const engine = new Engine(async () => {
  const response = await fetch(address);
  if (!response.ok) throw new Error(`${address} could not be loaded: status ${response.status}`);
  return WebAssembly.compile(await response.arrayBuffer());
});
export const perform = (request) => engine.perform(request);
