// Images for tests: from listed pixels, with random content, and compared bit for bit.
#ifndef ORVA_TESTS_SUPPORT_IMAGES_H
#define ORVA_TESTS_SUPPORT_IMAGES_H

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <memory>
#include <random>
#include <string>
#include <type_traits>
#include <vector>

#include "orva/image/image.h"

namespace orva::test {

using Rgb = GenericRgb<unsigned char>;
using Mask = image<unsigned char>;
using Labels = image<short>;

// The pixel types of the library, for TYPED_TEST_SUITE.
using PixelTypes = ::testing::Types<unsigned char, short, int, unsigned int, float, Rgb>;

struct Shape {
  int nx;
  int ny;
  int nz = 1;
  int nc = 1;
  int nt = 1;
};

template <class T>
image<T> blank(const Shape& s) {
  return image<T>(s.nx, s.ny, s.nz, s.nc, s.nt);
}

// An image with the given pixels in linear order.
template <class T>
image<T> imageOf(const Shape& shape, const std::vector<T>& pixels) {
  image<T> img = blank<T>(shape);
  EXPECT_EQ(static_cast<std::size_t>(img.npix()), pixels.size());
  std::copy_n(pixels.begin(),
              std::min<std::size_t>(pixels.size(), static_cast<std::size_t>(img.npix())),
              img.pixels());
  return img;
}

template <class T>
std::vector<T> pixelsOf(const image<T>& img) {
  return std::vector<T>(img.pixels(), img.pixels() + img.npix());
}

using Random = std::mt19937;

// Uniform in low .. high, both included.
inline int randomInt(Random& random, int low, int high) {
  return std::uniform_int_distribution<int>(low, high)(random);
}

// A scale of a Gaussian.
inline float randomSigma(Random& random, float low = 0.3F, float high = 4.0F) {
  return std::uniform_real_distribution<float>(low, high)(random);
}

// A random value over the range of the type: small and large integers, of both signs where the type
// has them, fractions for float.
template <class T>
T randomPixel(Random& random) {
  if constexpr (std::is_same_v<T, unsigned char>) {
    return static_cast<unsigned char>(randomInt(random, 0, 255));
  } else if constexpr (std::is_same_v<T, short>) {
    return static_cast<short>(randomInt(random, -32768, 32767));
  } else if constexpr (std::is_same_v<T, int>) {
    return randomInt(random, -2000000000, 2000000000);
  } else if constexpr (std::is_same_v<T, unsigned int>) {
    return static_cast<unsigned int>(random());
  } else if constexpr (std::is_same_v<T, float>) {
    return std::uniform_real_distribution<float>(-1000.0F, 1000.0F)(random);
  } else {
    const auto component = [&random] {
      return static_cast<unsigned char>(randomInt(random, 0, 255));
    };
    return {component(), component(), component()};
  }
}

template <class T>
image<T> randomImage(Random& random, const Shape& shape) {
  image<T> img = blank<T>(shape);
  std::generate_n(img.pixels(), img.npix(), [&random] { return randomPixel<T>(random); });
  return img;
}

// A mask of 0 and 255 in which about `share` of the pixels are 255.
inline image<unsigned char> randomMask(Random& random, const Shape& shape, double share) {
  image<unsigned char> mask = blank<unsigned char>(shape);
  std::bernoulli_distribution object(share);
  std::generate_n(mask.pixels(), mask.npix(),
                  [&] { return static_cast<unsigned char>(object(random) ? 255 : 0); });
  return mask;
}

// The same type, sizes and bytes.
inline ::testing::AssertionResult sameImage(const Image& a, const Image& b) {
  const auto sizes = [](const Image& i) {
    return std::vector<int>{i.nx(), i.ny(), i.nz(), i.nc(), i.nt()};
  };
  if (a.format() != b.format()) return ::testing::AssertionFailure() << "formats differ";
  if (sizes(a) != sizes(b)) {
    return ::testing::AssertionFailure() << "sizes differ: " << ::testing::PrintToString(sizes(a))
                                         << " and " << ::testing::PrintToString(sizes(b));
  }
  const auto* pa = static_cast<const unsigned char*>(a.data());
  const auto* pb = static_cast<const unsigned char*>(b.data());
  const std::ptrdiff_t bytes = std::ptrdiff_t{a.npix()} * a.pixelSize();
  const auto* end = pa == nullptr ? pa : pa + bytes;
  const auto at = std::mismatch(pa, end, pb).first;
  if (at == end) return ::testing::AssertionSuccess();
  const auto i = static_cast<int>((at - pa) / a.pixelSize());
  return ::testing::AssertionFailure()
         << "pixel " << i << " is " << ::testing::PrintToString(a.pixel(i)) << " and "
         << ::testing::PrintToString(b.pixel(i));
}

// As sameImage, but any NaN equals any other and 0 equals -0.
inline ::testing::AssertionResult sameValues(const image<float>& a, const image<float>& b) {
  if (a.npix() != b.npix()) return ::testing::AssertionFailure() << "pixel counts differ";
  for (int i = 0; i < a.npix(); ++i) {
    const float x = a.pixels()[i];
    const float y = b.pixels()[i];
    const bool bothNaN = x != x && y != y;
    if (!(x == y) && !bothNaN)
      return ::testing::AssertionFailure() << "pixel " << i << " is " << x << " and " << y;
  }
  return ::testing::AssertionSuccess();
}

}  // namespace orva::test

#endif
