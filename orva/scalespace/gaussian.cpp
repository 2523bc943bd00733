#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <iostream>
#include <memory>
#include <optional>

#include "orva/image/float_conversion.h"
#include "orva/image/unset_image.h"
#include "orva/scalespace/line_filter.h"
#include "orva/scalespace/line_memory.h"
#include "orva/scalespace/scalespace.h"

namespace orva::scalespace {
namespace {

// The kernel of each axis.
struct AxisKernels {
  const Kernel* x;
  const Kernel* y;
  const Kernel* z;
};

constexpr int kBatch = 24;                     // rows of output that are made at a time
constexpr std::ptrdiff_t kWindow = 48 * 1024;  // floats of the rows at hand, to stay in the cache

// What the ends of a line of n samples are divided by, with no value for its middle; null where
// nothing is divided.
std::unique_ptr<float[]> divisors(const Kernel& kernel, int n, Border border) {
  if (border == Border::Repeat) return nullptr;
  auto result = newLine(static_cast<std::size_t>(n));
  for (int i = 0; i < n; ++i) {
    if (i < kernel.radius() || i >= n - kernel.radius()) {
      result[static_cast<std::size_t>(i)] = kernel.inside(i, n);
    }
  }
  return result;
}

// Filters the planes of an image along x and y. A tile of columns is walked from top to bottom; the
// rows that the filter along y needs are kept in a window that moves down with it.
class PlaneFilter {
 public:
  // An axis of length 1 is not filtered.
  PlaneFilter(const Image& source, Border border, const AxisKernels& kernels)
      : source_(source),
        border_(border),
        nx_(source.nx()),
        ny_(source.ny()),
        alongX_(nx_ >= 2 ? kernels.x : nullptr),
        alongY_(ny_ >= 2 ? kernels.y : nullptr) {
    std::ptrdiff_t rows = 1;
    if (alongX_ != nullptr) divisors_ = divisors(*alongX_, nx_, border);
    if (alongY_ != nullptr) {
      rows = std::min<std::int64_t>(ny_, 2 * std::int64_t{alongY_->radius()} + kBatch);
    }
    capacity_ = static_cast<int>(rows);
    tile_ = std::min(rowBlocks(nx_), rowBlocks(std::max<std::ptrdiff_t>(kWindow / rows, 1)));
    window_ = newZeros(static_cast<std::size_t>(rows * tile_));
    const std::ptrdiff_t radius = alongX_ != nullptr ? alongX_->radius() : 0;
    line_ = newZeros(static_cast<std::size_t>(tile_ + 2 * radius));
  }

  void filter(int plane, float* out) {
    const std::ptrdiff_t first = std::ptrdiff_t{plane} * nx_ * ny_;
    for (std::ptrdiff_t x = 0; x < nx_; x += tile_) filterTile(first, x, out + x);
  }

 private:
  void filterTile(std::ptrdiff_t first, std::ptrdiff_t x, float* out) {
    const std::ptrdiff_t width = std::min(tile_, nx_ - x);
    const int reach = alongY_ != nullptr ? std::min(alongY_->radius(), ny_) : 0;
    int low = 0;   // the rows of the window are low ..
    int high = 0;  // .. high - 1
    const int batch = alongY_ != nullptr ? kBatch : 1;
    for (int y = 0; y < ny_; y += batch) {
      const int last = std::min(y + batch, ny_);
      const int wanted = std::max(0, y - reach);
      if (high > wanted && wanted > low) {
        std::memmove(window_.get(), row(wanted - low),
                     static_cast<std::size_t>((high - wanted) * tile_) * sizeof(float));
      }
      low = wanted;
      for (; high < std::min(last + reach, ny_); ++high) {
        makeRow(first + std::ptrdiff_t{high} * nx_, x, width, row(high - low));
      }
      float* to = out + std::ptrdiff_t{y} * nx_;
      if (alongY_ != nullptr) {
        filterColumns({window_.get(), tile_, low, ny_}, y, last, width, *alongY_, border_, to, nx_);
      } else {
        std::copy_n(row(0), width, to);
      }
    }
  }

