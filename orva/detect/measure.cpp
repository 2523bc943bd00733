#include "orva/detect/measure.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <stdexcept>

#include "orva/detect/elementary.h"
#include "orva/util/parallel_for.h"

namespace orva::detect {
namespace {

constexpr double kSqrt2 = 1.41421356237309504880;

// Pixels of one label side by side.
struct Run {
  int label;
  int y;
  int first;
  int last;
};

// The runs of all labels, by label, then in raster order.
std::vector<Run> runsOf(const image<int>& labels) {
  std::vector<Run> runs;
  const int* row = labels.pixels();
  for (int y = 0; y < labels.ny(); ++y, row += labels.nx()) {
    for (int x = 0; x < labels.nx();) {
      const int first = x;
      const int label = row[x];
      while (x < labels.nx() && row[x] == label) ++x;
      if (label > 0) runs.push_back({label, y, first, x - 1});
    }
  }
  std::stable_sort(runs.begin(), runs.end(),
                   [](const Run& a, const Run& b) { return a.label < b.label; });
  return runs;
}

// The runs of one label.
struct Region {
  const Run* first;
  const Run* last;  // behind the last
  const Run* begin() const { return first; }
  const Run* end() const { return last; }
};

void setBox(const image<int>& labels, const Region& region, ObjectMeasures& m) {
  m.minRow = region.first->y;
  m.endRow = region.last[-1].y + 1;
  m.minColumn = region.first->first;
  m.endColumn = 0;
  for (const Run& run : region) {
    m.minColumn = std::min(m.minColumn, run.first);
    m.endColumn = std::max(m.endColumn, run.last + 1);
  }
  m.touchesBorder =
      m.minRow == 0 || m.minColumn == 0 || m.endRow == labels.ny() || m.endColumn == labels.nx();
}

// Area, centroid and the ellipse of the same second central moments.
void setMoments(const Region& region, ObjectMeasures& m) {
  double n = 0;
  double sumX = 0;
  double sumY = 0;
  double sumXX = 0;
  double sumXY = 0;
  double sumYY = 0;
  for (const Run& run : region) {
    // Relative to the box, so that the sums stay small.
    const double y = run.y - m.minRow;
    const double a = run.first - m.minColumn;
    const double b = run.last - m.minColumn;
    const double length = b - a + 1;
    const double sum = (a + b) * length / 2;
    n += length;
    sumX += sum;
    sumY += y * length;
    sumXX += (b * (b + 1) * (2 * b + 1) - (a - 1) * a * (2 * a - 1)) / 6;
    sumXY += y * sum;
    sumYY += y * y * length;
  }
  m.area = n;
  m.centroidRow = (m.minRow * n + sumY) / n;
  m.centroidColumn = (m.minColumn * n + sumX) / n;
  m.equivalentDiameterArea = std::sqrt(4 * n / kPi);
  const double xx = (sumXX - sumX * (sumX / n)) / n;
  const double xy = (sumXY - sumX * (sumY / n)) / n;
  const double yy = (sumYY - sumY * (sumY / n)) / n;
  const double difference = std::sqrt((xx - yy) * (xx - yy) + 4 * xy * xy);
  const double major = std::max(0.0, (xx + yy + difference) / 2);
  const double minor = std::max(0.0, (xx + yy - difference) / 2);
  m.majorAxisLength = 4 * std::sqrt(major);
  m.minorAxisLength = 4 * std::sqrt(minor);
  m.eccentricity = major > 0 ? std::sqrt(1 - minor / major) : 0;
  m.orientation = arcTangent(2 * xy, yy - xx) / 2;
}

// Whether pixels of a region lie on its border.
class BorderPixels {
 public:
  BorderPixels(const image<int>& labels, int label) : labels_(labels), label_(label) {}

  bool operator()(int x, int y) const {
    return isIn(x, y) && !(isIn(x - 1, y) && isIn(x + 1, y) && isIn(x, y - 1) && isIn(x, y + 1));
  }

