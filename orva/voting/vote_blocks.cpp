#include "orva/voting/vote_blocks.h"

#include <algorithm>
#include <array>
#include <cstdint>

#include "orva/util/cpu_path.h"
#include "orva/util/lanes.h"
#include "orva/voting/negligible.h"

namespace orva::voting {
namespace {

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

// Adds the votes whose bit is set in the mask, and zeros.
[[gnu::always_inline]] inline void addSome(const Lanes& votes, unsigned char mask, Lanes& sum) {
  IntLanes keep;
  IntLanes bits;
  Lanes some;
  std::memcpy(&keep, kLaneMasks[mask].data(), sizeof keep);
  std::memcpy(&bits, &votes, sizeof bits);
  bits &= keep;
  std::memcpy(&some, &bits, sizeof some);
  sum += some;
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
  lowest_ = kLanes - std::min(*least, 0);
  highest_ = pixels - kLanes - std::max(*most, 0);
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
      const auto bit = static_cast<unsigned char>(1U << static_cast<unsigned>(lane));
      if (blocks_.size() == begin || blocks_.back().offset != offset) {
        blocks_.push_back({offset, 0, 0});
      }
      Block& block = blocks_.back();
      if ((block.once & bit) == 0) {
        block.once |= bit;
      } else if ((block.twice & bit) == 0) {
        block.twice |= bit;
      } else {
        repeated_.push_back(cell);
      }
    }
  }
  const auto from = blocks_.begin() + static_cast<std::ptrdiff_t>(run.first);
  std::stable_partition(from, blocks_.end(), [](const Block& b) { return b.twice != 0; });
  run.twice = run.first;
  run.end = blocks_.size();
  while (run.twice < run.end && blocks_[run.twice].twice != 0) ++run.twice;
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
  const std::ptrdiff_t list = std::ptrdiff_t{p.angle} * places_ + place;
  Run& run = runs_[static_cast<std::size_t>(list)];
  if (run.end == 0) makeBlocks(run, p.angle, place);
  const int base = p.offset - place;
  const auto add = [&]<bool Twice>(const Block& b) {
    Lanes votes;
    votesAt(base + b.offset, votes);
    float* at = acc + base + b.offset;
    Lanes sum;
    load(at, sum);
    addSome(votes, b.once, sum);
    if constexpr (Twice) addSome(votes, b.twice, sum);
    store(sum, at);
  };
  const Block* blocks = blocks_.data();
  for (std::size_t i = run.first; i < run.twice; ++i) add.template operator()<true>(blocks[i]);
  for (std::size_t i = run.twice; i < run.end; ++i) add.template operator()<false>(blocks[i]);
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
