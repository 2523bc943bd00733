#include "orva/voting/gather.h"

#include <algorithm>

#include "orva/util/cpu_path.h"

namespace orva::voting {
namespace {

// A sum depends on its order, so the cells of one cone are added one after the other. The sums of
// different cones are independent: one cone per vector lane.
constexpr std::size_t kConesPerGroup = 4;
using Floats [[gnu::vector_size(16)]] = float;
using Ints [[gnu::vector_size(16)]] = int;

struct Sums {
  Floats sum = {};

  void add(Floats votes) { sum += votes; }
  void write(std::size_t lane, float& to) const { to = sum[lane]; }
};

struct Stats {
  Floats sum = {};
  Floats max = {};
  Ints argmax = Ints{} - 1;
  Ints cell = {};

  void add(Floats votes) {
    sum += votes;
    const Ints larger = votes > max;
    max = larger ? votes : max;
    argmax = larger ? cell : argmax;
    cell += 1;
  }
  void write(std::size_t lane, ConeStats& to) const { to = {sum[lane], max[lane], argmax[lane]}; }
};

template <class Accumulated, class Result>
void gather(std::span<const PlacedCone> cones, std::size_t cells, Result* results) {
  onWidestPath([=] {
    for (std::size_t first = 0; first < cones.size(); first += kConesPerGroup) {
      const std::size_t count = std::min(kConesPerGroup, cones.size() - first);
      // An incomplete group repeats its last cone.
      const PlacedCone a = cones[first];
      const PlacedCone b = cones[first + std::min(std::size_t{1}, count - 1)];
      const PlacedCone c = cones[first + std::min(std::size_t{2}, count - 1)];
      const PlacedCone d = cones[first + std::min(std::size_t{3}, count - 1)];
      Accumulated group;
      for (std::size_t i = 0; i < cells; ++i) {
        group.add(Floats{a.apex[a.offsets[i]], b.apex[b.offsets[i]], c.apex[c.offsets[i]],
                         d.apex[d.offsets[i]]});
      }
      for (std::size_t lane = 0; lane < count; ++lane) group.write(lane, results[first + lane]);
    }
  });
}

}  // namespace

void gatherStats(std::span<const PlacedCone> cones, std::size_t cells, ConeStats* stats) {
  gather<Stats>(cones, cells, stats);
}

void gatherSums(std::span<const PlacedCone> cones, std::size_t cells, float* sums) {
  gather<Sums>(cones, cells, sums);
}

}  // namespace orva::voting
