#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <functional>
#include <iostream>
#include <iterator>
#include <numeric>
#include <vector>

#include "orva/bip/bip.h"
#include "orva/image/float_conversion.h"
#include "orva/image/truncate.h"
#include "orva/image/with_memory.h"
#include "orva/image_math/image_math.h"
#include "orva/util/cpu_path.h"
#include "orva/util/global.h"

namespace orva::image_math {
namespace {

constexpr std::ptrdiff_t kTogether = 2048;  // values that are read at once
constexpr int kRangeError = 2;              // the exit status for a wrong share or number of pixels

// Intended: the heading names one function, whichever called.
void checkPercentage(float p) {
  if (p < 0.0F || p > 1.0F) {
    std::cerr << "In float image_math::meanOfTopByPercentage(vector<float> img, float p)\n"
              << "Error: percentage must be a value in [0, 1]\n";
    std::exit(kRangeError);
  }
}

// Whole brightness levels with the number of values at each, brightest first; empty levels are left
// out.
class Histogram {
 public:
  struct Level {
    int level;
    std::int64_t count;
  };

  // Of `count` values between `least` and `most`, each truncated toward zero. read(first, n) gives
  // n of them.
  template <class Read>
  Histogram(float least, float most, std::int64_t count, Read read)
      : low_(truncateTo<int>(least)), high_(truncateTo<int>(most)) {
    if (isFlat()) return;
    const std::int64_t last = std::int64_t{high_} - low_;
    constexpr std::int64_t kMostBins = 1 << 20;
    if (last < kMostBins) {
      countBins(static_cast<int>(last), count, read);
    } else {
      sortBins(last, count, read);
    }
  }

  int low() const { return low_; }
  int high() const { return high_; }
  bool isFlat() const { return low_ == high_; }
  const std::vector<Level>& levels() const { return levels_; }

 private:
  int levelOf(std::int64_t bin) const { return static_cast<int>(low_ + bin); }

  // The number of a value's bin. Values past the last are held there, a NaN is in the first.
  static int narrowBin(float v, float low, int last) {
    const float above = v - low;
    const auto most = static_cast<float>(last);
    const float held = above < most ? above : most;
    const int bin = static_cast<int>(held > 0.0F ? held : 0.0F);
    return above == above ? bin : 0;
  }

  template <class Read>
  void countBins(int last, std::int64_t count, Read read) {
    std::vector<std::int64_t> bins(static_cast<std::size_t>(last) + 1);
    const auto low = static_cast<float>(low_);
    int numbers[kTogether];
    for (std::int64_t i = 0; i < count; i += kTogether) {
      const std::ptrdiff_t n = std::min<std::int64_t>(kTogether, count - i);
      const float* from = read(i, n);
      int* to = numbers;
      onWidestPath([=] {
        for (std::ptrdiff_t k = 0; k < n; ++k) to[k] = narrowBin(from[k], low, last);
      });
      std::for_each(numbers, numbers + n, [&](int b) { ++bins[static_cast<std::size_t>(b)]; });
    }
    for (int b = last; b >= 0; --b) {
      const std::int64_t inBin = bins[static_cast<std::size_t>(b)];
      if (inBin > 0) levels_.push_back({levelOf(b), inBin});
    }
  }

  // For ranges so wide that their bins would not fit into memory.
  template <class Read>
  void sortBins(std::int64_t last, std::int64_t count, Read read) {
    std::vector<std::int64_t> bins;
    bins.reserve(static_cast<std::size_t>(count));
    for (std::int64_t i = 0; i < count; i += kTogether) {
      const std::ptrdiff_t n = std::min<std::int64_t>(kTogether, count - i);
      const float* from = read(i, n);
      std::transform(from, from + n, std::back_inserter(bins), [&](float v) {
        const auto bin = truncateTo<std::int64_t>(v - static_cast<float>(low_));
        return std::clamp(bin, std::int64_t{0}, last);
      });
    }
    std::sort(bins.begin(), bins.end(), std::greater<>());
    for (const std::int64_t b : bins) {
      if (levels_.empty() || levels_.back().level != levelOf(b)) levels_.push_back({levelOf(b), 0});
      ++levels_.back().count;
    }
  }

