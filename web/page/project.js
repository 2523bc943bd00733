// The images, their results and the settings that apply to all of them.
import { findObjects, segment } from "orva";
import { openImage, readPlane } from "./readers.js";

export const LOWEST_SCORE = 0.05; // objects of lower scores are never searched for
const KEPT_PLANES = 3; // decoded images in memory

export const DEFAULTS = {
  minScore: 0.5,
  low: null, // smallest and largest radius
  high: null,
  polarity: null,
  channel: 0,
  slice: "max",
  time: 0,
};

const planeKey = (s) => `${s.channel}/${s.slice}/${s.time}`;
const baseKey = (s) => `${planeKey(s)}/${s.polarity}`;
const rangeKey = (s) => `${baseKey(s)}/${s.low}-${s.high}`;
const hasRange = (s) => s.low !== null || s.high !== null;

export class Project {
  items = [];
  active = null;
  settings = { ...DEFAULTS };
  #onChange;
  #planes = []; // [item, key, promise], the last used first
  #isWorking = false;
  #nextId = 1;

  // `onChange(item)` is called for what changes of an image, and with null for all.
  constructor(onChange) {
    this.#onChange = onChange;
  }

  add(files) {
    const added = [...files].map((file) => ({ id: this.#nextId++, name: file.name, file, state: "waiting" }));
    this.items.push(...added);
    this.#onChange(null);
    if (added.length > 0 && (!this.active || added.length === 1)) this.select(added[0]);
    else this.#work();
    return added;
  }

  remove(item) {
    const at = this.items.indexOf(item);
    this.items.splice(at, 1);
    this.#planes = this.#planes.filter(([other]) => other !== item);
    if (this.active === item) this.active = this.items[Math.min(at, this.items.length - 1)] ?? null;
    this.#onChange(null);
  }

  select(item) {
    this.active = item;
    this.#onChange(null);
    this.#work();
  }

  set(changes) {
    Object.assign(this.settings, changes);
    this.#onChange(null);
    this.#work();
  }

  // The decoded pixels of an image.
  async plane(item) {
    const key = planeKey(this.settings);
    const at = this.#planes.findIndex(([other, otherKey]) => other === item && otherKey === key);
    let entry;
    if (at >= 0) {
      [entry] = this.#planes.splice(at, 1);
    } else {
      const choice = { ...this.settings };
      const load = async () => {
        item.source ??= await openImage(item.file);
        return readPlane(item.source, choice);
      };
      entry = [item, key, load()];
    }
    this.#planes.unshift(entry);
    this.#planes.length = Math.min(this.#planes.length, KEPT_PLANES);
    return entry[2];
  }

  // What was found in an image with these settings, at once: of another range of radii, if that is
  // all there is so far. Null before anything was found.
  result(item) {
    const { settings } = this;
    const known =
      item.ranged && hasRange(settings) && item.ranged.key === rangeKey(settings) ? item.ranged : item.base;
    if (!known || item.base.key !== baseKey(settings)) return null;
    if (known.cut?.key === rangeKey(settings) + settings.minScore) return known.cut.result;
    // Scores and radii are single-precision numbers.
    const [minScore, low, high] = [settings.minScore, settings.low ?? 0, settings.high ?? Infinity].map(Math.fround);
    const objects = known.found.objects.filter(
      (o) => o.score >= minScore && o.radius >= low && o.radius <= high,
    );
    const options = { minScore: settings.minScore };
    if (settings.polarity) options.polarity = settings.polarity;
    if (hasRange(settings)) options.radius = [settings.low ?? 0, settings.high ?? 1e6];
    const result = { objects, settings: known.found.settings, options };
    known.cut = { key: rangeKey(settings) + settings.minScore, result };
    return result;
  }

  // All objects of any radius and score.
  everything(item) {
    return item.base?.key === baseKey(this.settings) ? item.base.found.objects : [];
  }

  isCurrent(item) {
    if (item.state === "failed") return true;
    const key = hasRange(this.settings) ? rangeKey(this.settings) : baseKey(this.settings);
    return (hasRange(this.settings) ? item.ranged : item.base)?.key === key;
  }

  // Labels and measurements of what result() returns.
  async regions(item) {
    const result = this.result(item);
    if (!result) return null;
    if (item.regions?.of === result) return item.regions.promise;
    const promise = this.plane(item).then(async (plane) => {
      const { objects, settings, options } = result;
      const segmented = await segment(plane, { objects, settings, minScore: options.minScore });
      return { ...segmented, settings, options };
    });
    item.regions = { of: result, promise };
    for (const other of this.items) if (other !== item) other.regions = undefined;
    return promise;
  }

  // Searches one image after the other, the active one first.
  async #work() {
    if (this.#isWorking) return;
    this.#isWorking = true;
    try {
      for (;;) {
        const open = this.items.filter((item) => !this.isCurrent(item));
        const item = open.includes(this.active) ? this.active : open[0];
        if (!item) return;
        await this.#search(item);
        this.#onChange(item);
      }
    } finally {
      this.#isWorking = false;
    }
  }

  async #search(item) {
    const settings = { ...this.settings };
    try {
      item.state = "working";
      this.#onChange(item);
      const start = performance.now();
      const plane = await this.plane(item);
      Object.assign(item, { width: plane.width, height: plane.height });
      item.thumbnail ??= thumbnailOf(plane);
      if (item.base?.key !== baseKey(settings)) {
        const options = { minScore: LOWEST_SCORE };
        if (settings.polarity) options.polarity = settings.polarity;
        item.base = { key: baseKey(settings), found: await findObjects(plane, options) };
        item.seconds = (performance.now() - start) / 1000;
      } else {
        // The polarity is that of the whole image.
        const radius = [settings.low ?? 0, settings.high ?? 1e6];
        const { polarity } = item.base.found.settings;
        const found = await findObjects(plane, { minScore: LOWEST_SCORE, polarity, radius });
        found.settings = { ...found.settings, confidence: item.base.found.settings.confidence };
        item.ranged = { key: rangeKey(settings), found };
      }
      item.state = "done";
    } catch (error) {
      item.state = "failed";
      item.message = error.message;
    }
  }
}

// A small picture of a plane, stretched to its range.
function thumbnailOf({ data, width, height, channels }) {
  const size = 48;
  const canvas = document.createElement("canvas");
  canvas.width = size;
  canvas.height = size;
  const context = canvas.getContext("2d");
  const picture = context.createImageData(size, size);
  const side = Math.min(width, height);
  const at = (i) =>
    Math.floor((height - side) / 2 + ((Math.floor(i / size) + 0.5) * side) / size) * width +
    Math.floor((width - side) / 2 + (((i % size) + 0.5) * side) / size);
  const values = Array.from({ length: size * size }, (_, i) => data[at(i) * channels]).filter(Number.isFinite);
  values.sort((a, b) => a - b);
  const low = values[0] ?? 0;
  const span = (values[Math.floor(values.length * 0.995)] ?? 1) - low || 1;
  for (let i = 0; i < size * size; ++i) {
    for (let k = 0; k < 3; ++k) {
      const v = data[at(i) * channels + (channels < 3 ? 0 : k)];
      picture.data[4 * i + k] = ((v - low) / span) * 255;
    }
    picture.data[4 * i + 3] = 255;
  }
  context.putImageData(picture, 0, 0);
  return canvas.toDataURL();
}
