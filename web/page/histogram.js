// Radii as bars, those of objects that are left out behind those that are kept.

const BARS = 36;
const SVG = "http://www.w3.org/2000/svg";

function countsOf(objects, max) {
  const counts = new Array(BARS).fill(0);
  for (const { radius } of objects) ++counts[Math.min(BARS - 1, Math.floor((radius / max) * BARS))];
  return counts;
}

// Fills an SVG element with the radii from 0 to `max`.
export function drawHistogram(svg, all, kept, max) {
  const everything = countsOf(all, max);
  const chosen = countsOf(kept, max);
  const top = Math.max(1, ...everything, ...chosen);
  svg.setAttribute("viewBox", `0 0 ${BARS} 1`);
  svg.replaceChildren();
  const add = (counts, name) => {
    counts.forEach((count, i) => {
      if (count === 0) return;
      const bar = document.createElementNS(SVG, "rect");
      const height = Math.max(count / top, 0.02);
      for (const [key, value] of Object.entries({ x: i + 0.08, y: 1 - height, width: 0.84, height })) {
        bar.setAttribute(key, value);
      }
      bar.setAttribute("class", name);
      svg.append(bar);
    });
  };
  add(everything, "left-out");
  add(chosen, "kept");
  const radii = kept.map(({ radius }) => radius).sort((a, b) => a - b);
  const text = radii.length
    ? `Histogram of ${radii.length} radii from ${radii[0].toFixed(1)} to ${radii.at(-1).toFixed(1)} pixels, median ${radii[Math.floor(radii.length / 2)].toFixed(1)}`
    : "Histogram of radii: no objects";
  svg.setAttribute("aria-label", text);
}
