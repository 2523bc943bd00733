#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <functional>
#include <iostream>

#include "orva/bip/bip.h"
#include "orva/image/truncate.h"
#include "orva/image_math/image_math.h"
#include "orva/util/global.h"

namespace orva::image_math {
namespace {

constexpr int kRangeError = 2;  // the exit status for a wrong share or number of pixels

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
    int count;
  };

  // Of values[0] .. values[count - 1] between `least` and `most`, each truncated toward zero.
  template <class ValueAt>
  Histogram(float least, float most, int count, ValueAt valueAt)
      : low_(truncateTo<int>(least)), high_(truncateTo<int>(most)) {
    if (isFlat()) return;
    const std::int64_t last = std::int64_t{high_} - low_;
    const auto binOf = [&](int i) {
      const auto bin = truncateTo<std::int64_t>(valueAt(i) - static_cast<float>(low_));
      return std::clamp(bin, std::int64_t{0}, last);
    };
    constexpr std::int64_t kMostBins = 1 << 20;
    if (last < kMostBins) {
      countBins(last, count, binOf);
    } else {
      sortBins(count, binOf);
    }
  }

  int low() const { return low_; }
  int high() const { return high_; }
  bool isFlat() const { return low_ == high_; }
  const std::vector<Level>& levels() const { return levels_; }

 private:
  int levelOf(std::int64_t bin) const { return static_cast<int>(low_ + bin); }

  template <class BinOf>
  void countBins(std::int64_t last, int count, BinOf binOf) {
    std::vector<int> bins(static_cast<std::size_t>(last + 1));
    for (int i = 0; i < count; ++i) ++bins[static_cast<std::size_t>(binOf(i))];
    for (std::int64_t b = last; b >= 0; --b) {
      const int inBin = bins[static_cast<std::size_t>(b)];
      if (inBin > 0) levels_.push_back({levelOf(b), inBin});
    }
  }

  // For ranges so wide that their bins would not fit into memory.
  template <class BinOf>
  void sortBins(int count, BinOf binOf) {
    std::vector<std::int64_t> bins(static_cast<std::size_t>(count));
    for (int i = 0; i < count; ++i) bins[static_cast<std::size_t>(i)] = binOf(i);
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
  return Histogram(img.fmin(), img.fmax(), img.npix(), [&img](int i) { return img.pixel(i); });
}

// The mean of the brightest levels that hold at least the share p of `count` values.
float meanOfTop(const Histogram& histogram, int count, float p) {
  if (histogram.isFlat()) return static_cast<float>(histogram.low());
  const int wanted = truncateTo<int>(static_cast<float>(count) * p);
  if (wanted < 1) return static_cast<float>(histogram.high());
  // 32-bit integers that wrap around, without the undefined behaviour of signed ones.
  std::uint32_t sum = 0;
  int taken = 0;
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

// The pixels of plane 0 for which holds(index) does, column by column.
template <class Holds>
std::vector<Point> pointsWhere(const Image& img, Holds holds) {
  std::vector<Point> points;
  for (int x = 0; x < img.nx(); ++x) {
    for (int y = 0; y < img.ny(); ++y) {
      if (holds(x + std::ptrdiff_t{y} * img.nx())) points.emplace_back(x, y);
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
  int sum = 0;
  for (const Histogram::Level& l : histogram.levels()) {
    sum += l.count;
    if (numpix <= sum) return static_cast<float>(l.level);
  }
  return static_cast<float>(histogram.low());
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
  const int count = static_cast<int>(values.size());
  const Histogram histogram(minimum(values), maximum(values), count,
                            [&](int i) { return values[static_cast<std::size_t>(i)]; });
  return meanOfTop(histogram, count, p);
}

std::vector<Point> findZeros(const Image& img) {
  const image<unsigned char> edges = signEdges(img);
  return pointsWhere(edges, [&](std::ptrdiff_t i) { return edges.pixels()[i] > 254; });
}

std::vector<Point> findZeros(const Image& a, const Image& b) {
  if (!a.equalSize(b)) return {};
  const image<unsigned char> edgesA = signEdges(a);
  const image<unsigned char> edgesB = signEdges(b);
  if (!edgesA.equalSize(edgesB)) return {};  // sizes below zero leave one without a first volume
  return pointsWhere(edgesA, [&](std::ptrdiff_t i) {
    return edgesA.pixels()[i] > 254 && edgesB.pixels()[i] > 254;
  });
}

}  // namespace orva::image_math
