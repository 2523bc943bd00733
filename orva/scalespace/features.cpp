#include <algorithm>
#include <cstddef>

#include "orva/scalespace/scalespace.h"
#include "orva/util/cpu_path.h"
#include "orva/util/parallel_for.h"

namespace orva::scalespace {
namespace {

constexpr unsigned char kMarked = 255;

// Marks where the Laplacian has the sign of the type. An image without a float form (RGBA) has
// none.
void markBySign(const image<float>& sum, FeatureType type, image<unsigned char>& mask) {
  const float sign = type == LAPLACIAN_NEGATIVE ? -1.0F : 1.0F;
  parallelPixels(std::min(sum.npix(), mask.npix()), [&](std::ptrdiff_t begin, std::ptrdiff_t end) {
    onWidestPath([=, from = sum.pixels(), to = mask.pixels()] {
      for (std::ptrdiff_t i = begin; i < end; ++i) to[i] = from[i] * sign > 0.0F ? kMarked : 0;
    });
  });
}

bool isLaplacian(FeatureType type) {
  return type == LAPLACIAN_NEGATIVE || type == LAPLACIAN_POSITIVE;
}

// Central differences at one pixel of a smoothed image.
class Differences {
 public:
  explicit Differences(const float* at) : at_(at) {}

  // Second derivative along the axis whose neighbours lie `step` apart.
  float second(std::ptrdiff_t step) const { return at_[step] + at_[-step] - 2.0F * at_[0]; }

  // Mixed second derivative along two axes.
  float mixed(std::ptrdiff_t s, std::ptrdiff_t t) const {
    return (at_[s + t] + at_[-s - t] - at_[s - t] - at_[t - s]) * 0.25F;
  }

  float first(std::ptrdiff_t step) const { return (at_[step] - at_[-step]) * 0.5F; }

