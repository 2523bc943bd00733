#include "formats/contours.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <map>
#include <unordered_map>
#include <utility>

namespace orva::formats {
namespace {

// Directions in the order of turns from x towards y.
constexpr std::array<Corner, 4> kSteps{{{1, 0}, {0, 1}, {-1, 0}, {0, -1}}};

std::int64_t doubledArea(const Ring& ring) {
  std::int64_t sum = 0;
  for (std::size_t i = 0; i < ring.size(); ++i) {
    const Corner& a = ring[i];
    const Corner& b = ring[(i + 1) % ring.size()];
    sum += std::int64_t{a.x} * b.y - std::int64_t{b.x} * a.y;
  }
  return sum;
}

class ContourTracer {
 public:
  explicit ContourTracer(const orva::image<int>& labels)
      : labels_(labels),
        polygonOf_(static_cast<std::size_t>(labels.nx()) * static_cast<std::size_t>(labels.ny()),
                   -1),
        isTraced_(polygonOf_.size(), false) {}

  std::vector<Contour> contours() {
    std::map<int, std::vector<std::size_t>> polygonsOf;
    for (int y = 0; y < labels_.ny(); ++y) {
      for (int x = 0; x < labels_.nx(); ++x) {
        const int label = labelAt(x, y);
        if (label <= 0) continue;
        if (polygonOf_[at(x, y)] < 0) {
          polygonsOf[label].push_back(polygons_.size());
          fill(x, y);
        }
        if (labelAt(x, y - 1) != label && !isTraced_[at(x, y)]) trace(x, y);
      }
    }
    std::vector<Contour> result;
    for (const auto& [label, numbers] : polygonsOf) {
      result.push_back({label, {}});
      for (const std::size_t k : numbers) result.back().polygons.push_back(std::move(polygons_[k]));
    }
    return result;
  }

 private:
  // 0 outside the image.
  int labelAt(int x, int y) const {
    if (x < 0 || y < 0 || x >= labels_.nx() || y >= labels_.ny()) return 0;
    return labels_.pixels()[at(x, y)];
  }

  std::size_t at(int x, int y) const {
    return static_cast<std::size_t>(x) +
           static_cast<std::size_t>(y) * static_cast<std::size_t>(labels_.nx());
  }

  // Numbers the pixels of a new polygon.
  void fill(int firstX, int firstY) {
    const int label = labelAt(firstX, firstY);
    const int number = static_cast<int>(polygons_.size());
    polygons_.emplace_back();
    std::vector<Corner> open{{firstX, firstY}};
    polygonOf_[at(firstX, firstY)] = number;
    while (!open.empty()) {
      const Corner p = open.back();
      open.pop_back();
      for (const Corner& step : kSteps) {
        const Corner next{p.x + step.x, p.y + step.y};
        if (labelAt(next.x, next.y) != label || polygonOf_[at(next.x, next.y)] >= 0) continue;
        polygonOf_[at(next.x, next.y)] = number;
        open.push_back(next);
      }
    }
  }

  // Follows the boundary from the upper edge of a pixel with the region on the side of y of the
  // direction of x. Where four pixels meet of which two opposite ones belong to the region, the
  // line stays at its pixel, so that it may pass such a corner twice.
  void trace(int firstX, int firstY) {
    const int label = labelAt(firstX, firstY);
    Polygon& polygon = polygons_[static_cast<std::size_t>(polygonOf_[at(firstX, firstY)])];
    Ring line;
    Corner corner{firstX, firstY};
    std::size_t direction = 0;
    do {
      const Corner& step = kSteps[direction];
      const Corner& side = kSteps[(direction + 1) % 4];
      // The pixel inside the edge that begins here; the corner is its first in this direction.
      const Corner inside{corner.x + std::min({step.x, side.x, 0}),
                          corner.y + std::min({step.y, side.y, 0})};
      if (direction == 0) isTraced_[at(inside.x, inside.y)] = true;
      corner = {corner.x + step.x, corner.y + step.y};
      std::size_t turned = direction;
      if (labelAt(inside.x + step.x, inside.y + step.y) != label) {
        turned = (direction + 1) % 4;
      } else if (labelAt(inside.x + step.x - side.x, inside.y + step.y - side.y) == label) {
        turned = (direction + 3) % 4;
      }
      if (turned != direction) line.push_back(corner);
      direction = turned;
    } while (corner != Corner{firstX, firstY} || direction != 0);
    std::rotate(line.begin(), line.end() - 1, line.end());  // to begin with the first corner
    addRings(line, polygon);
  }

  // Divides a closed line at the corners that it passes twice.
  void addRings(const Ring& line, Polygon& polygon) const {
    std::unordered_map<std::size_t, std::size_t> placeOf;  // of corners in `open`
    Ring open;
    const auto add = [&](Ring ring) {
      if (doubledArea(ring) > 0) {
        polygon.outer = std::move(ring);
      } else {
        polygon.holes.push_back(std::move(ring));
      }
    };
    for (const Corner& corner : line) {
      if (isPassedTwice(corner)) {
        const std::size_t key =
            static_cast<std::size_t>(corner.y) * (static_cast<std::size_t>(labels_.nx()) + 1) +
            static_cast<std::size_t>(corner.x);
        const auto [place, isNew] = placeOf.try_emplace(key, open.size());
        if (!isNew) {
          const auto first = open.begin() + static_cast<std::ptrdiff_t>(place->second);
          add({first, open.end()});
          open.erase(first, open.end());
        }
      }
      open.push_back(corner);
    }
    add(std::move(open));
  }

  // Whether two opposite ones of the four pixels around a corner, and only they, have one label.
  bool isPassedTwice(const Corner& c) const {
    const int a = labelAt(c.x - 1, c.y - 1);
    const int b = labelAt(c.x, c.y - 1);
    const int d = labelAt(c.x - 1, c.y);
    const int e = labelAt(c.x, c.y);
    return (a == e && a != b && a != d) || (b == d && b != a && b != e);
  }

  const orva::image<int>& labels_;
  std::vector<int> polygonOf_;  // by pixel; -1 for none yet
  std::vector<bool> isTraced_;  // by pixel: its upper edge
  std::vector<Polygon> polygons_;
};

}  // namespace

std::vector<Contour> contoursOf(const orva::image<int>& labels) {
  return labels.isNull() ? std::vector<Contour>() : ContourTracer(labels).contours();
}

}  // namespace orva::formats
