// Sizes of images that the page opens.

const MAX_PIXELS = 2 ** 28;

// Throws for a size that no image has, or that is too large; to be called before anything is decoded.
export function requireSize(width, height) {
  if (!(width > 0 && height > 0)) throw new Error("has no pixels");
  if (width * height > MAX_PIXELS) {
    throw new Error(`is too large for a browser: ${width} x ${height} pixels`);
  }
}
