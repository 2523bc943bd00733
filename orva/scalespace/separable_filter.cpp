#include "orva/scalespace/separable_filter.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <memory>
#include <new>

#include "orva/image/float_conversion.h"
#include "orva/image/uninitialized_image.h"
#include "orva/scalespace/line_buffer.h"
#include "orva/util/parallel_for.h"

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

using Floats = std::unique_ptr<float[]>;

Floats newZeros(std::ptrdiff_t count) {
  return std::make_unique<float[]>(static_cast<std::size_t>(count));
}

// Filters the planes of an image along x and y, one tile of columns after the other. A window that
// moves down the tile holds the rows, filtered along x, that the filter along y reads.
class PlaneFilter {
 public:
  // The working memory of one thread.
  struct Workspace {
    Floats window;
    Floats line;  // a source row with its borders
  };

  // An axis of length 1 is not filtered.
  PlaneFilter(const Image& source, Border border, const AxisKernels& kernels)
      : source_(source),
        border_(border),
        nx_(source.nx()),
        ny_(source.ny()),
        alongX_(nx_ >= 2 ? kernels.x : nullptr),
        alongY_(ny_ >= 2 ? kernels.y : nullptr) {
    if (alongX_ != nullptr) divisors_ = divisors(*alongX_, nx_, border);
    if (alongY_ != nullptr) {
      windowRows_ = std::min<std::int64_t>(ny_, 2 * std::int64_t{alongY_->radius()} + kBatchRows);
    }
    tile_ = std::min(rowBlocks(nx_),
                     rowBlocks(std::max<std::ptrdiff_t>(kWindowFloats / windowRows_, 1)));
  }

  // Filters all planes. Tiles are cut into bands of rows for several threads; one thread filters
  // each as a whole, as the rows at the edges of a band are filtered along x twice. The outputs do
  // not depend on the cut.
  void filter(int planes, float* out) const {
    const Parts tiles(nx_, tile_);
    const Parts bands(ny_, hasRunner() ? bandRows() : ny_);
    const std::size_t perPlane = tiles.count() * bands.count();
    Workspaces<Workspace> workspaces;
    parallelFor(static_cast<std::size_t>(planes) * perPlane, [&](std::size_t i) {
      const auto plane = static_cast<std::ptrdiff_t>(i / perPlane) * nx_ * ny_;
      const std::size_t tile = i % perPlane % tiles.count();
      const std::size_t band = i % perPlane / tiles.count();
      const auto workspace = workspaces.take([this] { return newWorkspace(); });
      const Block block{tiles.begin(tile), tiles.end(tile), static_cast<int>(bands.begin(band)),
                        static_cast<int>(bands.end(band))};
      filterBlock(plane, block, *workspace, out + plane);
    });
  }

 private:
  std::unique_ptr<Workspace> newWorkspace() const {
    const std::ptrdiff_t radius = alongX_ != nullptr ? alongX_->radius() : 0;
    auto workspace = std::make_unique<Workspace>();
    *workspace = {newZeros(windowRows_ * tile_), newZeros(tile_ + 2 * radius)};
    return workspace;
  }  // NOLINT(clang-analyzer-cplusplus.NewDeleteLeaks): the lease destroys it

  // So many that the rows filtered twice are few.
  std::ptrdiff_t bandRows() const {
    constexpr std::ptrdiff_t kMin = 64;
    constexpr std::ptrdiff_t kPerRadius = 32;
    const std::ptrdiff_t radius = alongY_ != nullptr ? alongY_->radius() : 0;
    return std::max(kMin, kPerRadius * radius);
  }

  // Columns xBegin .. xEnd - 1, at most tile_, of the rows yBegin .. yEnd - 1.
  struct Block {
    std::ptrdiff_t xBegin;
    std::ptrdiff_t xEnd;
    int yBegin;
    int yEnd;
  };