 private:
  const float* at_;
};

// The tests of a plane and of a stack, one per type. They are free of branches, so that the loops
// over them vectorize.

// Tests the sign of the second derivative along the gradient, scaled by its squared length.
template <FeatureType Type>
bool curvatureHolds(float along) {
  return Type == GRADIENT_CONCAVE ? along < 0.0F : along > 0.0F;
}

template <FeatureType Type>
bool holds2d(const Differences& l, std::ptrdiff_t row) {
  const float xx = l.second(1);
  const float yy = l.second(row);
  const float xy = l.mixed(1, row);
  if constexpr (Type == HESSIAN_MAXIMUM || Type == HESSIAN_MINIMUM) {
    const bool cap = Type == HESSIAN_MAXIMUM ? xx < 0.0F : xx > 0.0F;
    return bool(int{xx * yy > xy * xy} & int{cap});
  } else {
    const float x = l.first(1);
    const float y = l.first(row);
    return curvatureHolds<Type>(xx * (x * x) + yy * (y * y) + 2.0F * xy * x * y);
  }
}

// Definiteness by the signs of the leading minors of the 3x3 Hessian.
template <FeatureType Type>
bool holds3d(const Differences& l, std::ptrdiff_t row, std::ptrdiff_t plane) {
  const float xx = l.second(1);
  const float yy = l.second(row);
  const float zz = l.second(plane);
  const float xy = l.mixed(1, row);
  const float xz = l.mixed(1, plane);
  const float yz = l.mixed(row, plane);
  if constexpr (Type == HESSIAN_MAXIMUM || Type == HESSIAN_MINIMUM) {
    const float minor = xx * yy - xy * xy;
    const float determinant =
        xx * (yy * zz - yz * yz) - xy * (xy * zz - yz * xz) + xz * (xy * yz - yy * xz);
    const float sign = Type == HESSIAN_MAXIMUM ? -1.0F : 1.0F;
    return bool(int{minor > 0.0F} & int{sign * xx > 0.0F} & int{sign * determinant > 0.0F});
  } else {
    const float x = l.first(1);
    const float y = l.first(row);
    const float z = l.first(plane);
    return curvatureHolds<Type>(xx * (x * x) + yy * (y * y) + zz * (z * z) + 2.0F * xy * x * y +
                                2.0F * xz * x * z + 2.0F * yz * y * z);
  }
}

// Marks the interior of the planes first .. end - 1 of a smoothed image by `holds`.
template <class Test>
void markInterior(const image<float>& smoothed, int first, int end, const Test& holds,
                  image<unsigned char>& mask) {
  const std::ptrdiff_t nx = smoothed.nx();
  const std::ptrdiff_t ny = smoothed.ny();
  parallelParts(
      rowParts(nx, (end - first) * ny), [&](std::ptrdiff_t beginRow, std::ptrdiff_t endRow) {
        onWidestPath(
            [=, from = smoothed.pixels() + first * ny * nx, to = mask.pixels() + first * ny * nx] {
              for (std::ptrdiff_t row = beginRow; row < endRow; ++row) {
                const std::ptrdiff_t y = row % ny;
                if (y == 0 || y == ny - 1) continue;
                const std::ptrdiff_t last = row * nx + nx - 1;
                ORVA_INDEPENDENT
                for (std::ptrdiff_t i = row * nx + 1; i < last; ++i) {
                  to[i] = holds(Differences(from + i)) ? kMarked : 0;
                }
              }
            });
      });
}

// Calls f with the type as a template argument; not at all for a type that marks nothing.
template <class F>
void withType(FeatureType type, const F& f) {
  switch (type) {
    case HESSIAN_MAXIMUM:
      return f.template operator()<HESSIAN_MAXIMUM>();
    case HESSIAN_MINIMUM:
      return f.template operator()<HESSIAN_MINIMUM>();
    case GRADIENT_CONCAVE:
      return f.template operator()<GRADIENT_CONCAVE>();
    case GRADIENT_CONVEX:
      return f.template operator()<GRADIENT_CONVEX>();
    default:
      return;
  }
}

image<unsigned char> __features_2d__(const Image& img, float sigma, FeatureType type) {
  if (isLaplacian(type)) {
    image<unsigned char> mask(img.nx(), img.ny(), 1, 1, 1);
    markBySign(laplacian(img, sigma), type, mask);
    return mask;
  }
  const image<float> smoothed = smooth(img, sigma, 1.0F);
  image<unsigned char> mask(img.nx(), img.ny(), 1, 1, 1);
  if (smoothed.isNull()) return mask;
  const std::ptrdiff_t row = img.nx();
  withType(type, [&]<FeatureType Type>() {
    markInterior(
        smoothed, 0, 1, [row](const Differences& l) { return holds2d<Type>(l, row); }, mask);
  });
  return mask;
}

image<unsigned char> __features_3d__(const Image& img, float sigma, FeatureType type, float ratio) {
  const float sz = ratio == 0.0F ? sigma : sigma / ratio;
  image<unsigned char> mask(img.nx(), img.ny(), img.nframes(), 1, 1);
  if (isLaplacian(type)) {
    image<float> sum = gaussian(img, sigma, sigma, sz, 2, 0, 0);
    const image<float> yy = gaussian(img, sigma, sigma, sz, 0, 2, 0);
    const image<float> zz = gaussian(img, sigma, sigma, sz, 0, 0, 2);
    parallelPixels(sum.npix(), [&](std::ptrdiff_t begin, std::ptrdiff_t end) {
      onWidestPath([=, to = sum.pixels(), y = yy.pixels(), z = zz.pixels()] {
        for (std::ptrdiff_t i = begin; i < end; ++i) to[i] = to[i] + y[i] + z[i];
      });
    });
    markBySign(sum, type, mask);
    return mask;
  }
  const image<float> smoothed = smooth(img, sigma, sigma, sz);
  if (smoothed.isNull()) return mask;
  const std::ptrdiff_t row = img.nx();
  const std::ptrdiff_t plane = img.frameSize();
  withType(type, [&]<FeatureType Type>() {
    const auto holds = [=](const Differences& l) { return holds3d<Type>(l, row, plane); };
    markInterior(smoothed, 1, img.nframes() - 1, holds, mask);
  });
  return mask;
}

}  // namespace

image<unsigned char> features(const Image& img, float sigma, FeatureType type, float ratio) {
  if (img.isNull()) return image<unsigned char>(0, 1, 1, 1, 1);
  const Step step("features", 0, 1);
  return img.nframes() < 2 ? __features_2d__(img, sigma, type)
                           : __features_3d__(img, sigma, type, ratio);
}

}  // namespace orva::scalespace
