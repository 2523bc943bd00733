// The two sides of a worker: requests with a number go in, answers with the same number come out.

// Answers requests that `listen` brings and `send` takes back.
export function serve(engine, listen, send) {
  listen(async ({ id, request }) => {
    try {
      const answer = await engine.perform(request);
      const arrays = ["objects", "numbers", "labels", "bytes"].filter((part) => answer[part]);
      send({ id, answer }, arrays.map((part) => answer[part].buffer));
    } catch (error) {
      send({ id, failure: error.message }, []);
    }
  });
}

// Sends requests to a worker, which `start({onMessage, onError})` starts when the first one comes;
// it returns {post, terminate, setBusy}.
export class Client {
  #start;
  #worker;
  #waiting = new Map();
  #lastId = 0;

  constructor(start) {
    this.#start = start;
  }

  perform(request) {
    this.#worker ??= this.#start({
      onMessage: (message) => this.#settle(message),
      onError: (error) => this.#fail(error),
    });
    return new Promise((resolve, reject) => {
      const id = ++this.#lastId;
      this.#waiting.set(id, { resolve, reject });
      this.#worker.setBusy(true);
      this.#worker.post({ id, request });
    });
  }

  close() {
    this.#worker?.terminate();
    this.#worker = undefined;
    for (const { reject } of this.#waiting.values()) reject(new Error("orva was closed"));
    this.#waiting.clear();
  }

  #settle({ id, answer, failure }) {
    const call = this.#waiting.get(id);
    if (!call) return;
    this.#waiting.delete(id);
    if (this.#waiting.size === 0) this.#worker.setBusy(false);
    if (failure === undefined) call.resolve(answer);
    else call.reject(new Error(failure));
  }

  #fail(error) {
    const waiting = [...this.#waiting.values()];
    this.#waiting.clear();
    this.#worker?.terminate();
    this.#worker = undefined;
    for (const { reject } of waiting) reject(error);
  }
}
