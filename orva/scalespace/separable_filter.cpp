#include "orva/scalespace/separable_filter.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <memory>

#include "orva/image/float_conversion.h"
#include "orva/image/uninitialized_image.h"
#include "orva/scalespace/line_buffer.h"

namespace orva::scalespace {
namespace {

constexpr int kBatchRows = 24;  // output rows per step of the window
// Floats in the window of rows that the filter along y reads: 192 KiB, to stay in the L2 cache.
constexpr std::ptrdiff_t kWindowFloats = std::ptrdiff_t{48} * 1024;

// The weight inside the line by which Border::Rescale divides each output near an end of a line of
// n samples; elements in its middle are not set. Null for Border::Repeat.
std::unique_ptr<float[]> divisors(const Kernel& kernel, int n, Border border) {
  if (border == Border::Repeat) return nullptr;
  auto result = newLineBuffer(static_cast<std::size_t>(n));
  for (int i = 0; i < n; ++i) {
    if (i < kernel.radius() || i >= n - kernel.radius()) {
      result[static_cast<std::size_t>(i)] = kernel.inside(i, n);
    }
  }
  return result;
}

// Filters the planes of an image along x and y, one tile of columns after the other. A window that
// moves down the tile holds the rows, filtered along x, that the filter along y reads.
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
      rows = std::min<std::int64_t>(ny_, 2 * std::int64_t{alongY_->radius()} + kBatchRows);
    }
    tile_ = std::min(rowBlocks(nx_), rowBlocks(std::max<std::ptrdiff_t>(kWindowFloats / rows, 1)));
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
    int low = 0;   // first row of the window
    int high = 0;  // end of its rows
    const int batch = alongY_ != nullptr ? kBatchRows : 1;
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

  // Filters along x the columns x .. x + width - 1 of the source row that begins at pixel `first`.
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
    auto line = newLineBuffer(count);
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
  std::ptrdiff_t tile_ = 0;
  std::unique_ptr<float[]> window_;
  std::unique_ptr<float[]> line_;  // a source row with its borders
};

// Filters along the frames in place, one strip of pixels after the other.
void filterFrames(image<float>& img, Border border, const Kernel& kernel) {
  const int frames = img.nframes();
  const std::ptrdiff_t size = img.frameSize();
  const std::ptrdiff_t width = std::min(
      columnStrips(size), columnStrips(std::max<std::ptrdiff_t>(kWindowFloats / frames, 1)));
  const auto strip = newLineBuffer(static_cast<std::size_t>(width * frames));
  std::fill_n(strip.get(), width * frames, 0.0F);
  for (std::ptrdiff_t first = 0; first < size; first += width) {
    const std::ptrdiff_t count = std::min(width, size - first);
    float* at = img.pixels() + first;
    for (int f = 0; f < frames; ++f) std::copy_n(at + f * size, count, strip.get() + f * width);
    filterColumns({strip.get(), width, 0, frames}, 0, frames, count, kernel, border, at, size);
  }
}

}  // namespace

image<float> resultFor(const Image& source) {
  if (!hasFloatForm(source)) return image<float>(0, 1, 1, 1, 1);
  return uninitializedImage<float>(source.nx(), source.ny(), source.nz(), source.nc(), source.nt());
}

void filterAxes(const Image& source, Border border, const AxisKernels& kernels,
                image<float>& result) {
  if (result.isNull()) return;
  PlaneFilter planes(source, border, kernels);
  for (int f = 0; f < result.nframes(); ++f) {
    planes.filter(f, result.pixels() + std::ptrdiff_t{f} * result.frameSize());
  }
  if (result.nframes() >= 2) filterFrames(result, border, *kernels.z);
}

}  // namespace orva::scalespace
