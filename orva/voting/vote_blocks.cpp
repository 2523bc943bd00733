#include "orva/voting/vote_blocks.h"

#include <algorithm>
#include <array>
#include <cstdint>

#include "orva/util/cpu_path.h"
#include "orva/util/lanes.h"
#include "orva/voting/negligible.h"

namespace orva::voting {
namespace {

constexpr int kGroup = 4;  // blocks that are added together, none of them twice
// The lists of larger cones would take much memory; they begin their blocks at the apex.
constexpr std::size_t kManyCells = 16384;
constexpr int kMasks = 1 << kLanes;

// All bits of lane i where bit i of the index is set.
constexpr auto kLaneMasks = [] {
  std::array<std::array<std::int32_t, kLanes>, kMasks> masks{};
  for (int m = 0; m < kMasks; ++m) {
    for (int i = 0; i < kLanes; ++i) {
      masks[static_cast<std::size_t>(m)][static_cast<std::size_t>(i)] = (m >> i & 1) != 0 ? -1 : 0;
    }
  }
  return masks;
}();

void keep(int mask, Lanes& votes) {
  IntLanes kept;
  std::memcpy(&kept, kLaneMasks[static_cast<std::size_t>(mask)].data(), sizeof kept);
  IntLanes bits;
  std::memcpy(&bits, &votes, sizeof bits);
  bits &= kept;
  std::memcpy(&votes, &bits, sizeof votes);
}

}  // namespace

VoteBlocks::VoteBlocks(const ConeTable& cones, int pixels)
    : cones_(cones),
      places_(cones.size() > kManyCells ? 1 : kLanes),
      runs_(static_cast<std::size_t>(cones.bins() * places_)),
      sorted_(static_cast<std::size_t>(cones.bins())) {
  const int* offsets = cones.offsets(0);
  const auto [least, most] =
      std::minmax_element(offsets, offsets + cones.size() * static_cast<std::size_t>(cones.bins()));
  if (cones.size() == 0) return;
  constexpr int kFilling = kGroup * kLanes;
  lowest_ = kFilling - std::min(*least, 0);
  highest_ = pixels - kFilling - kLanes - std::max(*most, 0);
}

// The offsets of a cone in ascending order.
const std::vector<int>& VoteBlocks::sortedCells(int bin) {
  std::vector<int>& cells = sorted_[static_cast<std::size_t>(bin)];
  if (cells.empty()) {
    cells.assign(cones_.offsets(bin), cones_.offsets(bin) + cones_.size());
    std::sort(cells.begin(), cells.end());
  }
  return cells;
}

// The blocks for an apex at `place` of its block.
[[gnu::noinline]] void VoteBlocks::makeBlocks(Run& run, int bin, int place) {
  run.first = blocks_.size();
  for (todo_ = sortedCells(bin); !todo_.empty(); std::swap(todo_, repeated_)) {
    repeated_.clear();
    const std::size_t begin = blocks_.size();
    for (std::size_t i = 0; i < todo_.size(); ++i) {
      if (i > 0 && todo_[i] == todo_[i - 1]) {
        repeated_.push_back(todo_[i]);
        continue;
      }
      const int lane = (todo_[i] + place) & (kLanes - 1);
      const int offset = todo_[i] + place - lane;
      if (blocks_.size() == begin || blocks_.back().offset != offset)
        blocks_.push_back({offset, 0});
      blocks_.back().mask |= 1 << lane;
    }
    // Whole groups, filled up with blocks behind them that get nothing.
    while ((blocks_.size() - begin) % kGroup != 0) {
      blocks_.push_back({blocks_.back().offset + kLanes, 0});
    }
  }
  run.end = blocks_.size();
}

template <class VotesAt, class AddCell>
void VoteBlocks::castOne(const VPoint2D& p, const VotesAt& votesAt, const AddCell& addCell,
                         float* acc) {
  if (p.offset < lowest_ || p.offset > highest_) {
    const int* offsets = cones_.offsets(p.angle);
    for (std::size_t i = 0; i < cones_.size(); ++i) addCell(p.offset + offsets[i]);
    return;
  }
  const int place = p.offset & (places_ - 1);
  Run& run = runs_[static_cast<std::size_t>(p.angle * places_ + place)];
  if (run.end == 0) makeBlocks(run, p.angle, place);
  const int base = p.offset - place;
  const Block* end = blocks_.data() + run.end;
  for (const Block* b = blocks_.data() + run.first; b != end; b += kGroup) {
    Lanes sums[kGroup];
    float* at[kGroup];
#pragma GCC unroll 4
    for (int i = 0; i < kGroup; ++i) {
      at[i] = acc + base + b[i].offset;
      Lanes votes;
      votesAt(base + b[i].offset, votes);
      keep(b[i].mask, votes);
      load(at[i], sums[i]);
      sums[i] += votes;
    }
#pragma GCC unroll 4
    for (int i = 0; i < kGroup; ++i) store(sums[i], at[i]);
  }
}

void VoteBlocks::castWeights(std::span<const VPoint2D> points, float* acc) {
  if (cones_.size() == 0) return;
  onWidestPath([=, this] {
    for (const VPoint2D& p : points) {
      if (!cones_.has(p.angle)) continue;
      const Lanes weight = Lanes{} + p.weight;
      castOne(
          p, [=](int, Lanes& votes) { votes = weight; }, [=, &p](int at) { acc[at] += p.weight; },
          acc);
    }
  });
}

void VoteBlocks::castShares(std::span<const VPoint2D> points, std::span<const View> views,
                            const float* prev, float* acc) {
  if (cones_.size() == 0) return;
  onWidestPath([=, this] {
    for (std::size_t i = 0; i < points.size(); ++i) {
      const VPoint2D& p = points[i];
      if (!cones_.has(p.angle) || views[i].sum < kNegligible) continue;
      // Intended: the cells' own weights play no part.
      const float share = p.weight / views[i].sum;
      const auto votesAt = [=](int at, Lanes& votes) {
        load(prev + at, votes);
        votes *= share;
      };
      castOne(
          p, votesAt, [=](int at) { acc[at] += share * prev[at]; }, acc);
    }
  });
}

}  // namespace orva::voting
