#include <algorithm>
#include <cstddef>
#include <cstdlib>
#include <iostream>
#include <memory>

#include "orva/scalespace/line_memory.h"
#include "orva/scalespace/scalespace.h"

namespace orva::scalespace {
namespace {

// Which Gaussian filters an axis.
struct Scale {
  float sigma;
  int order;
};

// `width` lines of `n` samples, filtered side by side: sample i of all lines lies at i * width.
using LineFilter = void (*)(const float* in, float* out, int n, int width,
                            const float* kernelCentre, int radius);

// Every output takes its taps one after the other, in the order of the calls.
void addWeighted(float* out, const float* in, float weight, std::ptrdiff_t count) {
  for (std::ptrdiff_t i = 0; i < count; ++i) out[i] += weight * in[i];
}

// The outputs from `first` up to, not including, `last`.
struct Span {
  int first;
  int last;
};

// Adds tap k to every output whose sample i - k lies inside the line, and returns which they are.
Span addInside(const float* in, float* out, int n, std::ptrdiff_t width, int k, float weight) {
  const int first = std::clamp(k, 0, n);
  const int last = std::clamp(n + std::min(k, 0), 0, n);
  if (first < last) {
    addWeighted(out + first * width, in + (first - k) * width, weight, (last - first) * width);
  }
  return {first, last};
}

// Convolution with the border sample repeated.
void __gaussian_1d__(const float* in, float* out, int n, int width, const float* kernelCentre,
                     int radius) {
  const std::ptrdiff_t w = width;
  std::fill_n(out, n * w, 0.0F);
  for (int k = -radius; k <= radius; ++k) {
    const float weight = kernelCentre[k];
    const Span inside = addInside(in, out, n, w, k, weight);
    for (int i = 0; i < inside.first; ++i) addWeighted(out + i * w, in, weight, w);
    for (int i = inside.last; i < n; ++i) addWeighted(out + i * w, in + (n - 1) * w, weight, w);
  }
}

// Convolution with the taps outside the line dropped and the others scaled up for them.
void __smooth_1d__(const float* in, float* out, int n, int width, const float* kernelCentre,
                   int radius) {
  const std::ptrdiff_t w = width;
  std::fill_n(out, n * w, 0.0F);
  for (int k = -radius; k <= radius; ++k) addInside(in, out, n, w, k, kernelCentre[k]);
  for (int i = 0; i < n; ++i) {
    if (i >= radius && i < n - radius) continue;  // nothing lost
    float lost = 0.0F;
    for (int k = -radius; k <= radius; ++k) {
      if (k > i || k <= i - n) lost += kernelCentre[k];
    }
    for (std::ptrdiff_t x = i * w; x < (i + 1) * w; ++x) out[x] /= 1.0F - lost;
  }
}

// `lines` lines of `length` samples: samples lie `step` apart, lines `lineStep` apart.
struct Axis {
  int length;
  std::ptrdiff_t step;
  int lines;
  std::ptrdiff_t lineStep;
};

// Filters all lines of an axis in place. Lines that lie side by side are taken a strip at a time,
// so that memory is walked row by row.
void filterAxis(float* data, const Axis& axis, LineFilter filter, const Scale& scale) {
  int radius = 0;
  const std::unique_ptr<float[]> taps(gaussianKernel(scale.sigma, radius, scale.order));
  const float* kernelCentre = taps.get() + radius;
  constexpr int kStrip = 16;
  const int strip = axis.lineStep == 1 ? std::min(kStrip, axis.lines) : 1;
  const auto count = static_cast<std::size_t>(axis.length) * static_cast<std::size_t>(strip);
  const auto in = newLine(count);
  const auto out = newLine(count);
  for (int line = 0; line < axis.lines; line += strip) {
    float* first = data + line * axis.lineStep;
    const int width = std::min(strip, axis.lines - line);
    float* to = in.get();
    for (int i = 0; i < axis.length; ++i) to = std::copy_n(first + i * axis.step, width, to);
    filter(in.get(), out.get(), axis.length, width, kernelCentre, radius);
    const float* from = out.get();
    for (int i = 0; i < axis.length; ++i, from += width) {
      std::copy_n(from, width, first + i * axis.step);
    }
  }
}

// The passes along x, y and the frames; an axis of length 1 is skipped.
image<float> filterAxes(const Image& source, LineFilter filter, const Scale& x, const Scale& y,
                        const Scale& z) {
  image<float> img = toFloatImage(source);
  if (img.isNull()) return img;
  const int nx = img.nx();
  const int ny = img.ny();
  const int nf = img.nframes();
  if (nx >= 2) filterAxis(img.pixels(), {nx, 1, ny * nf, nx}, filter, x);
  if (ny >= 2) {
    for (int f = 0; f < nf; ++f) {
      float* frame = img.pixels() + std::ptrdiff_t{f} * img.frameSize();
      filterAxis(frame, {ny, nx, nx, 1}, filter, y);
    }
  }
  if (nf >= 2) filterAxis(img.pixels(), {nf, img.frameSize(), nx * ny, 1}, filter, z);
  return img;
}

}  // namespace

void outOfLineMemory() {
  std::cerr << "Out of memory\n";
  std::exit(1);
}

image<float> gaussian(const Image& img, float sigma, int ox, int oy, int oz) {
  return gaussian(img, sigma, sigma, sigma, ox, oy, oz);
}

image<float> gaussian(const Image& img, float sx, float sy, float sz, int ox, int oy, int oz) {
  return filterAxes(img, __gaussian_1d__, {sx, ox}, {sy, oy}, {sz, oz});
}

image<float> smooth(const Image& img, float sigma, float ratio) {
  return smooth(img, sigma, sigma, sigma / ratio);
}

image<float> smooth(const Image& img, float sx, float sy, float sz) {
  return filterAxes(img, __smooth_1d__, {sx, 0}, {sy, 0}, {sz, 0});
}

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

}  // namespace orva::scalespace
