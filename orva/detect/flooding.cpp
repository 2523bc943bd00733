#include "orva/detect/flooding.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <queue>

#include "orva/bip/rectangle_groups.h"
#include "orva/detect/star_shape.h"
#include "orva/util/parallel_for.h"

namespace orva::detect {
namespace {

// A pixel that a basin may take.
struct Visit {
  float level;
  int pixel;
  int label;
};

struct IsLater {
  bool operator()(const Visit& a, const Visit& b) const {
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

// The pixels that a basin takes or marks, at least.
bip::Rectangle reachOf(const Basin& b) {
  const float radius = *std::max_element(b.radii.begin(), b.radii.end());
  // With the pixels beyond that are marked, and one more, as positions are rounded.
  const float reach = std::max(kReachShare * radius, radius + kReachPixels) + 2;
  const auto pixel = [](float v) {
    constexpr float kFar = 1e9F;
    return static_cast<int>(std::clamp(v, -kFar, kFar));
  };
  return {pixel(b.x - reach), pixel(b.y - reach), pixel(b.x + reach), pixel(b.y + reach)};
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
    constexpr int kVisitsPerCheckpoint = 1 << 16;
    for (int visits = 1; !queue_.empty(); ++visits) {
      if (visits % kVisitsPerCheckpoint == 0) checkpoint();
      const Visit visit = queue_.top();
      queue_.pop();
      if (labels_.pixels()[visit.pixel] > 0) continue;
      labels_.pixels()[visit.pixel] = visit.label;
      addNeighbours(visit);
    }
  }

 private:
  void setMarkers(const std::vector<std::size_t>& group) {
    std::vector<Visit> markers;
    for (const std::size_t k : group) {
      const Basin& b = basins_[k];
      const int x = std::clamp(static_cast<int>(std::floor(b.x + 0.5F)), 0, labels_.nx() - 1);
      const int y = std::clamp(static_cast<int>(std::floor(b.y + 0.5F)), 0, labels_.ny() - 1);
      const Visit marker{0.0F, y * labels_.nx() + x, static_cast<int>(k) + 1};
      if (labels_.pixels()[marker.pixel] != 0) continue;
      labels_.pixels()[marker.pixel] = marker.label;
      markers.push_back(marker);
    }
    for (const Visit& marker : markers) addNeighbours(marker);
  }

  void addNeighbours(const Visit& visit) {
    const int nx = labels_.nx();
    const int x = visit.pixel % nx;
    const int y = visit.pixel / nx;
    if (y > 0) add(visit, x, y - 1);
    if (x > 0) add(visit, x - 1, y);
    if (x + 1 < nx) add(visit, x + 1, y);
    if (y + 1 < labels_.ny()) add(visit, x, y + 1);
  }

  void add(const Visit& from, int x, int y) {
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
  std::priority_queue<Visit, std::vector<Visit>, IsLater> queue_;
};

// Gathers background regions and the label around them.
class HoleFiller {
 public:
  explicit HoleFiller(image<int>& labels) : labels_(labels) {}

  void run() {
    const int nx = labels_.nx();
    const int* p = labels_.pixels();
    constexpr int kRowsPerCheckpoint = 64;
    for (int y = 1; y < labels_.ny(); ++y) {
      if (y % kRowsPerCheckpoint == 0) checkpoint();
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
  std::vector<bip::Rectangle> reaches;
  reaches.reserve(basins.size());
  for (const Basin& b : basins) reaches.push_back(reachOf(b));
  // Each group floods as if there were no others.
  const auto groups = bip::groupsOf(reaches, labels.nx(), labels.ny());
  parallelFor(groups.size(), [&](std::size_t k) { Flood(values, basins, labels).run(groups[k]); });
  clearMarks(labels);
  return labels;
}

void fillHoles(image<int>& labels) {
  if (!labels.isNull()) HoleFiller(labels).run();
}

}  // namespace orva::detect