  float* row(int i) { return window_.get() + i * tile_; }

  // `width` pixels from x of the source's row that begins at pixel `first`, filtered along x.
  void makeRow(std::ptrdiff_t first, std::ptrdiff_t x, std::ptrdiff_t width, float* to) {
    if (alongX_ == nullptr) return readFloats(source_, first + x, width, to);
    const std::ptrdiff_t radius = alongX_->radius();
    const std::ptrdiff_t from = std::max<std::ptrdiff_t>(x - radius, 0);
    const std::ptrdiff_t end = std::min<std::ptrdiff_t>(x + width + radius, nx_);
    float* inner = line_.get() + (from - (x - radius));
    float* behind = inner + (end - from);
    float* lineEnd = line_.get() + width + 2 * radius;
    readFloats(source_, first + from, end - from, inner);
    // A tap outside the line adds a zero to its sum, which leaves the sum as it is.
    const bool repeat = border_ == Border::Repeat;
    std::fill(line_.get(), inner, repeat ? *inner : 0.0F);
    std::fill(behind, lineEnd, repeat ? behind[-1] : 0.0F);
    filterRow(line_.get() + radius, width, *alongX_, to);
    if (repeat) return;
    const auto rescale = [&](std::ptrdiff_t begin, std::ptrdiff_t stop) {
      for (std::ptrdiff_t i = std::max(begin, x); i < std::min(stop, x + width); ++i) {
        to[i - x] /= divisors_[static_cast<std::size_t>(i)];
      }
    };
    const std::ptrdiff_t left = std::min<std::ptrdiff_t>(radius, nx_);
    rescale(0, left);
    rescale(std::max(nx_ - radius, left), nx_);
  }

  static std::unique_ptr<float[]> newZeros(std::size_t count) {
    auto line = newLine(count);
    std::fill_n(line.get(), count, 0.0F);
    return line;
  }

  const Image& source_;
  Border border_;
  int nx_;
  int ny_;
  const Kernel* alongX_;
  const Kernel* alongY_;
  std::unique_ptr<float[]> divisors_;  // along x
  int capacity_ = 0;
  std::ptrdiff_t tile_ = 0;
  std::unique_ptr<float[]> window_;
  std::unique_ptr<float[]> line_;  // a row of the source with its borders
};

// Filters along the frames in place, a strip of pixels at a time.
void filterFrames(image<float>& img, Border border, const Kernel& kernel) {
  const int frames = img.nframes();
  const std::ptrdiff_t size = img.frameSize();
  const std::ptrdiff_t width =
      std::min(columnStrips(size), columnStrips(std::max<std::ptrdiff_t>(kWindow / frames, 1)));
  const auto strip = newLine(static_cast<std::size_t>(width * frames));
  std::fill_n(strip.get(), width * frames, 0.0F);
  for (std::ptrdiff_t first = 0; first < size; first += width) {
    const std::ptrdiff_t count = std::min(width, size - first);
    float* at = img.pixels() + first;
    for (int f = 0; f < frames; ++f) std::copy_n(at + f * size, count, strip.get() + f * width);
    filterColumns({strip.get(), width, 0, frames}, 0, frames, count, kernel, border, at, size);
  }
}

// An image for the filtered pixels of `source`; null where that has no float form.
image<float> resultFor(const Image& source) {
  if (!hasFloatForm(source)) return image<float>(0, 1, 1, 1, 1);
  return unsetImage<float>(source.nx(), source.ny(), source.nz(), source.nc(), source.nt());
}

// Filters along x, y and the frames into `result`; an axis of length 1 is skipped.
void filterAxes(const Image& source, Border border, const AxisKernels& kernels,
                image<float>& result) {
  if (result.isNull()) return;
  PlaneFilter planes(source, border, kernels);
  for (int f = 0; f < result.nframes(); ++f) {
    planes.filter(f, result.pixels() + std::ptrdiff_t{f} * result.frameSize());
  }
  if (result.nframes() >= 2) filterFrames(result, border, *kernels.z);
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
