// Shared by the symmetry tests of filters: images in which every sum has a single term, and the
// error bound of sums.
#ifndef ORVA_TESTS_SCALESPACE_TURNED_H
#define ORVA_TESTS_SCALESPACE_TURNED_H

#include <algorithm>
#include <cmath>
#include <vector>

#include "tests/support/images.h"
#include "tests/support/reference/scalespace.h"

namespace orva::test {

inline constexpr int kRadius = 4;  // of the kernel for a sigma of 1

// Two bright pixels that share no row, column or line of frames even when spread by kRadius, and
// that do not reach the border then.
inline image<float> brightPixels(bool stack) {
  image<float> img = blank<float>({40, 44, stack ? 18 : 1});
  img.setPixel(9, 10, stack ? 8 : 0, 64.0F);
  img.setPixel(28, 31, stack ? 9 : 0, -0.5F);
  return img;
}

// Twice the error bound of a filter of these orders, with any of the sigmas on each axis, for
// pixels of up to `largest`: two results are compared. The ends of a smoothed line are divided by
// at least a third.
inline float errorOf(const reference::Orders& orders, bool stack, float largest,
                     const std::vector<float>& sigmas = {1.0F}) {
  float size = largest;
  int terms = 0;
  for (const int order : {orders.x, orders.y, stack ? orders.z : -1}) {
    if (order < 0) continue;
    float heaviest = 0.1F;
    int radius = 0;
    for (const float sigma : sigmas) {
      const reference::Kernel kernel = reference::gaussianKernel(sigma, order);
      float weight = 0;
      for (const float tap : kernel.taps) weight += std::abs(tap);
      heaviest = std::max(heaviest, weight);
      radius = std::max(radius, kernel.radius);
    }
    size *= heaviest * 3.0F;
    terms += 2 * (2 * radius + 3);
  }
  return 2.0F * static_cast<float>(terms) * std::ldexp(size, -24);
}

inline ::testing::AssertionResult near(const image<float>& a, const image<float>& b, float error) {
  if (a.npix() != b.npix()) return ::testing::AssertionFailure() << "sizes differ";
  for (int i = 0; i < a.npix(); ++i) {
    if (!(std::abs(a.pixels()[i] - b.pixels()[i]) <= error)) {
      return ::testing::AssertionFailure() << "pixel " << i << " is " << a.pixels()[i] << " and "
                                           << b.pixels()[i] << ", allowed " << error;
    }
  }
  return ::testing::AssertionSuccess();
}

}  // namespace orva::test

#endif
