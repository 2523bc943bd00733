#include "orva/voting/vote_blocks.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstring>
#include <utility>

#include "orva/util/cpu_path.h"
#include "orva/util/simd.h"
#include "orva/voting/negligible.h"

namespace orva::voting {
namespace {

constexpr std::size_t kMaxCellsOneByOne = 48;  // of a cone that votes cell by cell
// Larger cones have one list per bin, whatever the phase, to save memory. Their blocks begin at the
// apex and are not aligned.
constexpr std::size_t kMaxCellsWithPhases = 16384;
constexpr int kMasks = 1 << kLanes;

// Lane i of kLaneMasks[m] is all ones where bit i of m is set, else 0.
constexpr auto kLaneMasks = [] {
  std::array<std::array<std::int32_t, kLanes>, kMasks> masks{};
  for (int m = 0; m < kMasks; ++m) {
    for (int i = 0; i < kLanes; ++i) {
      masks[static_cast<std::size_t>(m)][static_cast<std::size_t>(i)] = (m >> i & 1) != 0 ? -1 : 0;
    }
  }
  return masks;
}();

// Adds the votes of the lanes in `mask`, and 0 to the other lanes.
[[gnu::always_inline]] inline void addMasked(const FloatVector& votes, int mask, FloatVector& sum) {
  IntVector laneMask;
  IntVector bits;
  FloatVector masked;
  std::memcpy(&laneMask, kLaneMasks[static_cast<std::size_t>(mask)].data(), sizeof laneMask);
  std::memcpy(&bits, &votes, sizeof bits);
  bits &= laneMask;
  std::memcpy(&masked, &bits, sizeof masked);
  sum += masked;
}

// The votes of a point: the same weight for every cell.
struct EqualVotes {
  float weight;

  float at(std::ptrdiff_t) const { return weight; }
  void load(std::ptrdiff_t, FloatVector& votes) const { votes = FloatVector{} + weight; }
};

// The votes of a point: shares in proportion to the votes of the pass before.
struct ProportionalVotes {
  float share;
  const float* prev;

  float at(std::ptrdiff_t cell) const { return share * prev[cell]; }
  void load(std::ptrdiff_t cell, FloatVector& votes) const {
    orva::load(prev + cell, votes);
    votes *= share;
  }
};

}  // namespace

VoteBlocks::VoteBlocks(const ConeTable& cones, int pixels)
    : cones_(cones), phases_(cones.size() > kMaxCellsWithPhases ? 1 : kLanes) {
  if (cones.size() <= kMaxCellsOneByOne) {
    maxApex_ = -1;
    return;
  }
  const int* offsets = cones.offsets(0);
  const auto [min, max] =
      std::minmax_element(offsets, offsets + cones.size() * static_cast<std::size_t>(cones.bins()));
  minApex_ = kLanes - std::min(*min, 0);
  maxApex_ = pixels - kLanes - std::max(*max, 0);
  lists_.resize(static_cast<std::size_t>(cones.bins()) * static_cast<std::size_t>(phases_));
  sorted_.resize(static_cast<std::size_t>(cones.bins()));
}

// The cell offsets of a cone in ascending order.
const std::vector<int>& VoteBlocks::sortedOffsets(int bin) {
  std::vector<int>& offsets = sorted_[static_cast<std::size_t>(bin)];
  if (offsets.empty()) {
    offsets.assign(cones_.offsets(bin), cones_.offsets(bin) + cones_.size());
    std::sort(offsets.begin(), offsets.end());
  }
  return offsets;
}

// Each round puts the pending cells into blocks; repeated cells wait for the next round.
[[gnu::noinline]] void VoteBlocks::buildList(BlockList& list, int bin, int phase) {
  list.first = blocks_.size();
  for (pending_ = sortedOffsets(bin); !pending_.empty(); std::swap(pending_, repeated_)) {
    repeated_.clear();
    const std::size_t roundBegin = blocks_.size();
    for (const int cell : pending_) {
      const int lane = (cell + phase) & (kLanes - 1);
      const int offset = cell + phase - lane;
      if (blocks_.size() == roundBegin || blocks_.back().offset != offset) {
        blocks_.push_back({offset, 0});
      }
      int& mask = blocks_.back().mask;
      if ((mask >> lane & 1) != 0) {
        repeated_.push_back(cell);
      } else {
        mask |= 1 << lane;
      }
    }
  }
  list.count = blocks_.size() - list.first;
}

template <class Votes>
void VoteBlocks::cast(const VPoint2D& p, const Votes& votes, float* acc) {
  if (p.offset < minApex_ || p.offset > maxApex_) {
    const int* offsets = cones_.offsets(p.angle);
    const std::size_t count = cones_.size();
#pragma GCC unroll 4
    for (std::size_t i = 0; i < count; ++i) {
      const std::ptrdiff_t cell = std::ptrdiff_t{p.offset} + offsets[i];
      acc[cell] += votes.at(cell);
    }
    return;
  }
  const int phase = p.offset & (phases_ - 1);
  const std::ptrdiff_t index = std::ptrdiff_t{p.angle} * phases_ + phase;
  BlockList& list = lists_[static_cast<std::size_t>(index)];
  if (list.count == 0) buildList(list, p.angle, phase);
  const Block* block = blocks_.data() + list.first;
  const Block* const end = block + list.count;
  const std::ptrdiff_t apexBlock = std::ptrdiff_t{p.offset} - phase;
  for (; block != end; ++block) {
    const std::ptrdiff_t first = apexBlock + block->offset;
    FloatVector added;
    FloatVector sum;
    votes.load(first, added);
    load(acc + first, sum);
    addMasked(added, block->mask, sum);
    store(sum, acc + first);
  }
}

void VoteBlocks::castWeights(std::span<const VPoint2D> points, float* acc) {
  onWidestPath([=, this] {
    for (const VPoint2D& p : points) {
      if (!cones_.has(p.angle)) continue;
      cast(p, EqualVotes{p.weight}, acc);
    }
  });
}

void VoteBlocks::castShares(std::span<const VPoint2D> points, std::span<const ConeStats> stats,
                            const float* prev, float* acc) {
  onWidestPath([=, this] {
    for (std::size_t i = 0; i < points.size(); ++i) {
      const VPoint2D& p = points[i];
      if (!cones_.has(p.angle) || stats[i].sum < kNegligible) continue;
      // Intended: the cells' own weights play no part.
      cast(p, ProportionalVotes{p.weight / stats[i].sum, prev}, acc);
    }
  });
}

}  // namespace orva::voting
