#include <cmath>

#include "orva/image/pixel_traits.h"
#include "orva/image_math/image_math.h"
#include "orva/scalespace/scalespace.h"
#include "orva/util/cpu_path.h"

namespace orva::scalespace {
namespace {

// Applies f to the pixels of equal index of images of equal size; null for other sizes.
template <class T, class F, class... Images>
image<T> combine(F f, const Image& a, const Images&... others) {
  if (!(a.equalSize(others) && ...)) return image<T>(0, 1, 1, 1, 1);
  image<T> result(a.nx(), a.ny(), a.nframes(), 1, 1);
  for (int i = 0; i < result.npix(); ++i) {
    result.pixels()[i] = pixelFromFloat<T>(f(a.pixel(i), others.pixel(i)...));
  }
  return result;
}

}  // namespace

image<float> gradient(const Image& img, float sigma, float ratio) {
  image<float> gx = gaussian(img, sigma, 1, 0, 0);
  const image<float> gy = gaussian(img, sigma, 0, 1, 0);
  float* g = gx.pixels();
  if (img.nframes() > 1) {
    const image<float> gz = gaussian(img, ratio == 0.0F ? sigma : sigma / ratio, 0, 0, 1);
    onWidestPath([g, y = gy.pixels(), z = gz.pixels(), count = gx.npix()] {
      for (int i = 0; i < count; ++i) g[i] = std::sqrt(g[i] * g[i] + y[i] * y[i] + z[i] * z[i]);
    });
  } else {
    onWidestPath([g, y = gy.pixels(), count = gx.npix()] {
      for (int i = 0; i < count; ++i) g[i] = std::sqrt(g[i] * g[i] + y[i] * y[i]);
    });
  }
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
