// Checks of what callers pass: a TypeError for another type, a RangeError for a value out of range.

// By the names of arrays, which those of other windows and the subclasses have, too.
const TYPES = {
  Uint8Array: "uint8",
  Uint8ClampedArray: "uint8",
  Int8Array: "int8",
  Uint16Array: "uint16",
  Int16Array: "int16",
  Uint32Array: "uint32",
  Int32Array: "int32",
  Float32Array: "float32",
};
const MAX_PIXELS = 2 ** 31 - 1;

function requireRange(holds, message) {
  if (!holds) throw new RangeError(message);
}

function number(name, value, low, high) {
  if (typeof value !== "number") throw new TypeError(`${name} must be a number, not ${typeof value}`);
  requireRange(value >= low && value <= high, `${name} must be from ${low} to ${high}, not ${value}`);
  return value;
}

function whole(name, value, low, high) {
  number(name, value, low, high);
  if (!Number.isInteger(value)) throw new TypeError(`${name} must be a whole number, not ${value}`);
  return value;
}

function flag(name, value) {
  if (typeof value !== "boolean") throw new TypeError(`${name} must be true or false, not ${value}`);
  return value;
}

const choiceOf = (...names) => (name, value) => {
  requireRange(names.includes(value), `${name} must be one of ${names.join(", ")}, not ${value}`);
  return value;
};
const numberFrom = (low, high) => (name, value) => number(name, value, low, high);
const wholeFrom = (low, high) => (name, value) => whole(name, value, low, high);

function text(name, value) {
  if (typeof value !== "string") throw new TypeError(`${name} must be a string, not ${typeof value}`);
  return value;
}

function radius(name, value) {
  if (!Array.isArray(value)) return number(name, value, 0.1, 1e6);
  requireRange(value.length === 2, `${name} must be a number or a pair of them`);
  const low = number(`the lower ${name}`, value[0], 0, 1e6);
  number(`the upper ${name}`, value[1], low, 1e6);
  return value;
}

const FIND = {
  radius,
  polarity: choiceOf("bright", "dark"),
  minScore: numberFrom(0, 1),
};
const AREA = numberFrom(0, 4e9);
const LEVEL = numberFrom(0, 3e38);
const MAX_SIZE = 2 ** 31 - 1;

// The options of each operation.
const OPTIONS = {
  find: FIND,
  segment: { ...FIND, minArea: AREA, maxArea: AREA, excludeBorder: flag },
  measure: {
    threshold: numberFrom(-3e38, 3e38),
    auto: numberFrom(0.1, 1000),
    minSize: wholeFrom(1, MAX_SIZE),
    maxSize: wholeFrom(1, MAX_SIZE),
    fill: flag,
  },
  vote: {
    polarity: choiceOf("bright", "dark", "both"),
    minRadius: wholeFrom(1, 1000),
    maxRadius: wholeFrom(1, 1000),
    coneWidth: wholeFrom(0, 1000),
    sigma: numberFrom(0.1, 1000),
    gradient: LEVEL,
    relativeGradient: numberFrom(0, 1),
    threshold: LEVEL,
    relativeThreshold: numberFrom(0.05, 1),
    edges: flag,
    power: numberFrom(0, 100),
  },
  encode: {
    file: text,
    frame: wholeFrom(0, MAX_SIZE),
    c: wholeFrom(0, MAX_SIZE),
    z: wholeFrom(0, MAX_SIZE),
    t: wholeFrom(0, MAX_SIZE),
    hyperstack: flag,
    pixelSize: numberFrom(1e-9, 1e9),
  },
};

function requireOrder(options, low, high) {
  if (options[low] === undefined || options[high] === undefined) return;
  requireRange(options[low] <= options[high], `${low} must not exceed ${high}`);
}

function object(name, value) {
  if (value === null || typeof value !== "object") throw new TypeError(`${name} must be an object, not ${value}`);
  return value;
}

export const optionsObject = (options = {}) => object("options", options);