 private:
  bool isIn(int x, int y) const {
    return x >= 0 && y >= 0 && x < labels_.nx() && y < labels_.ny() &&
           labels_.pixels()[std::ptrdiff_t{y} * labels_.nx() + x] == label_;
  }

  const image<int>& labels_;
  int label_;
};

// Each border pixel counts by how many of its neighbours along the axes and the diagonals are
// border pixels, too: 1 between two of the former, sqrt(2) between two of the latter, the mean of
// both between one of each; the other cases as in the table.
double perimeterOf(const image<int>& labels, const Region& region) {
  const BorderPixels isBorder(labels, region.first->label);
  std::int64_t straight = 0;
  std::int64_t diagonal = 0;
  std::int64_t mixed = 0;
  for (const Run& run : region) {
    const int y = run.y;
    for (int x = run.first; x <= run.last; ++x) {
      if (!isBorder(x, y)) continue;
      const int sides =
          isBorder(x - 1, y) + isBorder(x + 1, y) + isBorder(x, y - 1) + isBorder(x, y + 1);
      const int corners = isBorder(x - 1, y - 1) + isBorder(x + 1, y - 1) + isBorder(x - 1, y + 1) +
                          isBorder(x + 1, y + 1);
      switch (10 * corners + 2 * sides + 1) {
        case 5:
        case 7:
        case 15:
        case 17:
        case 25:
        case 27:
          ++straight;
          break;
        case 21:
        case 33:
          ++diagonal;
          break;
        case 13:
        case 23:
          ++mixed;
          break;
        default:
          break;
      }
    }
  }
  return static_cast<double>(straight) + static_cast<double>(diagonal) * kSqrt2 +
         static_cast<double>(mixed) * ((1 + kSqrt2) / 2);
}

// A point in halves of a pixel.
struct HalfPoint {
  std::int64_t x;
  std::int64_t y;
};

// Above 0 where o, a, b turn towards y from x.
std::int64_t turn(const HalfPoint& o, const HalfPoint& a, const HalfPoint& b) {
  return (a.x - o.x) * (b.y - o.y) - (a.y - o.y) * (b.x - o.x);
}

// One side of the hull of points in ascending order of y: on the left with a sign of 1, on the
// right with -1.
class HullSide {
 public:
  explicit HullSide(int sign) : sign_(sign) {}

  void add(const HalfPoint& c) {
    while (points_.size() >= 2 &&
           sign_ * turn(points_[points_.size() - 2], points_.back(), c) >= 0) {
      points_.pop_back();
    }
    points_.push_back(c);
  }

  // The side's position at `y`, rounded to a whole pixel into the hull. Positions are asked for in
  // ascending order of y.
  std::int64_t at(std::int64_t y) {
    while (points_[k_ + 1].y < y) ++k_;
    const HalfPoint& a = points_[k_];
    const HalfPoint& b = points_[k_ + 1];
    // x = p / q in halves, q > 0
    const std::int64_t q = 2 * (b.y - a.y);
    const std::int64_t p = a.x * (b.y - a.y) + (b.x - a.x) * (y - a.y);
    return sign_ > 0 ? -floorOf(-p, q) : floorOf(p, q);
  }

 private:
  static std::int64_t floorOf(std::int64_t p, std::int64_t q) {
    return p / q - (p % q < 0 ? 1 : 0);
  }

