#include "orva/detect/flooding.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <limits>
#include <queue>

#include "orva/bip/union_find.h"
#include "orva/detect/star_shape.h"
#include "orva/util/parallel_for.h"

namespace orva::detect {
namespace {

// A pixel that a basin may take.
struct Step {
  float level;
  int pixel;
  int label;
};

struct IsLater {
  bool operator()(const Step& a, const Step& b) const {
    if (a.level != b.level) return a.level > b.level;
    if (a.pixel != b.pixel) return a.pixel > b.pixel;
    return a.label > b.label;
  }
};

// Makes pixels that are marked with a negative number background.
void clearMarks(image<int>& labels) {
  parallelPixels(labels.npix(), [&](std::ptrdiff_t begin, std::ptrdiff_t end) {
    std::transform(labels.pixels() + begin, labels.pixels() + end, labels.pixels() + begin,
                   [](int label) { return std::max(label, 0); });
  });
}

// Basins that may reach the same pixels, in ascending order. Others neither take nor mark a pixel
// that one of them does, so each group floods as if there were no others.
std::vector<std::vector<std::size_t>> groupsOf(const std::vector<Basin>& basins, int nx, int ny) {
  constexpr int kSide = 16;  // of the squares by which basins are compared, in pixels
  constexpr int kNone = -1;
  const int columns = nx / kSide + 1;
  const int rows = ny / kSide + 1;
  std::vector<int> owners(static_cast<std::size_t>(columns) * static_cast<std::size_t>(rows),
                          kNone);
  bip::UnionFind<> sets;
  for (const Basin& b : basins) {
    int set = sets.add();
    const float radius = *std::max_element(b.radii.begin(), b.radii.end());
    // With the pixels beyond it that are marked, and one more, as positions are rounded.
    const float reach = std::max(kReachShare * radius, radius + kReachPixels) + 2;
    const auto squareOf = [](float v, int n) {
      return static_cast<int>(std::clamp(v, 0.0F, static_cast<float>(n - 1))) / kSide;
    };
    for (int y = squareOf(b.y - reach, ny); y <= squareOf(b.y + reach, ny); ++y) {
      for (int x = squareOf(b.x - reach, nx); x <= squareOf(b.x + reach, nx); ++x) {
        int& owner = owners[static_cast<std::size_t>(y) * static_cast<std::size_t>(columns) +
                            static_cast<std::size_t>(x)];
        if (owner != kNone) set = sets.join(owner, set);
        owner = set;
      }
    }
  }
  const std::ptrdiff_t count = sets.number(std::numeric_limits<std::ptrdiff_t>::max());
  std::vector<std::vector<std::size_t>> groups(static_cast<std::size_t>(count));
  for (std::size_t k = 0; k < basins.size(); ++k) {
    groups[static_cast<std::size_t>(sets.numberOf(static_cast<int>(k)))].push_back(k);
  }
  return groups;
}

// While it runs, -k marks pixels that basin k - 1 was the last to reach: to reach one again changes
// nothing, as its level stays the same.
class Flood {
 public:
  Flood(const image<float>& values, const std::vector<Basin>& basins, image<int>& labels)
      : values_(values), basins_(basins), labels_(labels) {}

  // Floods the basins of a group.
  void run(const std::vector<std::size_t>& group) {
    setMarkers(group);
    constexpr int kStepsPerCheckpoint = 1 << 16;
    for (int steps = 1; !queue_.empty(); ++steps) {
      if (steps % kStepsPerCheckpoint == 0) checkpoint();
      const Step step = queue_.top();
      queue_.pop();
      if (labels_.pixels()[step.pixel] > 0) continue;
      labels_.pixels()[step.pixel] = step.label;
      addNeighbours(step);
    }
  }

 private:
  void setMarkers(const std::vector<std::size_t>& group) {
    std::vector<Step> markers;
    for (const std::size_t k : group) {
      const Basin& b = basins_[k];
      const int x = std::clamp(static_cast<int>(std::floor(b.x + 0.5F)), 0, labels_.nx() - 1);
      const int y = std::clamp(static_cast<int>(std::floor(b.y + 0.5F)), 0, labels_.ny() - 1);
      const Step marker{0.0F, y * labels_.nx() + x, static_cast<int>(k) + 1};
      if (labels_.pixels()[marker.pixel] != 0) continue;
      labels_.pixels()[marker.pixel] = marker.label;
      markers.push_back(marker);
    }
    for (const Step& marker : markers) addNeighbours(marker);
  }