// The options of `operation` without those that are undefined or null.
export function checkedOptions(operation, options) {
  const checked = {};
  for (const [name, value] of Object.entries(optionsObject(options))) {
    const check = OPTIONS[operation][name];
    if (!check) throw new TypeError(`there is no option ${name}`);
    if (value !== undefined && value !== null) checked[name] = check(name, value);
  }
  requireOrder(checked, "minArea", "maxArea");
  requireOrder(checked, "minSize", "maxSize");
  if (operation === "vote") requireOrder({ minRadius: 1, maxRadius: 20, ...checked }, "minRadius", "maxRadius");
  return checked;
}

// An image as a part of a request.
export function checkedImage(image, name = "image") {
  const { data, width, height, channels = 1 } = object(name, image);
  const type = ArrayBuffer.isView(data) ? TYPES[data[Symbol.toStringTag]] : undefined;
  if (!type) {
    throw new TypeError(`${name}.data must be a typed array of 8, 16 or 32 bits, not ${data?.constructor?.name ?? data}`);
  }
  whole(`${name}.width`, width, 1, MAX_PIXELS);
  whole(`${name}.height`, height, 1, MAX_PIXELS);
  requireRange([1, 3, 4].includes(channels), `${name}.channels must be 1, 3 or 4, not ${channels}`);
  const count = width * height * channels;
  requireRange(
    data.length === count,
    `${name}.data has ${data.length} numbers, ${width} x ${height} x ${channels} are ${count}`,
  );
  return { array: data, type, width, height, channels };
}

// Labels, whole numbers of at least 0, as a part of a request.
export function checkedLabels(image) {
  const { array, type, width, height, channels } = checkedImage(image, "labels");
  if (type === "float32" || channels !== 1) throw new TypeError("labels must be whole numbers, one per pixel");
  requireRange(array.every((v) => v >= 0 && v <= MAX_PIXELS), "labels must be from 0 to 2147483647");
  return { array: array instanceof Int32Array ? array : Int32Array.from(array), width, height };
}

// Objects as a part of a request.
export function checkedObjects(objects) {
  if (!Array.isArray(objects)) throw new TypeError("objects must be an array");
  const array = new Float32Array(objects.length * 5);
  objects.forEach((object, i) => {
    for (const name of ["x", "y", "radius"]) {
      if (typeof object?.[name] !== "number") throw new TypeError(`objects[${i}].${name} must be a number`);
    }
    array.set([object.x, object.y, object.radius, object.score ?? NaN, object.coverage ?? NaN], i * 5);
  });
  return { array, count: objects.length };
}

// What was estimated, as it came with objects.
export function checkedSettings(settings) {
  const { radius, polarity, confidence } = object("settings", settings);
  number("settings.radius", radius, 0, 1e6);
  choiceOf("bright", "dark")("settings.polarity", polarity);
  number("settings.confidence", confidence, 0, 1);
  return { radius, polarity, confidence };
}

// What vote() returned, as parts of a request.
export function checkedVote({ centers, settings }) {
  if (!Array.isArray(centers)) throw new TypeError("centers must be an array");
  const { coneWidth, sigma, gradient } = object("settings", settings);
  whole("settings.coneWidth", coneWidth, 0, 1000);
  number("settings.sigma", sigma, 0, 1e6);
  number("settings.gradient", gradient, 0, 3.5e38);
  const checked = centers.map((center, i) => {
    const { x, y, weight } = object(`centers[${i}]`, center);
    whole(`centers[${i}].x`, x, -MAX_PIXELS, MAX_PIXELS);
    whole(`centers[${i}].y`, y, -MAX_PIXELS, MAX_PIXELS);
    return { x, y, weight: number(`centers[${i}].weight`, weight, -3.5e38, 3.5e38) };
  });
  return { centers: checked, settings: { coneWidth, sigma, gradient } };
}

// The kind of a result of findObjects(), segment() or vote().
export function kindOf(result) {
  const { centers, labels } = object("result", result);
  return centers ? "vote" : labels ? "segment" : "find";
}

// The names of the options in native/request.cpp.
export function nativeOptions({ radius, ...options }) {
  if (radius === undefined) return options;
  return Array.isArray(radius) ? { ...options, minRadius: radius[0], maxRadius: radius[1] } : { ...options, radius };
}
