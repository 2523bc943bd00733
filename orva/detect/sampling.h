// Bilinear samples of a level; the border sample is repeated outside.
#ifndef ORVA_DETECT_SAMPLING_H
#define ORVA_DETECT_SAMPLING_H

#include <algorithm>
#include <cstddef>

#include "orva/detect/scale_levels.h"

namespace orva::detect {

// Whether a position lies on a pixel of the level, its square of side 1 included.
inline bool isInside(const ScaleLevel& level, float x, float y) {
  return x >= -0.5F && y >= -0.5F && x <= static_cast<float>(level.nx) - 0.5F &&
         y <= static_cast<float>(level.ny) - 0.5F;
}

// Whether all positions within `reach` of (x, y) lie between pixel centers.
inline bool isFarFromBorder(const ScaleLevel& level, float x, float y, float reach) {
  return x - reach > 0.0F && y - reach > 0.0F && x + reach < static_cast<float>(level.nx - 1) &&
         y + reach < static_cast<float>(level.ny - 1);
}

// The four pixels around a position and its distance from the first.
struct BilinearCell {
  BilinearCell(const ScaleLevel& level, float px, float py)
      : BilinearCell(level, std::clamp(px, 0.0F, static_cast<float>(level.nx - 1)),
                     std::clamp(py, 0.0F, static_cast<float>(level.ny - 1)), level.nx - 2,
                     level.ny - 2) {}

  // Of a position between pixel centers.
  static BilinearCell between(const ScaleLevel& level, float px, float py) {
    return {level, px, py, level.nx, level.ny};
  }

  float weighed(float a, float b, float c, float d) const {
    return (a * (1 - x) + b * x) * (1 - y) + (c * (1 - x) + d * x) * y;
  }

  float x;
  float y;
  std::size_t first;
  std::size_t below;

 private:
  BilinearCell(const ScaleLevel& level, float px, float py, int lastColumn, int lastRow) {
    const int column = std::min(static_cast<int>(px), lastColumn);
    const int row = std::min(static_cast<int>(py), lastRow);
    x = px - static_cast<float>(column);
    y = py - static_cast<float>(row);
    first = static_cast<std::size_t>(std::ptrdiff_t{row} * level.nx + column);
    below = first + static_cast<std::size_t>(level.nx);
  }
};

inline Gradient gradientIn(const ScaleLevel& level, const BilinearCell& c) {
  const Gradient* a = level.gradients.data() + c.first;
  const Gradient* b = level.gradients.data() + c.below;
  return {c.weighed(a[0].x, a[1].x, b[0].x, b[1].x), c.weighed(a[0].y, a[1].y, b[0].y, b[1].y)};
}

inline Gradient gradientAt(const ScaleLevel& level, float x, float y) {
  return gradientIn(level, BilinearCell(level, x, y));
}

inline float pixelAt(const ScaleLevel& level, float x, float y) {
  const BilinearCell c(level, x, y);
  const float* a = level.pixels.data() + c.first;
  const float* b = level.pixels.data() + c.below;
  return c.weighed(a[0], a[1], b[0], b[1]);
}

}  // namespace orva::detect

#endif
