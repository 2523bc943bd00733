#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <functional>
#include <iostream>
#include <iterator>
#include <vector>

#include "orva/image/bad_alloc.h"
#include "orva/image/float_conversion.h"
#include "orva/image/truncate.h"
#include "orva/image_math/image_math.h"
#include "orva/util/cpu_path.h"
#include "orva/util/global.h"

namespace orva::image_math {
namespace {

constexpr std::ptrdiff_t kBlock = 2048;  // values per read
constexpr int kRangeError = 2;           // exit status for a share or number of pixels out of range

// Intended: the heading names one function, whichever called.
void checkPercentage(float p) {
  if (p < 0.0F || p > 1.0F) {
    std::cerr << "In float image_math::meanOfTopByPercentage(vector<float> img, float p)\n"
              << "Error: percentage must be a value in [0, 1]\n";
    std::exit(kRangeError);
  }
}

// The non-empty integer brightness levels, brightest first, with the number of values at each.
class Histogram {
 public:
  struct Level {
    int level;
    std::int64_t count;
  };

  // Counts `count` values in `min` .. `max`. read(first, n) points to n of them.
  template <class Read>
  Histogram(float min, float max, std::int64_t count, Read read)
      : low_(truncateTo<int>(min)), high_(truncateTo<int>(max)) {
    if (isFlat()) return;
    const std::int64_t last = std::int64_t{high_} - low_;
    constexpr std::int64_t kMaxBins = 1 << 20;
    if (last < kMaxBins) {
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

  // The bin of a value, clamped to 0 .. last; 0 for a NaN.
  static int narrowBin(float v, float low, int last) {
    const float above = v - low;
    const auto max = static_cast<float>(last);
    const float held = above < max ? above : max;
    const int bin = static_cast<int>(held > 0.0F ? held : 0.0F);
    return above == above ? bin : 0;
  }

  template <class Read>
  void countBins(int last, std::int64_t count, Read read) {
    std::vector<std::int64_t> bins(static_cast<std::size_t>(last) + 1);
    const auto low = static_cast<float>(low_);
    int numbers[kBlock];
    for (std::int64_t i = 0; i < count; i += kBlock) {
      const std::ptrdiff_t n = std::min<std::int64_t>(kBlock, count - i);
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

  // For ranges whose bins would take too much memory.
  template <class Read>
  void sortBins(std::int64_t last, std::int64_t count, Read read) {
    std::vector<std::int64_t> bins;
    bins.reserve(static_cast<std::size_t>(count));
    for (std::int64_t i = 0; i < count; i += kBlock) {
      const std::ptrdiff_t n = std::min<std::int64_t>(kBlock, count - i);
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
  return exitOnBadAlloc([&] {
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
  // Unsigned, so that wrapping is defined.
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

}  // namespace

template <class T>
T mean(const std::vector<T>& values) {
  if (values.empty()) return T{};
  T sum{};
  for (const T v : values) sum += v;
  return sum / static_cast<T>(values.size());
}

template <class T>
T minimum(const std::vector<T>& values) {
  return values.empty() ? T{} : *std::min_element(values.begin(), values.end());
}

template <class T>
T maximum(const std::vector<T>& values) {
  return values.empty() ? T{} : *std::max_element(values.begin(), values.end());
}

template float mean(const std::vector<float>& values);
template float minimum(const std::vector<float>& values);
template float maximum(const std::vector<float>& values);

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
  const Histogram histogram = exitOnBadAlloc([&] {
    return Histogram(minimum(values), maximum(values), count,
                     [&values](std::ptrdiff_t first, std::ptrdiff_t) {
                       return &values[static_cast<std::size_t>(first)];
                     });
  });
  return meanOfTop(histogram, count, p);
}

}  // namespace orva::image_math
