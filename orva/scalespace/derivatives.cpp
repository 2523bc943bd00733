#include <cstddef>

#include "orva/scalespace/scalespace.h"
#include "orva/util/cpu_path.h"
#include "orva/util/parallel_for.h"

namespace orva::scalespace {

image<float> dX(const Image& img, float sigma) { return gaussian(img, sigma, 1, 0, 0); }

image<float> dY(const Image& img, float sigma) { return gaussian(img, sigma, 0, 1, 0); }

image<float> dZ(const Image& img, float sigma) { return gaussian(img, sigma, 0, 0, 1); }

image<float> dXX(const Image& img, float sigma) { return gaussian(img, sigma, 2, 0, 0); }

image<float> dYY(const Image& img, float sigma) { return gaussian(img, sigma, 0, 2, 0); }

image<float> dZZ(const Image& img, float sigma) { return gaussian(img, sigma, 0, 0, 2); }

image<float> dXXX(const Image& img, float sigma) { return gaussian(img, sigma, 3, 0, 0); }

image<float> dYYY(const Image& img, float sigma) { return gaussian(img, sigma, 0, 3, 0); }

image<float> dZZZ(const Image& img, float sigma) { return gaussian(img, sigma, 0, 0, 3); }

image<float> dXY(const Image& img, float sigma) { return gaussian(img, sigma, 1, 1, 0); }

image<float> dXZ(const Image& img, float sigma) { return gaussian(img, sigma, 1, 0, 1); }

image<float> dYZ(const Image& img, float sigma) { return gaussian(img, sigma, 0, 1, 1); }

// Intended: the axis that is not differentiated is smoothed with sigma 1.

image<float> dXY(const Image& img, float s1, float s2) {
  return gaussian(img, s1, s2, 1.0F, 1, 1, 0);
}

image<float> dXZ(const Image& img, float s1, float s2) {
  return gaussian(img, s1, 1.0F, s2, 1, 0, 1);
}

image<float> dYZ(const Image& img, float s1, float s2) {
  return gaussian(img, 1.0F, s1, s2, 0, 1, 1);
}

image<float> dXXY(const Image& img, float s1, float s2) {
  return gaussian(img, s1, s2, 1.0F, 2, 1, 0);
}

image<float> dXYY(const Image& img, float s1, float s2) {
  return gaussian(img, s1, s2, 1.0F, 1, 2, 0);
}

image<float> dXXZ(const Image& img, float s1, float s2) {
  return gaussian(img, s1, 1.0F, s2, 2, 0, 1);
}

image<float> dXZZ(const Image& img, float s1, float s2) {
  return gaussian(img, s1, 1.0F, s2, 1, 0, 2);
}

image<float> dYYZ(const Image& img, float s1, float s2) {
  return gaussian(img, 1.0F, s1, s2, 0, 2, 1);
}

image<float> dYZZ(const Image& img, float s1, float s2) {
  return gaussian(img, 1.0F, s1, s2, 0, 1, 2);
}

image<float> dXYZ(const Image& img, float sx, float sy, float sz) {
  return gaussian(img, sx, sy, sz, 1, 1, 1);
}

image<float> laplacian(const Image& img, float sigma) {
  const int terms = img.nframes() > 1 ? 3 : 2;
  const auto derivative = [&](int ox, int oy, int oz, int term) {
    const Step step("laplacian", static_cast<double>(term) / terms,
                    static_cast<double>(term + 1) / terms);
    return gaussian(img, sigma, ox, oy, oz);
  };
  image<float> sum = derivative(2, 0, 0, 0);
  const auto add = [&sum](const image<float>& term) {
    parallelPixels(sum.npix(), [&](std::ptrdiff_t begin, std::ptrdiff_t end) {
      onWidestPath([=, to = sum.pixels(), from = term.pixels()] {
        for (std::ptrdiff_t i = begin; i < end; ++i) to[i] += from[i];
      });
    });
  };
  add(derivative(0, 2, 0, 1));
  if (img.nframes() > 1) add(derivative(0, 0, 2, 2));
  return sum;
}

}  // namespace orva::scalespace
