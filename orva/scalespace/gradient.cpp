#include <cmath>
#include <cstddef>

#include "orva/image/pixel_traits.h"
#include "orva/image_math/image_math.h"
#include "orva/scalespace/scalespace.h"
#include "orva/util/cpu_path.h"
#include "orva/util/parallel_for.h"

namespace orva::scalespace {
namespace {

// Applies f to the pixels of equal index of images of equal size; null for other sizes.
template <class T, class F, class... Images>
image<T> combine(F f, const Image& a, const Images&... others) {
  if (!(a.equalSize(others) && ...)) return image<T>(0, 1, 1, 1, 1);
  image<T> result(a.nx(), a.ny(), a.nframes(), 1, 1);
  const Step step("combination", 0, 1);
  parallelPixels(result.npix(), [&](std::ptrdiff_t begin, std::ptrdiff_t end) {
    for (std::ptrdiff_t k = begin; k < end; ++k) {
      const auto i = static_cast<int>(k);
      result.pixels()[i] = pixelFromFloat<T>(f(a.pixel(i), others.pixel(i)...));
    }
  });
  return result;
}

}  // namespace

image<float> gradient(const Image& img, float sigma, float ratio) {
  const bool hasFrames = img.nframes() > 1;
  const double each = hasFrames ? 0.32 : 0.47;  // share of the time of a derivative
  const auto derivative = [&](float s, int ox, int oy, int oz) {
    const Step step("gradient", (oy + 2 * oz) * each, (oy + 2 * oz + 1) * each);
    return gaussian(img, s, ox, oy, oz);
  };
  image<float> gx = derivative(sigma, 1, 0, 0);
  const image<float> gy = derivative(sigma, 0, 1, 0);
  image<float> gz(0, 1, 1, 1, 1);
  if (hasFrames) gz = derivative(ratio == 0.0F ? sigma : sigma / ratio, 0, 0, 1);
  const Step step("gradient", hasFrames ? 0.96 : 0.94, 1);
  parallelPixels(gx.npix(), [&](std::ptrdiff_t begin, std::ptrdiff_t end) {
    float* g = gx.pixels();
    const float* y = gy.pixels();
    const float* z = gz.pixels();
    if (hasFrames) {
      onWidestPath([=] {
        for (std::ptrdiff_t i = begin; i < end; ++i) {
          g[i] = std::sqrt(g[i] * g[i] + y[i] * y[i] + z[i] * z[i]);
        }
      });
    } else {
      onWidestPath([=] {
        for (std::ptrdiff_t i = begin; i < end; ++i) g[i] = std::sqrt(g[i] * g[i] + y[i] * y[i]);
      });
    }
  });
  return gx;
}

image<short> gradient(const Image& a, const Image& b) {
  return combine<short>([](float x, float y) { return image_math::norm(x, y); }, a, b);
}

image<short> gradient(const Image& a, const Image& b, const Image& c) {
  return combine<short>([](float x, float y, float z) { return std::sqrt(x * x + y * y + z * z); },
                        a, b, c);
}

image<unsigned char> direction(const Image& a, const Image& b) {
  return combine<unsigned char>(
      [](float y, float x) { return static_cast<float>(image_math::direction(y, x)); }, a, b);
}

image<short> angle(const Image& a, const Image& b) {
  return combine<short>([](float y, float x) { return image_math::angle(y, x); }, a, b);
}

image<float> angleInRadian(const Image& a, const Image& b) {
  return combine<float>([](float y, float x) { return std::atan2(y, x); }, a, b);
}

}  // namespace orva::scalespace
