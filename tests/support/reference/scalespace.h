// Reference implementations of the scale-space operations: written from their definitions, pixel by
// pixel, in the stated order and precision, without regard to speed.
#ifndef ORVA_TESTS_SUPPORT_REFERENCE_SCALESPACE_H
#define ORVA_TESTS_SUPPORT_REFERENCE_SCALESPACE_H

#include <cstddef>
#include <vector>

#include "orva/image/image.h"
#include "orva/scalespace/scalespace.h"

namespace orva::reference {

// The taps -radius .. radius, in this order.
struct Kernel {
  int radius = 0;
  std::vector<float> taps;

  float tap(int k) const { return taps[static_cast<std::size_t>(k + radius)]; }
};

std::vector<float> dog(int order, float sigma);
float polyval(const std::vector<float>& c, float x);
Kernel gaussianKernel(float sigma, int order);

// A line convolved: with its border samples repeated, or with outside taps dropped and the sum
// divided by the weight that is left.
std::vector<float> convolveRepeated(const std::vector<float>& line, const Kernel& kernel);
std::vector<float> convolveDropped(const std::vector<float>& line, const Kernel& kernel);

struct Triple {
  float x;
  float y;
  float z;
};

struct Orders {
  int x;
  int y;
  int z;
};

image<float> toFloat(const Image& img);
image<float> gaussian(const Image& img, Triple sigma, Orders order);
image<float> smooth(const Image& img, Triple sigma);
image<float> laplacian(const Image& img, float sigma);

image<float> gradient(const Image& img, float sigma, float ratio);
image<short> gradient(const Image& a, const Image& b);
image<short> gradient(const Image& a, const Image& b, const Image& c);
image<unsigned char> direction(const Image& a, const Image& b);
image<short> angle(const Image& a, const Image& b);
image<float> angleInRadian(const Image& a, const Image& b);

image<unsigned char> features(const Image& img, float sigma, int type, float ratio);

// Fifty relaxations of the interior pixels of the first frame where the mask is 255.
void laplaceEquation(image<float>& f, const image<unsigned char>& mask);
image<float> harmonicCut(const Image& img, float sigma, bool bright, int iterations);
image<unsigned char> hcut(const Image& img, float sigma1, float sigma2);

// `size` times `factor`, rounded toward zero, and 1 where that is below 2.
int reducedSize(int size, float factor);

template <class T>
image<T> reduce(const image<T>& img, float factor, float sigma) {
  const image<float> smoothed = smooth(img, {sigma, sigma, sigma});
  image<T> stored = img.duplicate();
  for (int i = 0; i < img.npix(); ++i) stored.setPixel(i, smoothed.pixel(i));
  const int sx = reducedSize(img.nx(), factor);
  const int sy = reducedSize(img.ny(), factor);
  const int sz = reducedSize(img.nframes(), factor);
  image<T> result(sx, sy, sz, 1, 1);
  for (int z = 0; z < sz; ++z) {
    for (int y = 0; y < sy; ++y) {
      for (int x = 0; x < sx; ++x) {
        const int from = (x * img.nx()) / sx + (y * img.ny()) / sy * img.nx() +
                         (z * img.nframes()) / sz * img.nx() * img.ny();
        result.pixels()[x + y * sx + z * sx * sy] = stored.pixels()[from];
      }
    }
  }
  return result;
}

}  // namespace orva::reference

#endif
