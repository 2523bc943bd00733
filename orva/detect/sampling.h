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

// The four pixels around a position and its distance from the first.
struct BilinearCell {
  BilinearCell(const ScaleLevel& level, float px, float py) {
    const float cx = std::clamp(px, 0.0F, static_cast<float>(level.nx - 1));
    const float cy = std::clamp(py, 0.0F, static_cast<float>(level.ny - 1));
    const int column = std::min(static_cast<int>(cx), level.nx - 2);
    const int row = std::min(static_cast<int>(cy), level.ny - 2);
    x = cx - static_cast<float>(column);
    y = cy - static_cast<float>(row);
    first = static_cast<std::size_t>(std::ptrdiff_t{row} * level.nx + column);
    below = first + static_cast<std::size_t>(level.nx);
  }

  float between(float a, float b, float c, float d) const {
    return (a * (1 - x) + b * x) * (1 - y) + (c * (1 - x) + d * x) * y;
  }

  float x;
  float y;
  std::size_t first;
  std::size_t below;
};

inline Gradient gradientAt(const ScaleLevel& level, float x, float y) {
  const BilinearCell c(level, x, y);
  const Gradient* a = level.gradients.data() + c.first;
  const Gradient* b = level.gradients.data() + c.below;
  return {c.between(a[0].x, a[1].x, b[0].x, b[1].x), c.between(a[0].y, a[1].y, b[0].y, b[1].y)};
}

inline float pixelAt(const ScaleLevel& level, float x, float y) {
  const BilinearCell c(level, x, y);
  const float* a = level.pixels.data() + c.first;
  const float* b = level.pixels.data() + c.below;
  return c.between(a[0], a[1], b[0], b[1]);
}

}  // namespace orva::detect

#endif
