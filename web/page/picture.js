// Planes as pictures of the screen.

const BINS = 4096;

// The smallest and the largest number of a plane, and those that all but 0.1 % at either end lie
// between.
export function brightnessOf({ data }) {
  let min = Infinity;
  let max = -Infinity;
  for (const v of data) {
    if (v < min && v > -Infinity) min = v;
    if (v > max && v < Infinity) max = v;
  }
  if (!(max > min)) return { min: min === Infinity ? 0 : min, max: min + 1, low: 0, high: 1 };
  const counts = new Uint32Array(BINS);
  const scale = (BINS - 1) / (max - min);
  const step = Math.max(1, Math.floor(data.length / 500000));
  let n = 0;
  for (let i = 0; i < data.length; i += step) {
    const bin = (data[i] - min) * scale;
    if (!(bin >= 0 && bin < BINS)) continue;
    ++counts[Math.floor(bin)];
    ++n;
  }
  const quantile = (share) => {
    let sum = 0;
    for (let bin = 0; bin < BINS; ++bin) if ((sum += counts[bin]) >= share * n) return bin / (BINS - 1);
    return 1;
  };
  const [low, high] = [quantile(0.001), quantile(0.999)];
  return { min, max, low, high: high > low ? high : 1 };
}

// A canvas of the plane, `low` of its range being black and `high` white.
export function pictureOf({ data, width, height, channels }, { min, max }, low, high) {
  const canvas = document.createElement("canvas");
  canvas.width = width;
  canvas.height = height;
  const context = canvas.getContext("2d");
  const picture = context.createImageData(width, height);
  const pixels = new Uint32Array(picture.data.buffer);
  const black = min + low * (max - min);
  const scale = 255 / (Math.max(high - low, 1e-6) * (max - min));
  const grey = (v) => {
    const g = (v - black) * scale;
    return g > 0 ? (g < 255 ? g | 0 : 255) : 0;
  };
  if (channels < 3) {
    for (let i = 0; i < pixels.length; ++i) pixels[i] = 0xff000000 | (grey(data[i]) * 0x010101);
  } else {
    for (let i = 0, k = 0; i < pixels.length; ++i, k += channels) {
      pixels[i] = 0xff000000 | (grey(data[k + 2]) << 16) | (grey(data[k + 1]) << 8) | grey(data[k]);
    }
  }
  context.putImageData(picture, 0, 0);
  return canvas;
}

// The outline of each label along the edges of pixels: paths by label.
export function outlinesOf({ data, width, height }) {
  const paths = new Map();
  const pathOf = (label) => {
    let path = paths.get(label);
    if (!path) paths.set(label, (path = new Path2D()));
    return path;
  };
  const at = (x, y) => (x < 0 || y < 0 || x >= width || y >= height ? 0 : data[y * width + x]);
  // Runs of edges between the same two labels: `pair(i)` at i, `draw(path, from, to)`.
  const runs = (length, pair, draw) => {
    let [a, b, start] = [0, 0, 0];
    for (let i = 0; i <= length; ++i) {
      const [nextA, nextB] = i < length ? pair(i) : [0, 0];
      if (nextA === a && nextB === b) continue;
      if (a !== b) for (const label of [a, b]) if (label > 0) draw(pathOf(label), start, i);
      [a, b, start] = [nextA, nextB, i];
    }
  };
  for (let y = 0; y <= height; ++y) {
    runs(width, (x) => [at(x, y - 1), at(x, y)], (path, from, to) => {
      path.moveTo(from, y);
      path.lineTo(to, y);
    });
  }
  for (let x = 0; x <= width; ++x) {
    runs(height, (y) => [at(x - 1, y), at(x, y)], (path, from, to) => {
      path.moveTo(x, from);
      path.lineTo(x, to);
    });
  }
  return paths;
}
