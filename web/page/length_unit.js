// Units of length in the descriptions of images.

const INCH = 25400;

// Micrometres of symbols, which mean the same in any case but for "Mm", and of full names in the singular.
const UNITS = new Map([
  ["pm", 1e-6], ["picometer", 1e-6], ["picometre", 1e-6], ["\u00c5", 1e-4], ["\u212b", 1e-4], ["angstrom", 1e-4],
  ["nm", 1e-3], ["nanometer", 1e-3], ["nanometre", 1e-3], ["um", 1], ["\u00b5m", 1], ["\u03bcm", 1], ["micron", 1],
  ["micrometer", 1], ["micrometre", 1], ["mm", 1e3], ["millimeter", 1e3], ["millimetre", 1e3], ["cm", 1e4],
  ["centimeter", 1e4], ["centimetre", 1e4], ["dm", 1e5], ["decimeter", 1e5], ["decimetre", 1e5], ["m", 1e6],
  ["meter", 1e6], ["metre", 1e6], ["km", 1e9], ["kilometer", 1e9], ["kilometre", 1e9], ["thou", 25.4], ["mil", 25.4],
  ["li", INCH / 12], ["pt", INCH / 72], ["in", INCH], ["inch", INCH], ["inches", INCH], ["ft", 12 * INCH],
  ["foot", 12 * INCH], ["yd", 36 * INCH], ["yard", 36 * INCH],
]);

// A length in micrometres; undefined for another unit or a length that is not above 0.
export function micrometres(length, unit) {
  const name = unit.trim();
  if (name === "Mm" || name === "Pm") return undefined;
  const lower = name.replace(/[A-Z]/g, (letter) => letter.toLowerCase());
  const factor = UNITS.get(lower) ?? (lower.length > 4 && lower.endsWith("s") ? UNITS.get(lower.slice(0, -1)) : undefined);
  const size = length * factor;
  return factor && length > 0 && Number.isFinite(size) ? size : undefined;
}

// The side of square pixels.
export function squareSize(x, y) {
  const mean = (x + y) / 2;
  return Math.abs(x - y) < 0.01 * mean ? mean : undefined;
}

// The number that a text is; undefined for other texts.
export function decimal(text) {
  return /^-?(\d+\.?\d*|\.\d+)(e[+-]?\d+)?$/i.test(text ?? "") ? Number(text) : undefined;
}
