#include <algorithm>
#include <cstddef>

#include "orva/scalespace/scalespace.h"

namespace orva::scalespace {
namespace {

constexpr unsigned char kMarked = 255;

// An image without a float form (RGBA) has no sum and no marks.
void markBySign(const image<float>& sum, FeatureType type, image<unsigned char>& mask) {
  for (int i = 0; i < std::min(sum.npix(), mask.npix()); ++i) {
    const float s = sum.pixels()[i];
    if (type == LAPLACIAN_NEGATIVE ? s < 0.0F : s > 0.0F) mask.pixels()[i] = kMarked;
  }
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

// True when the second derivative along the gradient, up to its length, has the sign that `type`
// asks for.
bool curvatureHolds(FeatureType type, float along) {
  return type == GRADIENT_CONCAVE ? along < 0.0F : along > 0.0F;
}

bool holds2d(FeatureType type, const Differences& l, std::ptrdiff_t row) {
  const float xx = l.second(1);
  const float yy = l.second(row);
  const float xy = l.mixed(1, row);
  switch (type) {
    case HESSIAN_MAXIMUM:
      return xx * yy > xy * xy && xx < 0.0F;
    case HESSIAN_MINIMUM:
      return xx * yy > xy * xy && xx > 0.0F;
    case GRADIENT_CONCAVE:
    case GRADIENT_CONVEX: {
      const float x = l.first(1);
      const float y = l.first(row);
      return curvatureHolds(type, xx * (x * x) + yy * (y * y) + 2.0F * xy * x * y);
    }
    default:
      return false;
  }
}

// Definiteness by the signs of the leading minors of the 3x3 Hessian.
bool holds3d(FeatureType type, const Differences& l, std::ptrdiff_t row, std::ptrdiff_t plane) {
  const float xx = l.second(1);
  const float yy = l.second(row);
  const float zz = l.second(plane);
  const float xy = l.mixed(1, row);
  const float xz = l.mixed(1, plane);
  const float yz = l.mixed(row, plane);
  switch (type) {
    case HESSIAN_MAXIMUM:
    case HESSIAN_MINIMUM: {
      const float minor = xx * yy - xy * xy;
      const float determinant =
          xx * (yy * zz - yz * yz) - xy * (xy * zz - yz * xz) + xz * (xy * yz - yy * xz);
      return minor > 0.0F && (type == HESSIAN_MAXIMUM ? xx < 0.0F && determinant < 0.0F
                                                      : xx > 0.0F && determinant > 0.0F);
    }
    case GRADIENT_CONCAVE:
    case GRADIENT_CONVEX: {
      const float x = l.first(1);
      const float y = l.first(row);
      const float z = l.first(plane);
      return curvatureHolds(type, xx * (x * x) + yy * (y * y) + zz * (z * z) + 2.0F * xy * x * y +
                                      2.0F * xz * x * z + 2.0F * yz * y * z);
    }
    default:
      return false;
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
  const int nx = img.nx();
  for (int y = 1; y < img.ny() - 1; ++y) {
    for (int x = 1; x < nx - 1; ++x) {
      const std::ptrdiff_t i = x + std::ptrdiff_t{y} * nx;
      if (holds2d(type, Differences(smoothed.pixels() + i), nx)) mask.pixels()[i] = kMarked;
    }
  }
  return mask;
}

image<unsigned char> __features_3d__(const Image& img, float sigma, FeatureType type, float ratio) {
  const float sz = ratio == 0.0F ? sigma : sigma / ratio;
  image<unsigned char> mask(img.nx(), img.ny(), img.nframes(), 1, 1);
  if (isLaplacian(type)) {
    image<float> sum = gaussian(img, sigma, sigma, sz, 2, 0, 0);
    const image<float> yy = gaussian(img, sigma, sigma, sz, 0, 2, 0);
    const image<float> zz = gaussian(img, sigma, sigma, sz, 0, 0, 2);
    for (int i = 0; i < sum.npix(); ++i) {
      sum.pixels()[i] = sum.pixels()[i] + yy.pixels()[i] + zz.pixels()[i];
    }
    markBySign(sum, type, mask);
    return mask;
  }
  const image<float> smoothed = smooth(img, sigma, sigma, sz);
  if (smoothed.isNull()) return mask;
  const int nx = img.nx();
  const int plane = img.frameSize();
  for (int z = 1; z < img.nframes() - 1; ++z) {
    for (int y = 1; y < img.ny() - 1; ++y) {
      for (int x = 1; x < nx - 1; ++x) {
        const std::ptrdiff_t i = x + std::ptrdiff_t{y} * nx + std::ptrdiff_t{z} * plane;
        const Differences l(smoothed.pixels() + i);
        if (holds3d(type, l, nx, plane)) mask.pixels()[i] = kMarked;
      }
    }
  }
  return mask;
}

}  // namespace

image<unsigned char> features(const Image& img, float sigma, FeatureType type, float ratio) {
  if (img.isNull()) return image<unsigned char>(0, 1, 1, 1, 1);
  return img.nframes() < 2 ? __features_2d__(img, sigma, type)
                           : __features_3d__(img, sigma, type, ratio);
}

}  // namespace orva::scalespace