  std::vector<HalfPoint> points_;
  std::size_t k_ = 0;
  int sign_;
};

// The number of pixels whose center lies in the convex hull of the middles of the pixels' sides,
// its boundary included.
double hullArea(const Region& region) {
  HullSide left(1);
  HullSide right(-1);
  for (const Run* run = region.first; run != region.last;) {
    const std::int64_t y = run->y;
    std::int64_t first = run->first;
    std::int64_t last = run->last;
    for (; run != region.last && run->y == y; ++run) last = run->last;
    left.add({2 * first, 2 * y - 1});
    left.add({2 * first - 1, 2 * y});
    left.add({2 * first, 2 * y + 1});
    right.add({2 * last, 2 * y - 1});
    right.add({2 * last + 1, 2 * y});
    right.add({2 * last, 2 * y + 1});
  }
  double area = 0;
  for (std::int64_t y = region.first->y; y <= region.last[-1].y; ++y) {
    area += static_cast<double>(right.at(2 * y) - left.at(2 * y) + 1);
  }
  return area;
}

void setIntensities(const Image& intensities, const Region& region, ObjectMeasures& m) {
  const auto forEach = [&](auto use) {
    for (const Run& run : region) {
      for (int x = run.first; x <= run.last; ++x) {
        use(static_cast<double>(intensities.pixel(x, run.y)));
      }
    }
  };
  double sum = 0;
  m.minIntensity = std::numeric_limits<double>::infinity();
  m.maxIntensity = -m.minIntensity;
  bool hasNan = false;
  forEach([&](double v) {
    sum += v;
    m.minIntensity = std::min(m.minIntensity, v);
    m.maxIntensity = std::max(m.maxIntensity, v);
    hasNan = hasNan || std::isnan(v);
  });
  m.meanIntensity = sum / m.area;
  double squares = 0;
  forEach([&](double v) { squares += (v - m.meanIntensity) * (v - m.meanIntensity); });
  m.intensityStd = std::sqrt(squares / m.area);
  if (hasNan) m.minIntensity = m.maxIntensity = std::numeric_limits<double>::quiet_NaN();
}

}  // namespace

std::vector<ObjectMeasures> measureObjects(const image<int>& labels, const Image& intensities) {
  if (labels.nx() != intensities.nx() || labels.ny() != intensities.ny()) {
    throw std::invalid_argument(
        "orva::detect::measureObjects: labels and intensities differ in width or height");
  }
  std::vector<ObjectMeasures> all;
  if (labels.isNull() || intensities.isNull()) return all;
  const std::vector<Run> runs = runsOf(labels);
  const Run* const end = runs.data() + runs.size();
  std::vector<Region> regions;
  for (const Run* run = runs.data(); run != end; run = regions.back().last) {
    const Run* last = std::find_if(run, end, [run](const Run& r) { return r.label != run->label; });
    regions.push_back({run, last});
  }
  all.resize(regions.size());
  const Step step("measures", 0, 1);
  parallelFor(regions.size(), [&](std::size_t k) {
    const Region& region = regions[k];
    ObjectMeasures& m = all[k];
    m.label = region.first->label;
    setBox(labels, region, m);
    setMoments(region, m);
    m.perimeter = perimeterOf(labels, region);
    m.solidity = m.area / hullArea(region);
    setIntensities(intensities, region, m);
  });
  return all;
}

const std::vector<MeasureColumn>& measureColumns() {
  using M = ObjectMeasures;
  static const std::vector<MeasureColumn> columns{
      {"label", [](const M& m) -> double { return m.label; }},
      {"centroid-0", [](const M& m) { return m.centroidRow; }},
      {"centroid-1", [](const M& m) { return m.centroidColumn; }},
      {"area", [](const M& m) { return m.area; }},
      {"equivalent_diameter_area", [](const M& m) { return m.equivalentDiameterArea; }},
      {"perimeter", [](const M& m) { return m.perimeter; }},
      {"eccentricity", [](const M& m) { return m.eccentricity; }},
      {"major_axis_length", [](const M& m) { return m.majorAxisLength; }},
      {"minor_axis_length", [](const M& m) { return m.minorAxisLength; }},
      {"orientation", [](const M& m) { return m.orientation; }},
      {"solidity", [](const M& m) { return m.solidity; }},
      {"mean_intensity", [](const M& m) { return m.meanIntensity; }},
      {"min_intensity", [](const M& m) { return m.minIntensity; }},
      {"max_intensity", [](const M& m) { return m.maxIntensity; }},
      {"intensity_std", [](const M& m) { return m.intensityStd; }},
      {"bbox-0", [](const M& m) -> double { return m.minRow; }},
      {"bbox-1", [](const M& m) -> double { return m.minColumn; }},
      {"bbox-2", [](const M& m) -> double { return m.endRow; }},
      {"bbox-3", [](const M& m) -> double { return m.endColumn; }},
  };
  return columns;
}

}  // namespace orva::detect
