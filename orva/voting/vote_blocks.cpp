#include "orva/voting/vote_blocks.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cstdint>
#include <cstring>
#include <utility>

#include "orva/util/cpu_path.h"
#include "orva/util/parallel_for.h"
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

// The first of `count` elements in ascending order, from `begin` on, that is not below `value`. At
// the edges of a band branches would be mispredicted half the time.
template <class T, class ValueOf>
const T* firstFrom(const T* begin, std::size_t count, std::ptrdiff_t value, ValueOf valueOf) {
  while (count > 0) {
    const std::size_t half = count / 2;
    const bool isBelow = valueOf(begin[half]) < value;
    begin = isBelow ? begin + half + 1 : begin;
    count = isBelow ? count - half - 1 : half;
  }
  return begin;
}

}  // namespace

VoteBlocks::VoteBlocks(const ConeTable& cones, int pixels)
    : cones_(cones), phases_(cones.size() > kMaxCellsWithPhases ? 1 : kLanes) {
  const auto bins = static_cast<std::size_t>(cones.bins());
  bins_.resize(bins);
  if (cones.size() <= kMaxCellsOneByOne) return;
  const ConeTable::Extent extent = cones.extent();
  minApex_ = kLanes - extent.min;
  maxApex_ = pixels - kLanes - extent.max;
  isNoted_ = std::make_unique<std::atomic<bool>[]>(bins * kLanes);
}

const std::vector<int>& VoteBlocks::sortedOffsets(int bin) {
  std::vector<int>& sorted = bins_[static_cast<std::size_t>(bin)].sorted;
  if (sorted.empty()) {
    sorted.assign(cones_.offsets(bin), cones_.offsets(bin) + cones_.size());
    std::sort(sorted.begin(), sorted.end());
  }
  return sorted;
}

// Each round puts the pending cells into blocks; repeated cells wait for the next round.
[[gnu::noinline]] void VoteBlocks::buildList(int bin, int phase, Scratch& scratch) {
  const std::vector<int>& sorted = sortedOffsets(bin);
  auto& [lists, blocks, unused] = bins_[static_cast<std::size_t>(bin)];
  const std::size_t first = blocks.size();
  std::size_t firstRound = 0;
  auto& [pending, repeated] = scratch;
  for (pending = sorted; !pending.empty(); std::swap(pending, repeated)) {
    repeated.clear();
    const std::size_t roundBegin = blocks.size();
    for (const int cell : pending) {
      const int lane = (cell + phase) & (kLanes - 1);
      const int offset = cell + phase - lane;
      if (blocks.size() == roundBegin || blocks.back().offset != offset) {
        blocks.push_back({offset, 0});
      }
      int& mask = blocks.back().mask;
      if ((mask >> lane & 1) != 0) {
        repeated.push_back(cell);
      } else {
        mask |= 1 << lane;
      }
    }
    if (roundBegin == first) firstRound = blocks.size() - first;
  }
  lists[static_cast<std::size_t>(phase)] = {static_cast<std::uint32_t>(first),
                                            static_cast<std::uint32_t>(blocks.size() - first),
                                            static_cast<std::uint32_t>(firstRound)};
}

template <class Votes>
void VoteBlocks::castByCell(const VPoint2D& p, const Votes& votes, float* acc) const {
  const int* offsets = cones_.offsets(p.angle);
  const std::size_t count = cones_.size();
#pragma GCC unroll 4
  for (std::size_t i = 0; i < count; ++i) {
    const std::ptrdiff_t cell = std::ptrdiff_t{p.offset} + offsets[i];
    acc[cell] += votes.at(cell);
  }
}

template <class Votes>
void VoteBlocks::castByBlock(const VPoint2D& p, const Votes& votes, float* acc) const {
  const Bin& bin = bins_[static_cast<std::size_t>(p.angle)];
  const int phase = phaseOf(p);
  const BlockList& list = bin.lists[static_cast<std::size_t>(phase)];
  const Block* const block = bin.blocks.data() + list.first;
  addBlocks(block, block + list.count, std::ptrdiff_t{p.offset} - phase, votes, acc);
}

