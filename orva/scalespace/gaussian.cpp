#include <optional>

#include "orva/scalespace/scalespace.h"
#include "orva/scalespace/separable_filter.h"

namespace orva::scalespace {

image<float> gaussian(const Image& img, float sigma, int ox, int oy, int oz) {
  return gaussian(img, sigma, sigma, sigma, ox, oy, oz);
}

image<float> gaussian(const Image& img, float sx, float sy, float sz, int ox, int oy, int oz) {
  image<float> result = resultFor(img);
  if (result.isNull()) return result;
  std::optional<Kernel> x;
  std::optional<Kernel> y;
  std::optional<Kernel> z;
  if (img.nx() >= 2) x.emplace(sx, ox);
  if (img.ny() >= 2) y.emplace(sy, oy);
  if (img.nframes() >= 2) z.emplace(sz, oz);
  const auto pointer = [](const std::optional<Kernel>& k) { return k ? &*k : nullptr; };
  filterAxes(img, Border::Repeat, {pointer(x), pointer(y), pointer(z)}, result);
  return result;
}

// Intended: smooth() makes every kernel before it looks at the sizes, so a sigma whose kernel does
// not fit ends the process even where its axis is not filtered.

image<float> smooth(const Image& img, float sigma, float ratio) {
  image<float> result = resultFor(img);
  const Kernel plane(sigma, 0);
  const Kernel frames(sigma / ratio, 0);
  filterAxes(img, Border::Rescale, {&plane, &plane, &frames}, result);
  return result;
}

image<float> smooth(const Image& img, float sx, float sy, float sz) {
  image<float> result = resultFor(img);
  const Kernel x(sx, 0);
  const Kernel y(sy, 0);
  const Kernel z(sz, 0);
  filterAxes(img, Border::Rescale, {&x, &y, &z}, result);
  return result;
}

}  // namespace orva::scalespace