  // A block of the plane that begins at pixel `first`.
  void filterBlock(std::ptrdiff_t first, const Block& block, Workspace& workspace,
                   float* out) const {
    const std::ptrdiff_t x = block.xBegin;
    const std::ptrdiff_t width = block.xEnd - x;
    const int reach = alongY_ != nullptr ? std::min(alongY_->radius(), ny_) : 0;
    float* const window = workspace.window.get();
    const auto row = [&](std::ptrdiff_t i) { return window + i * tile_; };
    int low = std::max(0, block.yBegin - reach);  // first row of the window
    int high = low;                               // end of its rows
    const int batch = alongY_ != nullptr ? kBatchRows : 1;
    for (int y = block.yBegin; y < block.yEnd; y += batch) {
      checkpoint();
      const int last = std::min(y + batch, block.yEnd);
      const int wanted = std::max(0, y - reach);
      if (high > wanted && wanted > low) {
        std::memmove(window, row(wanted - low),
                     static_cast<std::size_t>((high - wanted) * tile_) * sizeof(float));
      }
      low = wanted;
      for (; high < std::min(std::int64_t{last} + reach, std::int64_t{ny_}); ++high) {
        makeRow(first + std::ptrdiff_t{high} * nx_, x, width, workspace.line.get(),
                row(high - low));
      }
      float* to = out + std::ptrdiff_t{y} * nx_ + x;
      if (alongY_ != nullptr) {
        filterColumns({window, tile_, low, ny_}, y, last, width, *alongY_, border_, to, nx_);
      } else {
        std::copy_n(window, width, to);
      }
    }
  }

  // Filters along x the columns x .. x + width - 1 of the source row that begins at pixel `first`.
  void makeRow(std::ptrdiff_t first, std::ptrdiff_t x, std::ptrdiff_t width, float* line,
               float* to) const {
    if (alongX_ == nullptr) return readFloats(source_, first + x, width, to);
    const std::ptrdiff_t radius = alongX_->radius();
    const std::ptrdiff_t from = std::max<std::ptrdiff_t>(x - radius, 0);
    const std::ptrdiff_t end = std::min<std::ptrdiff_t>(x + width + radius, nx_);
    float* inner = line + (from - (x - radius));
    float* behind = inner + (end - from);
    float* lineEnd = line + width + 2 * radius;
    readFloats(source_, first + from, end - from, inner);
    // A tap outside the line adds a zero to its sum, which leaves the sum as it is.
    const bool repeat = border_ == Border::Repeat;
    std::fill(line, inner, repeat ? *inner : 0.0F);
    std::fill(behind, lineEnd, repeat ? behind[-1] : 0.0F);
    filterRow(line + radius, width, *alongX_, to);
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

  const Image& source_;
  Border border_;
  int nx_;
  int ny_;
  const Kernel* alongX_;
  const Kernel* alongY_;
  Floats divisors_;  // along x
  std::ptrdiff_t windowRows_ = 1;
  std::ptrdiff_t tile_ = 0;
};

// Filters along the frames in place, one strip of pixels after the other.
void filterFrames(image<float>& img, Border border, const Kernel& kernel) {
  const int frames = img.nframes();
  const std::ptrdiff_t size = img.frameSize();
  const std::ptrdiff_t width = std::min(
      columnStrips(size), columnStrips(std::max<std::ptrdiff_t>(kWindowFloats / frames, 1)));
  Workspaces<Floats> strips;
  parallelParts(Parts(size, width), [&](std::ptrdiff_t begin, std::ptrdiff_t end) {
    const auto lease =
        strips.take([&] { return std::make_unique<Floats>(newZeros(width * frames)); });
    float* strip = lease->get();
    const std::ptrdiff_t count = end - begin;
    float* at = img.pixels() + begin;
    for (int f = 0; f < frames; ++f) std::copy_n(at + f * size, count, strip + f * width);
    filterColumns({strip, width, 0, frames}, 0, frames, count, kernel, border, at, size);
  });
}

}  // namespace

image<float> resultFor(const Image& source) {
  if (!hasFloatForm(source)) return image<float>(0, 1, 1, 1, 1);
  return uninitializedImage<float>(source.nx(), source.ny(), source.nz(), source.nc(), source.nt());
}

void filterAxes(const Image& source, Border border, const AxisKernels& kernels,
                image<float>& result) {
  if (result.isNull()) return;
  const bool hasFrames = result.nframes() >= 2;
  try {
    {
      const Step step("filter", 0, hasFrames ? 0.7 : 1);
      PlaneFilter(source, border, kernels).filter(result.nframes(), result.pixels());
    }
    if (hasFrames) {
      const Step step("filter", 0.7, 1);
      filterFrames(result, border, *kernels.z);
    }
  } catch (const std::bad_alloc&) {
    exitOutOfBufferMemory();
  }
}

}  // namespace orva::scalespace
