#include "orva/voting/vote_blocks.h"

#include <algorithm>
#include <array>
#include <cstdint>

#include "orva/util/cpu_path.h"
#include "orva/util/lanes.h"
#include "orva/voting/negligible.h"

namespace orva::voting {
namespace {

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

void addMasked(float* to, const Lanes& votes, int mask) {
  IntLanes keep;
  std::memcpy(&keep, kLaneMasks[static_cast<std::size_t>(mask)].data(), sizeof keep);
  IntLanes bits;
  std::memcpy(&bits, &votes, sizeof bits);
  bits &= keep;
  Lanes kept;
  std::memcpy(&kept, &bits, sizeof kept);
  Lanes sum;
  load(to, sum);
  sum += kept;
  store(sum, to);
}

}  // namespace

VoteBlocks::VoteBlocks(const ConeTable& cones, int pixels)
    : cones_(cones), runs_(static_cast<std::size_t>(cones.bins()) * kLanes) {
  const int* offsets = cones.offsets(0);
  const auto [least, most] =
      std::minmax_element(offsets, offsets + cones.size() * static_cast<std::size_t>(cones.bins()));
  if (cones.size() == 0) return;
  lowest_ = kLanes - std::min(*least, 0);
  highest_ = pixels - kLanes - std::max(*most, 0);
}

// The blocks for an apex at `place` of its block.
[[gnu::noinline]] void VoteBlocks::makeBlocks(Run& run, int bin, int place) {
  const int* offsets = cones_.offsets(bin);
  cells_.assign(offsets, offsets + cones_.size());
  std::sort(cells_.begin(), cells_.end());
  run.first = blocks_.size();
  while (!cells_.empty()) {
    const std::size_t begin = blocks_.size();
    repeated_.clear();
    for (std::size_t i = 0; i < cells_.size(); ++i) {
      if (i > 0 && cells_[i] == cells_[i - 1]) {
        repeated_.push_back(cells_[i]);
        continue;
      }
      const int lane = (cells_[i] + place) & (kLanes - 1);
      const int offset = cells_[i] + place - lane;
      if (blocks_.size() == begin || blocks_.back().offset != offset)
        blocks_.push_back({offset, 0});
      blocks_.back().mask |= 1 << lane;
    }
    std::swap(cells_, repeated_);
  }
  run.end = blocks_.size();
}

template <class Add, class AddCell>
void VoteBlocks::castOne(const VPoint2D& p, const Add& add, const AddCell& addCell) {
  if (p.offset < lowest_ || p.offset > highest_) {
    const int* offsets = cones_.offsets(p.angle);
    for (std::size_t i = 0; i < cones_.size(); ++i) addCell(p.offset + offsets[i]);
    return;
  }
  const int place = p.offset & (kLanes - 1);
  Run& run = runs_[static_cast<std::size_t>(p.angle * kLanes + place)];
  if (run.end == 0) makeBlocks(run, p.angle, place);
  const int base = p.offset - place;
  const Block* end = blocks_.data() + run.end;
  for (const Block* b = blocks_.data() + run.first; b != end; ++b) add(base + b->offset, b->mask);
}

void VoteBlocks::castWeights(std::span<const VPoint2D> points, float* acc) {
  if (cones_.size() == 0) return;
  onWidestPath([=, this] {
    for (const VPoint2D& p : points) {
      if (!cones_.has(p.angle)) continue;
      const Lanes weight = Lanes{} + p.weight;
      castOne(
          p, [=](int at, int mask) { addMasked(acc + at, weight, mask); },
          [=, &p](int at) { acc[at] += p.weight; });
    }
  });
}

void VoteBlocks::castShares(std::span<const VPoint2D> points, std::span<const float> sums,
                            const float* prev, float* acc) {
  if (cones_.size() == 0) return;
  onWidestPath([=, this] {
    for (std::size_t i = 0; i < points.size(); ++i) {
      const VPoint2D& p = points[i];
      if (!cones_.has(p.angle) || sums[i] < kNegligible) continue;
      // Intended: the cells' own weights play no part.
      const float share = p.weight / sums[i];
      const auto add = [=](int at, int mask) {
        Lanes votes;
        load(prev + at, votes);
        votes *= share;
        addMasked(acc + at, votes, mask);
      };
      castOne(p, add, [=](int at) { acc[at] += share * prev[at]; });
    }
  });
}

}  // namespace orva::voting
