// The images, their results and the settings that apply to all of them.
import { findObjects, segment } from "orva";
import { openImage, readPlane } from "./readers.js";

const LOWEST_SCORE = 0.05; // objects of lower scores are never searched for
const KEPT_PLANES = 3; // decoded images in memory
const KEPT_LABELS = 3; // label images in memory

export const DEFAULTS = {
  minScore: 0.5,
  low: null, // smallest and largest radius
  high: null,
  polarity: null,
  channel: 0,
  slice: "max",
  time: 0,
  of: "regions", // what counts: regions, as of `orva segment`, or circles, as of `orva find`
};

// What a result depends on.
const planeKey = (s) => `${s.channel}/${s.slice}/${s.time}`;
const baseKey = (s) => `${planeKey(s)}/${s.polarity}`;
const rangeKey = (s) => `${baseKey(s)}/${s.low}-${s.high}`;
const regionsKey = (s) => `${rangeKey(s)}/${s.minScore}`;
const hasRange = (s) => s.low !== null || s.high !== null;
const radiusOf = (s) => [s.low ?? 0, s.high ?? 1e6];

export class Project {
  items = [];
  active = null;
  settings = { ...DEFAULTS };
  #onChange;
  #planes = []; // [item, key, promise], the last used first
  #labelled = []; // items with a label image, the last used first
  #step = null; // the promise of the search that is going on
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
    else this.work();
    return added;
  }

  remove(item) {
    const at = this.items.indexOf(item);
    if (at < 0) return;
    this.items.splice(at, 1);
    this.#planes = this.#planes.filter(([other]) => other !== item);
    this.#labelled = this.#labelled.filter((other) => other !== item);
    if (this.active === item) this.active = this.items[Math.min(at, this.items.length - 1)] ?? null;
    this.#onChange(null);
  }

  select(item) {
    this.active = item;
    this.#onChange(null);
    this.work();
  }

  // Changes settings; work() then searches with them.
  set(changes) {
    Object.assign(this.settings, changes);
    this.#onChange(null);
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

  // What counts in an image with these settings: {objects, settings, options}. Until regions are known, their
  // circles; until a range has been searched, what is known of it. Null before anything was found.
  result(item) {
    const { settings } = this;
    if (settings.of === "regions" && item.counted?.key === regionsKey(settings)) return item.counted.result;
    return this.circles(item);
  }

  // The objects as `orva find` finds them.
  circles(item) {
    const { settings } = this;
    if (item.base?.key !== baseKey(settings)) return null;
    const known = hasRange(settings) && item.ranged?.key === rangeKey(settings) ? item.ranged : item.base;
    const key = regionsKey(settings);
    if (known.cut?.key === key) return known.cut.result;
    // Scores and radii are single-precision numbers.
    const [minScore, low, high] = [settings.minScore, settings.low ?? 0, settings.high ?? Infinity].map(Math.fround);
    const objects = known.found.objects.filter(
      (o) => o.score >= minScore && o.radius >= low && o.radius <= high,
    );
    known.cut = { key, result: { objects, settings: known.found.settings, options: this.#optionsFor(item) } };
    return known.cut.result;
  }

  // All objects of any radius and score.
  everything(item) {
    return item.base?.key === baseKey(this.settings) ? item.base.found.objects : [];
  }

  // Whether result() is what the settings ask for, or cannot be had.
  isCurrent(item) {
    const { settings } = this;
    if (item.state === "failed" && (!item.source || item.failedWith === regionsKey(settings))) return true;
    if (item.base?.key !== baseKey(settings)) return false;
    if (hasRange(settings) && item.ranged?.key !== rangeKey(settings)) return false;
    return settings.of !== "regions" || item.counted?.key === regionsKey(settings);
  }

  // Resolves when nothing is left to search for in an image.
  async settled(item) {
    this.work();
    while (this.#step && this.items.includes(item) && !this.isCurrent(item)) await this.#step;
  }

  // Regions with these settings: what segment() returns.
  regions(item) {
    const key = regionsKey(this.settings);
    this.#labelled = [item, ...this.#labelled.filter((other) => other !== item)];
    for (const other of this.#labelled.splice(KEPT_LABELS)) other.regions = undefined;
    if (item.regions?.key === key) return item.regions.promise;
    const options = this.#optionsFor(item);
    const confidence = hasRange(this.settings) ? item.base.found.settings.confidence : undefined;
    const load = async () => {
      const segmented = await segment(await this.plane(item), options);
      if (confidence !== undefined) segmented.settings.confidence = confidence;
      const { objects, settings } = segmented;
      item.counted = { key, result: { objects, settings, options } };
      return segmented;
    };
    item.regions = { key, promise: load() };
    return item.regions.promise;
  }

  // Searches one image after the other, the active one first.
  async work() {
    if (this.#step) return;
    for (;;) {
      const open = this.items.filter((item) => !this.isCurrent(item));
      const item = open.includes(this.active) ? this.active : open[0];
      if (!item) break;
      this.#step = this.#search(item);
      await this.#step;
      this.#onChange(item);
    }
    this.#step = null;
  }

  // The options of the search. In a range, the polarity is that of the whole image.
  #optionsFor(item) {
    const { settings } = this;
    const options = { minScore: settings.minScore };
    const polarity = settings.polarity ?? (hasRange(settings) ? item.base.found.settings.polarity : null);
    if (polarity) options.polarity = polarity;
    if (hasRange(settings)) options.radius = radiusOf(settings);
    return options;
  }

  // One step towards the result of an image. What fails is told by its state and message.
  async #search(item) {
    const settings = { ...this.settings };
    const start = performance.now();
    try {
      item.state = "working";
      this.#onChange(item);
      const plane = await this.plane(item);
      Object.assign(item, { width: plane.width, height: plane.height });
      item.thumbnail ??= thumbnailOf(plane);
      if (item.base?.key !== baseKey(settings)) {
        const options = { minScore: LOWEST_SCORE };
        if (settings.polarity) options.polarity = settings.polarity;
        item.base = { key: baseKey(settings), found: await findObjects(plane, options) };
        item.seconds = 0;
      } else if (hasRange(settings) && item.ranged?.key !== rangeKey(settings)) {
        const { polarity, confidence } = item.base.found.settings;
        const found = await findObjects(plane, { minScore: LOWEST_SCORE, polarity, radius: radiusOf(settings) });
        found.settings = { ...found.settings, confidence };
        item.ranged = { key: rangeKey(settings), found };
      } else if (regionsKey(settings) === regionsKey(this.settings)) {
        await this.regions(item);
      }
      item.seconds += (performance.now() - start) / 1000;
      item.state = "done";
    } catch (error) {
      item.state = "failed";
      item.message = error.message;
      item.failedWith = regionsKey(settings);
      item.regions = undefined;
      this.#planes = this.#planes.filter(([other]) => other !== item);
    }
  }
}

export function medianRadius(objects) {
  const radii = objects.map(({ radius }) => radius).sort((a, b) => a - b);
  return radii[Math.floor(radii.length / 2)] ?? 0;
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
