// The package in Node.js: the module runs in a worker thread.
import { Worker } from "node:worker_threads";
import { Client } from "./messages.js";
import { operations } from "./operations.js";

function startWorker({ onMessage, onError }) {
  const worker = new Worker(new URL("./node_worker.js", import.meta.url));
  worker.on("message", onMessage);
  worker.on("error", onError);
  worker.unref();
  return {
    post: (message) => worker.postMessage(message),
    terminate: () => worker.terminate(),
    // An idle worker does not keep the program alive.
    setBusy: (isBusy) => (isBusy ? worker.ref() : worker.unref()),
  };
}

const client = new Client(startWorker);

export const { findObjects, estimateSettings, segment, measure, measureLabels, vote, encode } = operations((request) =>
  client.perform(request),
);

// Ends the worker and frees its memory; the next call starts another.
export function close() {
  client.close();
}
