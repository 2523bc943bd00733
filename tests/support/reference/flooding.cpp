#include "tests/support/reference/flooding.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <set>
#include <utility>

namespace orva::test::reference {
namespace {

using Place = std::pair<int, int>;  // row, column

bool isIn(const image<int>& labels, const Place& p) {
  return p.first >= 0 && p.second >= 0 && p.first < labels.ny() && p.second < labels.nx();
}

int& at(image<int>& labels, const Place& p) {
  return labels.pixels()[p.first * labels.nx() + p.second];
}

}  // namespace

image<int> flooded(const image<float>& values, const std::vector<detect::Basin>& basins) {
  image<int> labels(values.nx(), values.ny(), 1, 1, 1);
  for (std::size_t k = 0; k < basins.size(); ++k) {
    const Place marker{
        std::clamp(static_cast<int>(std::floor(basins[k].y + 0.5F)), 0, labels.ny() - 1),
        std::clamp(static_cast<int>(std::floor(basins[k].x + 0.5F)), 0, labels.nx() - 1)};
    if (at(labels, marker) == 0) at(labels, marker) = static_cast<int>(k) + 1;
  }
  while (true) {
    // The lowest pixel that any basin may take next; strict comparisons keep the first.
    bool isAny = false;
    float lowest = 0;
    Place best;
    int bestLabel = 0;
    for (int y = 0; y < labels.ny(); ++y) {
      for (int x = 0; x < labels.nx(); ++x) {
        const Place place{y, x};
        if (at(labels, place) != 0) continue;
        for (const Place& from :
             {Place{y - 1, x}, Place{y, x - 1}, Place{y, x + 1}, Place{y + 1, x}}) {
          if (!isIn(labels, from) || at(labels, from) == 0) continue;
          const int label = at(labels, from);
          const float own = detect::floodLevel(basins[static_cast<std::size_t>(label - 1)], x, y,
                                               values.pixel(x, y));
          if (own < 0) continue;
          if (!isAny || own < lowest || (own == lowest && place == best && label < bestLabel)) {
            isAny = true;
            lowest = own;
            best = place;
            bestLabel = label;
          }
        }
      }
    }
    if (!isAny) return labels;
    at(labels, best) = bestLabel;
  }
}

image<int> withoutHoles(const image<int>& labels) {
  image<int> filled = labels.duplicate();
  for (int y = 0; y < labels.ny(); ++y) {
    for (int x = 0; x < labels.nx(); ++x) {
      if (labels.pixels()[y * labels.nx() + x] != 0) continue;
      // All background that can be reached from here, and what it meets.
      std::set<Place> region{{y, x}};
      std::set<int> around;
      bool isAtBorder = false;
      std::vector<Place> open{{y, x}};
      while (!open.empty()) {
        const Place p = open.back();
        open.pop_back();
        for (int k = 0; k < 9; ++k) {
          const Place next{p.first + k / 3 - 1, p.second + k % 3 - 1};
          if (!isIn(labels, next)) {
            isAtBorder = true;
          } else if (const int label = labels.pixels()[next.first * labels.nx() + next.second];
                     label != 0) {
            around.insert(label);
          } else if (region.insert(next).second) {
            open.push_back(next);
          }
        }
      }
      if (!isAtBorder && around.size() == 1) at(filled, {y, x}) = *around.begin();
    }
  }
  return filled;
}

}  // namespace orva::test::reference
