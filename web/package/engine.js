// Runs requests in an instance of the WebAssembly module.
import { deflate, deflateRaw } from "pako";

const LARGE = 256 << 20; // bytes from which an idle instance is given up, since memory never shrinks
const FIELDS = 11; // of an outcome, see native/module.cpp
const ARRAYS = { image: true, measured: true, labels: true, objects: true }; // parts in memory

class Exit extends Error {}

// What the module imports. `memory()` is its memory, `print(text)` takes what it prints.
function importsFor(memory, print) {
  let compressed;
  const text = new TextDecoder();
  return {
    host: {
      deflate(address, size, windowBits, strategy) {
        const bytes = new Uint8Array(memory(), address >>> 0, size >>> 0);
        const compress = windowBits < 0 ? deflateRaw : deflate;
        compressed = compress(bytes, { level: 6, windowBits, strategy });
        return compressed.length;
      },
      copyDeflated(address) {
        new Uint8Array(memory()).set(compressed, address >>> 0);
        compressed = undefined;
      },
    },
    env: { emscripten_notify_memory_growth() {} },
    // Of the system, no more than standard error and the end of the program.
    wasi_snapshot_preview1: {
      proc_exit(status) {
        throw new Exit(`the module ended with status ${status}`);
      },
      fd_write(file, vectors, count, written) {
        const view = new DataView(memory());
        let total = 0;
        for (let i = 0; i < count; ++i) {
          const address = view.getUint32(vectors + 8 * i, true);
          const size = view.getUint32(vectors + 8 * i + 4, true);
          print(text.decode(new Uint8Array(memory(), address, size)));
          total += size;
        }
        view.setUint32(written, total, true);
        return 0;
      },
      environ_sizes_get(count, size) {
        const view = new DataView(memory());
        view.setUint32(count, 0, true);
        view.setUint32(size, 0, true);
        return 0;
      },
      environ_get: () => 0,
      fd_read: () => 8, // no such file
      fd_close: () => 8,
      fd_seek: () => 8,
    },
  };
}

const bytesOf = (array) => new Uint8Array(array.buffer, array.byteOffset, array.byteLength);

export class Engine {
  #compile;
  #module;
  #instance;
  #printed = "";

  // `compile()` returns the compiled module.
  constructor(compile) {
    this.#compile = compile;
  }

  // Performs `request`, a plain object for native/operations.cpp whose parts `image`, `measured`,
  // `labels` and `objects` have their numbers as typed arrays in `array`.
  async perform(request) {
    this.#module ??= this.#compile();
    let module;
    try {
      module = await this.#module;
    } catch (error) {
      this.#module = undefined; // another try may find the file
      throw error;
    }
    this.#instance ??= await this.#start(module);
    return this.#call(request);
  }

  async #start(module) {
    let exports;
    const imports = importsFor(
      () => exports.memory.buffer,
      (text) => (this.#printed += text),
    );
    ({ exports } = await WebAssembly.instantiate(module, imports));
    exports._initialize();
    return exports;
  }

  #call(request) {
    const wasm = this.#instance;
    const blocks = [];
    const place = (bytes) => {
      const address = wasm.allocate(Math.max(bytes.length, 1)) >>> 0;
      if (address === 0) throw new Exit("out of memory");
      blocks.push(address);
      new Uint8Array(wasm.memory.buffer).set(bytes, address);
      return address;
    };
    this.#printed = "";
    try {
      const described = { ...request };
      for (const part of Object.keys(ARRAYS)) {
        if (!request[part]) continue;
        const { array, ...facts } = request[part];
        described[part] = { ...facts, data: place(bytesOf(array)) };
      }
      const json = new TextEncoder().encode(JSON.stringify(described));
      const answer = this.#read(wasm.perform(place(json), json.length) >>> 0);
      wasm.clear();
      for (const block of blocks) wasm.release(block);
      if (wasm.memory.buffer.byteLength > LARGE) this.#instance = undefined;
      if (this.#printed !== "") answer.warning = this.#printed.trim();
      return answer;
    } catch (error) {
      // After a trap, or at the end of its memory, an instance is of no use.
      this.#instance = undefined;
      if (!(error instanceof Exit || error instanceof WebAssembly.RuntimeError)) throw error;
      const reason = this.#printed.trim() || error.message;
      throw new Error(`the image could not be processed: ${reason}`);
    }
  }

  #read(address) {
    const { buffer } = this.#instance.memory;
    const [status, text, textSize, objects, objectCount, numbers, numberCount, labels, labelCount, bytes, byteCount] =
      new Uint32Array(buffer, address, FIELDS);
    const json = new TextDecoder().decode(new Uint8Array(buffer, text, textSize));
    if (status !== 0) return { status, message: json };
    const copied = (Type, at, count) => new Type(buffer.slice(at, at + count * Type.BYTES_PER_ELEMENT));
    return {
      status,
      json: JSON.parse(json),
      objects: copied(Float32Array, objects, objectCount * 5),
      numbers: copied(Float64Array, numbers, numberCount),
      labels: copied(Int32Array, labels, labelCount),
      bytes: copied(Uint8Array, bytes, byteCount),
    };
  }
}