  int low_;
  int high_;
  std::vector<Level> levels_;
};

Histogram histogramOf(const Image& img) {
  PixelFloats pixels(img);
  return withMemory([&] {
    return Histogram(
        img.fmin(), img.fmax(), img.npix(),
        [&pixels](std::ptrdiff_t first, std::ptrdiff_t n) { return pixels.read(first, n); });
  });
}

// The mean of the brightest levels that hold at least the share p of `count` values.
float meanOfTop(const Histogram& histogram, std::int64_t count, float p) {
  if (histogram.isFlat()) return static_cast<float>(histogram.low());
  const auto wanted = truncateTo<std::int64_t>(static_cast<float>(count) * p);
  if (wanted < 1) return static_cast<float>(histogram.high());
  // 32-bit integers that wrap around, without the undefined behaviour of signed ones.
  std::uint32_t sum = 0;
  std::int64_t taken = 0;
  for (const Histogram::Level& l : histogram.levels()) {
    sum += static_cast<std::uint32_t>(l.count) * static_cast<std::uint32_t>(l.level);
    taken += l.count;
    if (taken >= wanted) break;
  }
  if (taken < 1) {
    reportBugInfo("float image_math::meanOfTopByPercentage(const Image &img, float p)");
    return 0.0F;
  }
  return static_cast<float>(static_cast<std::int32_t>(sum)) / static_cast<float>(taken);
}

// Where a zero-thresholded image changes sign.
image<unsigned char> signEdges(const Image& img) { return bip::edge(bip::threshold(img, 0.0F)); }

// The pixels of plane 0 that are edges, column by column.
std::vector<Point> pointsOf(const image<unsigned char>& edges) {
  // Rows are walked, as they lie in memory: first the number of points of every column, then each
  // point to its place.
  const std::ptrdiff_t nx = edges.nx();
  std::vector<std::ptrdiff_t> places(static_cast<std::size_t>(nx));
  std::ptrdiff_t* place = places.data();
  for (int y = 0; y < edges.ny(); ++y) {
    const unsigned char* row = edges.pixels() + y * nx;
    onWidestPath([=] {
      ORVA_INDEPENDENT
      for (std::ptrdiff_t x = 0; x < nx; ++x) place[x] += row[x] > 254 ? 1 : 0;
    });
  }
  std::vector<Point> points(
      static_cast<std::size_t>(std::accumulate(places.begin(), places.end(), std::ptrdiff_t{0})));
  std::exclusive_scan(places.begin(), places.end(), places.begin(), std::ptrdiff_t{0});
  for (int y = 0; y < edges.ny(); ++y) {
    const unsigned char* row = edges.pixels() + y * nx;
    for (int x = 0; x < nx; ++x) {
      if (row[x] > 254) points[static_cast<std::size_t>(place[x]++)] = Point(x, y);
    }
  }
  return points;
}

}  // namespace

float topByPixelNumber(const Image& img, int numpix) {
  constexpr const char* kHeading = "In float topByPercentage(const Image &img, int numpix)\n";
  if (img.isNull()) {
    std::cerr << kHeading << "Warning: img is null, return 0.\n";
    return 0.0F;
  }
  if (numpix < 0 || numpix >= img.npix()) {
    std::cerr << kHeading << "Error: numpix must be in [0, img.npix()-1]\n";
    std::exit(kRangeError);
  }
  const Histogram histogram = histogramOf(img);
  if (histogram.isFlat()) return static_cast<float>(histogram.low());
  if (numpix == 0) return static_cast<float>(histogram.high());
  // The levels hold all pixels, which are more than numpix.
  auto level = histogram.levels().begin();
  for (std::int64_t sum = level->count; sum < numpix; sum += level->count) ++level;
  return static_cast<float>(level->level);
}

float topByPercentage(const Image& img, float p) {
  checkPercentage(p);
  return topByPixelNumber(img, truncateTo<int>(p * static_cast<float>(img.npix())));
}

float meanOfTopByPercentage(const Image& img, float p) {
  checkPercentage(p);
  if (img.isNull()) {
    std::cerr << "In float topByPercentage(const Image &img, float p)\n"
              << "Warning: img is null, return 0.\n";
    return 0.0F;
  }
  return meanOfTop(histogramOf(img), img.npix(), p);
}

// NOLINTNEXTLINE(performance-unnecessary-value-param): the values come by value
float meanOfTopByPercentage(std::vector<float> values, float p) {
  if (std::abs(p - 1.0F) < 0.01) return mean(values);
  checkPercentage(p);
  if (values.empty()) return 0.0F;
  const auto count = static_cast<std::int64_t>(values.size());
  const Histogram histogram = withMemory([&] {
    return Histogram(minimum(values), maximum(values), count,
                     [&values](std::ptrdiff_t first, std::ptrdiff_t) {
                       return &values[static_cast<std::size_t>(first)];
                     });
  });
  return meanOfTop(histogram, count, p);
}

std::vector<Point> findZeros(const Image& img) {
  return withMemory([&] { return pointsOf(signEdges(img)); });
}

std::vector<Point> findZeros(const Image& a, const Image& b) {
  if (!a.equalSize(b)) return {};
  const image<unsigned char> edgesA = signEdges(a);
  const image<unsigned char> edgesB = signEdges(b);
  if (!edgesA.equalSize(edgesB)) return {};  // sizes below zero whose product is positive
  unsigned char* both = edgesA.pixels();
  const unsigned char* others = edgesB.pixels();
  const std::ptrdiff_t count = edgesA.npix();
  onWidestPath([=] {
    ORVA_INDEPENDENT
    for (std::ptrdiff_t i = 0; i < count; ++i) both[i] &= others[i];
  });
  return withMemory([&] { return pointsOf(edgesA); });
}

}  // namespace orva::image_math