  void addNeighbours(const Step& step) {
    const int nx = labels_.nx();
    const int x = step.pixel % nx;
    const int y = step.pixel / nx;
    if (y > 0) add(step, x, y - 1);
    if (x > 0) add(step, x - 1, y);
    if (x + 1 < nx) add(step, x + 1, y);
    if (y + 1 < labels_.ny()) add(step, x, y + 1);
  }

  void add(const Step& from, int x, int y) {
    const int pixel = y * labels_.nx() + x;
    int& label = labels_.pixels()[pixel];
    if (label > 0 || label == -from.label) return;
    label = -from.label;
    const Basin& basin = basins_[static_cast<std::size_t>(from.label - 1)];
    const float level = floodLevel(basin, x, y, values_.pixels()[pixel]);
    if (level >= 0) queue_.push({level, pixel, from.label});
  }

  const image<float>& values_;
  const std::vector<Basin>& basins_;
  image<int>& labels_;
  std::priority_queue<Step, std::vector<Step>, IsLater> queue_;
};

// Gathers background regions and the label around them.
class HoleFiller {
 public:
  explicit HoleFiller(image<int>& labels) : labels_(labels) {}

  void run() {
    const int nx = labels_.nx();
    const int* p = labels_.pixels();
    for (int y = 1; y < labels_.ny(); ++y) {
      for (int i = y * nx + 1; i < (y + 1) * nx; ++i) {
        // The first pixel of a hole has labels above and to the left.
        if (p[i] == 0 && p[i - 1] > 0 && p[i - nx] > 0) fill(i);
      }
    }
    clearMarks(labels_);
  }

 private:
  static constexpr int kGathered = -1;  // pixels of the region at hand
  static constexpr int kOpen = -2;      // pixels that belong to no hole

  void fill(int first) {
    label_ = 0;
    isOpen_ = false;
    region_.clear();
    visit(first);
    const int nx = labels_.nx();
    for (std::size_t k = 0; k < region_.size() && !isOpen_; ++k) {
      const int x = region_[k] % nx;
      const int y = region_[k] / nx;
      if (x == 0 || y == 0 || x + 1 == nx || y + 1 == labels_.ny()) {
        isOpen_ = true;
        break;
      }
      for (const int row : {region_[k] - nx, region_[k], region_[k] + nx}) {
        for (int i = row - 1; i <= row + 1; ++i) visit(i);
      }
    }
    for (const int pixel : region_) labels_.pixels()[pixel] = isOpen_ ? kOpen : label_;
  }

  void visit(int pixel) {
    int& label = labels_.pixels()[pixel];
    if (label == 0) {
      label = kGathered;
      region_.push_back(pixel);
    } else if (label > 0) {
      isOpen_ = isOpen_ || (label_ != 0 && label_ != label);
      label_ = label;
    } else if (label == kOpen) {
      isOpen_ = true;
    }
  }

  image<int>& labels_;
  std::vector<int> region_;
  int label_ = 0;
  bool isOpen_ = false;
};

}  // namespace

float floodLevel(const Basin& basin, int x, int y, float value) {
  const float dx = static_cast<float>(x) - basin.x;
  const float dy = static_cast<float>(y) - basin.y;
  const float distance = std::sqrt(dx * dx + dy * dy);
  const float radius = radiusTowards(basin.radii, dx, dy);
  if (distance > kReachShare * radius && distance > radius + kReachPixels) return -1;
  if (distance > kCoreShare * radius && value < basin.threshold) return -1;
  return distance / radius;
}

image<int> flooded(const image<float>& values, const std::vector<Basin>& basins) {
  image<int> labels(values.nx(), values.ny(), 1, 1, 1);
  if (labels.isNull()) return labels;
  const std::vector<std::vector<std::size_t>> groups = groupsOf(basins, labels.nx(), labels.ny());
  parallelFor(groups.size(), [&](std::size_t k) { Flood(values, basins, labels).run(groups[k]); });
  clearMarks(labels);
  return labels;
}

void fillHoles(image<int>& labels) {
  if (!labels.isNull()) HoleFiller(labels).run();
}

}  // namespace orva::detect
