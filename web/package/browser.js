// The package in browsers: the module runs in a worker, or here where there are no workers.
import { Client } from "./messages.js";
import { operations } from "./operations.js";

function startWorker({ onMessage, onError }) {
  const worker = new Worker(new URL("./worker.js", import.meta.url), { type: "module" });
  worker.onmessage = ({ data }) => onMessage(data);
  worker.onerror = (event) => onError(new Error(event.message || "the worker could not start"));
  return {
    post: (message) => worker.postMessage(message),
    terminate: () => worker.terminate(),
    setBusy() {},
  };
}

const hasWorkers = typeof Worker === "function";
const client = new Client(startWorker);
let local;

async function perform(request) {
  if (hasWorkers) return client.perform(request);
  local ??= import("./local.js");
  return (await local).perform(request);
}

export const { findObjects, estimateSettings, segment, measure, measureLabels, vote, encode } = operations(perform);

// Ends the worker and frees its memory; the next call starts another.
export function close() {
  client.close();
}