template <class Votes>
void VoteBlocks::addBlocks(const Block* block, const Block* end, std::ptrdiff_t apexBlock,
                           const Votes& votes, float* acc) {
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

template <class Votes>
void VoteBlocks::cast(const VPoint2D& p, const Votes& votes, float* acc) {
  if (!votesInBlocks(p)) return castByCell(p, votes, acc);
  const int phase = phaseOf(p);
  const Bin& bin = bins_[static_cast<std::size_t>(p.angle)];
  if (bin.lists[static_cast<std::size_t>(phase)].count == 0) buildList(p.angle, phase, scratch_);
  castByBlock(p, votes, acc);
}

void VoteBlocks::castWeights(std::span<const VPoint2D> points, float* acc) {
  onWidestPath([=, this] {
    for (const VPoint2D& p : points) {
      if (!cones_.has(p.angle)) continue;
      cast(p, EqualVotes{p.weight}, acc);
    }
  });
}

void VoteBlocks::castShares(std::span<const VPoint2D> points, const float* sums, const float* prev,
                            float* acc) {
  onWidestPath([=, this] {
    for (std::size_t i = 0; i < points.size(); ++i) {
      const VPoint2D& p = points[i];
      if (!cones_.has(p.angle) || sums[i] < kNegligible) continue;
      // Intended: the cells' own weights play no part.
      cast(p, ProportionalVotes{p.weight / sums[i], prev}, acc);
    }
  });
}

void VoteBlocks::note(std::span<const VPoint2D> points) {
  if (!isNoted_) return;
  for (const VPoint2D& p : points) {
    if (!cones_.has(p.angle)) continue;
    std::atomic<bool>& isNoted =
        isNoted_[static_cast<std::size_t>(p.angle) * kLanes + static_cast<std::size_t>(phaseOf(p))];
    if (!isNoted.load(std::memory_order_relaxed)) isNoted.store(true, std::memory_order_relaxed);
  }
}

void VoteBlocks::buildNoted() {
  constexpr std::ptrdiff_t kBinsPerTask = 8;
  const auto bins = static_cast<std::ptrdiff_t>(bins_.size());
  Workspaces<Scratch> workspaces;
  parallelParts(Parts(bins, kBinsPerTask), [&](std::ptrdiff_t begin, std::ptrdiff_t end) {
    if (!isNoted_) {
      for (std::ptrdiff_t bin = begin; bin < end; ++bin) sortedOffsets(static_cast<int>(bin));
      return;
    }
    const auto scratch = workspaces.take();
    for (std::ptrdiff_t i = begin * kLanes; i < end * kLanes; ++i) {
      const int bin = static_cast<int>(i / kLanes);
      const int phase = static_cast<int>(i % kLanes);
      const Bin& lists = bins_[static_cast<std::size_t>(bin)];
      const bool isBuilt = lists.lists[static_cast<std::size_t>(phase)].count != 0;
      if (isNoted_[static_cast<std::size_t>(i)] && !isBuilt) {
        checkpoint();
        buildList(bin, phase, *scratch);
      }
    }
  });
}

// The votes of a point whose cone is only partly in the band.
template <class Votes>
void VoteBlocks::castPart(const VPoint2D& p, const Votes& votes, const Band& band,
                          float* acc) const {
  const auto addCell = [&](std::ptrdiff_t cell) {
    if (cell >= band.first && cell < band.end) acc[cell] += votes.at(cell);
  };
  const Bin& bin = bins_[static_cast<std::size_t>(p.angle)];
  if (!isNoted_) {
    // The order of a point's votes does not matter: those for the same cell are equal.
    const std::ptrdiff_t apex = p.offset;
    const int* const begin = bin.sorted.data();
    const std::size_t count = bin.sorted.size();
    const auto offsetOfCell = [](int offset) { return std::ptrdiff_t{offset}; };
    const int* const first = firstFrom(begin, count, band.first - apex, offsetOfCell);
    const int* const last = firstFrom(begin, count, band.end - apex, offsetOfCell);
    for (const int* offset = first; offset < last; ++offset) {
      acc[apex + *offset] += votes.at(apex + *offset);
    }
    return;
  }
  if (!votesInBlocks(p)) {
    const int* offsets = cones_.offsets(p.angle);
    for (std::size_t i = 0; i < cones_.size(); ++i) addCell(std::ptrdiff_t{p.offset} + offsets[i]);
    return;
  }
  const int phase = phaseOf(p);
  const BlockList& list = bin.lists[static_cast<std::size_t>(phase)];
  const Block* const begin = bin.blocks.data() + list.first;
  const Block* const sortedEnd = begin + list.sorted;
  const Block* const end = begin + list.count;
  const std::ptrdiff_t apexBlock = std::ptrdiff_t{p.offset} - phase;
  // A block that may be partly in the band.
  const auto addOne = [&](const Block& block) {
    const std::ptrdiff_t first = apexBlock + block.offset;
    if (first >= band.first && first + kLanes <= band.end) {
      addBlocks(&block, &block + 1, apexBlock, votes, acc);
    } else if (first + kLanes > band.first && first < band.end) {
      for (int lane = 0; lane < kLanes; ++lane) {
        if ((block.mask >> lane & 1) != 0) addCell(first + lane);
      }
    }
  };
  // The sorted blocks that begin in the band.
  const auto offsetOfBlock = [](const Block& block) { return std::ptrdiff_t{block.offset}; };
  const Block* const first = firstFrom(begin, list.sorted, band.first - apexBlock, offsetOfBlock);
  const Block* const last = firstFrom(begin, list.sorted, band.end - apexBlock, offsetOfBlock);
  if (first != begin) addOne(first[-1]);
  if (first != last) {
    addBlocks(first, last - 1, apexBlock, votes, acc);
    addOne(last[-1]);
  }
  std::for_each(sortedEnd, end, addOne);
}

// votesOf(i) are the votes of point i, if votesOf.has(i).
template <class VotesOf>
void VoteBlocks::castInBand(std::span<const VPoint2D> points, bool inRasterOrder, const Band& band,
                            float* acc, const VotesOf& votesOf) const {
  const auto offsetOfPoint = [](const VPoint2D& p) { return std::ptrdiff_t{p.offset}; };
  auto begin = points.begin();
  auto end = points.end();
  if (inRasterOrder) {
    const ConeTable::Extent extent = cones_.extent();
    begin = std::ranges::lower_bound(begin, end, band.first - extent.max, {}, offsetOfPoint);
    end = std::ranges::lower_bound(begin, end, band.end - extent.min, {}, offsetOfPoint);
  }
  const std::ptrdiff_t bandFirst = band.first;
  const std::ptrdiff_t bandEnd = band.end;
  constexpr std::size_t kCellsPerCheckpoint = std::size_t{1} << 20U;
  const std::size_t pointsPerCheckpoint = kCellsPerCheckpoint / (cones_.size() + 64) + 1;
  auto i = static_cast<std::size_t>(begin - points.begin());
  const auto last = static_cast<std::size_t>(end - points.begin());
  while (i < last) {
    const std::size_t stop = std::min(last, i + pointsPerCheckpoint);
    onWidestPath([=, this] {
      for (std::size_t k = i; k < stop; ++k) {
        const VPoint2D& p = points[k];
        if (!cones_.has(p.angle)) continue;
        const ConeTable::Extent extent = cones_.extent(p.angle);
        const std::ptrdiff_t min = std::ptrdiff_t{p.offset} + extent.min;
        const std::ptrdiff_t max = std::ptrdiff_t{p.offset} + extent.max;
        if (max < bandFirst || min >= bandEnd) continue;
        if (!votesOf.has(k)) continue;
        const auto votes = votesOf(k);
        // A block may reach beyond the cells in it.
        if (min - kLanes < bandFirst || max + kLanes >= bandEnd) {
          castPart(p, votes, {bandFirst, bandEnd}, acc);
        } else if (votesInBlocks(p)) {
          castByBlock(p, votes, acc);
        } else {
          castByCell(p, votes, acc);
        }
      }
    });
    i = stop;
    checkpoint();
  }
}

void VoteBlocks::castWeights(std::span<const VPoint2D> points, bool inRasterOrder, const Band& band,
                             float* acc) const {
  struct Weights {
    std::span<const VPoint2D> points;

    bool has(std::size_t /*i*/) const { return true; }
    EqualVotes operator()(std::size_t i) const { return {points[i].weight}; }
  };
  castInBand(points, inRasterOrder, band, acc, Weights{points});
}

void VoteBlocks::castShares(std::span<const VPoint2D> points, const float* sums, const float* prev,
                            bool inRasterOrder, const Band& band, float* acc) const {
  struct Shares {
    std::span<const VPoint2D> points;
    const float* sums;
    const float* prev;

    bool has(std::size_t i) const { return !(sums[i] < kNegligible); }
    ProportionalVotes operator()(std::size_t i) const { return {points[i].weight / sums[i], prev}; }
  };
  castInBand(points, inRasterOrder, band, acc, Shares{points, sums, prev});
}

}  // namespace orva::voting
