#include "orva/voting/vote_blocks.h"

#include <algorithm>
#include <array>
#include <cstdint>

#include "orva/util/cpu_path.h"
#include "orva/util/lanes.h"
#include "orva/voting/negligible.h"

namespace orva::voting {
namespace {

// Cones of so few cells vote cell by cell.
constexpr std::size_t kFewCells = 48;
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

// Adds the votes of the given lanes, and zeros.
[[gnu::always_inline]] inline void addSome(const Lanes& votes, int lanes, Lanes& sum) {
  IntLanes keep;
  IntLanes bits;
  Lanes some;
  std::memcpy(&keep, kLaneMasks[static_cast<std::size_t>(lanes)].data(), sizeof keep);
  std::memcpy(&bits, &votes, sizeof bits);
  bits &= keep;
  std::memcpy(&some, &bits, sizeof some);
  sum += some;
}

// The same weight for every cell.
struct Weight {
  float weight;

  float at(std::ptrdiff_t) const { return weight; }
  void read(std::ptrdiff_t, Lanes& votes) const { votes = Lanes{} + weight; }
};

// Shares in proportion to the votes of the pass before.
struct Shares {
  float share;
  const float* prev;

  float at(std::ptrdiff_t cell) const { return share * prev[cell]; }
  void read(std::ptrdiff_t cell, Lanes& votes) const {
    load(prev + cell, votes);
    votes *= share;
  }
};

}  // namespace

VoteBlocks::VoteBlocks(const ConeTable& cones, int pixels)
    : cones_(cones), places_(cones.size() > kManyCells ? 1 : kLanes) {
  if (cones.size() <= kFewCells) {
    highest_ = -1;
    return;
  }
  const int* offsets = cones.offsets(0);
  const auto [least, most] =
      std::minmax_element(offsets, offsets + cones.size() * static_cast<std::size_t>(cones.bins()));
  lowest_ = kLanes - std::min(*least, 0);
  highest_ = pixels - kLanes - std::max(*most, 0);
  runs_.resize(static_cast<std::size_t>(cones.bins()) * static_cast<std::size_t>(places_));
  sorted_.resize(static_cast<std::size_t>(cones.bins()));
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
    for (const int cell : todo_) {
      const int lane = (cell + place) & (kLanes - 1);
      const int offset = cell + place - lane;
      if (blocks_.size() == begin || blocks_.back().offset != offset) {
        blocks_.push_back({offset, 0});
      }
      int& lanes = blocks_.back().lanes;
      if ((lanes >> lane & 1) != 0) {
        repeated_.push_back(cell);
      } else {
        lanes |= 1 << lane;
      }
    }
  }
  run.count = blocks_.size() - run.first;
}

template <class Votes>
void VoteBlocks::castOne(const VPoint2D& p, const Votes& votes, float* acc) {
  if (p.offset < lowest_ || p.offset > highest_) {
    const int* offsets = cones_.offsets(p.angle);
    const std::size_t count = cones_.size();
#pragma GCC unroll 4
    for (std::size_t i = 0; i < count; ++i) {
      const std::ptrdiff_t cell = std::ptrdiff_t{p.offset} + offsets[i];
      acc[cell] += votes.at(cell);
    }
    return;
  }
  const int place = p.offset & (places_ - 1);
  const std::ptrdiff_t list = std::ptrdiff_t{p.angle} * places_ + place;
  Run& run = runs_[static_cast<std::size_t>(list)];
  if (run.count == 0) makeBlocks(run, p.angle, place);
  const Block* blocks = blocks_.data() + run.first;
  const Block* const end = blocks + run.count;
  const std::ptrdiff_t base = std::ptrdiff_t{p.offset} - place;
  for (; blocks != end; ++blocks) {
    const std::ptrdiff_t cell = base + blocks->offset;
    Lanes some;
    Lanes sum;
    votes.read(cell, some);
    load(acc + cell, sum);
    addSome(some, blocks->lanes, sum);
    store(sum, acc + cell);
  }
}

void VoteBlocks::castWeights(std::span<const VPoint2D> points, float* acc) {
  onWidestPath([=, this] {
    for (const VPoint2D& p : points) {
      if (!cones_.has(p.angle)) continue;
      castOne(p, Weight{p.weight}, acc);
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
      castOne(p, Shares{p.weight / stats[i].sum, prev}, acc);
    }
  });
}

}  // namespace orva::voting
