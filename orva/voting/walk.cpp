#include "orva/voting/walk.h"

#include <algorithm>
#include <cstddef>

#include "orva/util/cpu_path.h"

namespace orva::voting {
namespace {

constexpr std::size_t kTogether = 4;
using Floats [[gnu::vector_size(16)]] = float;
using Ints [[gnu::vector_size(16)]] = int;

// The cells of the cones of kTogether points.
class Cells {
 public:
  template <class PointAt>
  Cells(const PointAt& pointAt, const ConeTable& cones, const float* acc) {
    for (std::size_t j = 0; j < kTogether; ++j) {
      const VPoint2D& p = pointAt(j);
      at_[j] = acc + p.offset;
      // The compiler would else keep p.offset apart and add it for every cell.
      asm("" : "+r"(at_[j]));
      offsets_[j] = cones.offsets(cones.has(p.angle) ? p.angle : 0);
    }
  }

  // Cell i of each cone.
  void read(std::size_t i, Floats& to) const {
    to = Floats{at_[0][offsets_[0][i]], at_[1][offsets_[1][i]], at_[2][offsets_[2][i]],
                at_[3][offsets_[3][i]]};
  }

 private:
  const float* at_[kTogether];
  const int* offsets_[kTogether];
};

// Calls f(i, count) for the groups i .. i + count - 1 of 0 .. n - 1.
template <class F>
void forGroups(std::size_t n, const F& f) {
  for (std::size_t i = 0; i < n; i += kTogether) f(i, std::min(kTogether, n - i));
}

}  // namespace

void look(std::span<const VPoint2D> points, const ConeTable& cones, const float* acc, View* views) {
  const std::size_t size = cones.size();
  onWidestPath([=, &cones] {
    forGroups(points.size(), [=, &cones](std::size_t first, std::size_t count) {
      const auto pointAt = [=](std::size_t j) -> const VPoint2D& {
        return points[first + std::min(j, count - 1)];
      };
      const Cells cells(pointAt, cones, acc);
      Floats sums = {};
      Floats most = {};
      Ints strongest = Ints{} - 1;
      Ints cell = {};
      for (std::size_t i = 0; i < size; ++i) {
        Floats v;
        cells.read(i, v);
        sums += v;
        const Ints larger = v > most;
        most = larger ? v : most;
        strongest = larger ? cell : strongest;
        cell += 1;
      }
      for (std::size_t j = 0; j < count; ++j) views[first + j] = {sums[j], most[j], strongest[j]};
    });
  });
}

void sumVotes(std::span<const VPoint2D> points, std::span<const int> which, const ConeTable& cones,
              const float* acc, View* views) {
  const std::size_t size = cones.size();
  onWidestPath([=, &cones] {
    forGroups(which.size(), [=, &cones](std::size_t first, std::size_t count) {
      const auto pointAt = [=](std::size_t j) -> const VPoint2D& {
        return points[static_cast<std::size_t>(which[first + std::min(j, count - 1)])];
      };
      const Cells cells(pointAt, cones, acc);
      Floats sums = {};
      for (std::size_t i = 0; i < size; ++i) {
        Floats v;
        cells.read(i, v);
        sums += v;
      }
      for (std::size_t j = 0; j < count; ++j) {
        views[static_cast<std::size_t>(which[first + j])].sum = sums[j];
      }
    });
  });
}

}  // namespace orva::voting
