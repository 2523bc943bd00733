// Adds votes to an accumulator eight cells at a time; not installed.
#ifndef ORVA_VOTING_VOTE_BLOCKS_H
#define ORVA_VOTING_VOTE_BLOCKS_H

#include <array>
#include <atomic>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>
#include <vector>

#include "orva/util/simd.h"
#include "orva/voting/circularvoting.h"
#include "orva/voting/cone_table.h"

namespace orva::voting {

// Consecutive pixels first .. end - 1 of an accumulator.
struct Band {
  std::ptrdiff_t first;
  std::ptrdiff_t end;
};

// Adds the votes of points to an accumulator, point after point.
//
// A wide cone votes in blocks: kLanes consecutive pixels of the accumulator, with a mask of those
// that are cells of the cone. The other pixels of a block get a zero added, which leaves them
// unchanged. A pixel that is a cell twice is in two blocks.
//
// Blocks begin at multiples of kLanes in the accumulator, so that a load covers the same pixels as
// an earlier store and is forwarded from it. Therefore the blocks of a cone depend on the phase of
// its apex, the position of the apex within such a block; lists are built when first needed.
//
// Narrow cones vote cell by cell: few of their cells are neighbours, and all directions have the
// same number of cells, so the loop exit predicts well.
//
// Several threads share an accumulator by bands. Each band adds the votes of all points that fall
// into it, in the order of the points, so that the sum in a cell is the same as without bands.
class VoteBlocks {
 public:
  // For an accumulator of `pixels` pixels. Keeps a reference to `cones`.
  VoteBlocks(const ConeTable& cones, int pixels);

  // Every point adds its weight to all cells of its cone. Points without a cone do not vote.
  void castWeights(std::span<const VPoint2D> points, float* acc);
  // Every point spreads its weight over the cells of its cone in proportion to their votes in
  // `prev`, of which sums[i] is the sum; none where that is negligible.
  void castShares(std::span<const VPoint2D> points, const float* sums, const float* prev,
                  float* acc);

  // In tasks: notes the lists that these points need.
  void note(std::span<const VPoint2D> points);
  // Builds the lists noted. To be called before any band votes.
  void buildNoted();
  // As above, only into a band that begins and ends at multiples of kLanes or at the end of the
  // accumulator. Points are in any order; those in raster order, if `inRasterOrder`, whose cones do
  // not reach the band take no time.
  void castWeights(std::span<const VPoint2D> points, bool inRasterOrder, const Band& band,
                   float* acc) const;
  void castShares(std::span<const VPoint2D> points, const float* sums, const float* prev,
                  bool inRasterOrder, const Band& band, float* acc) const;

 private:
  struct Block {
    int offset;  // relative to the block of the apex
    int mask;    // bit i is set where pixel i of the block is a cell
  };
  struct BlockList {
    std::uint32_t first = 0;   // index in Bin::blocks
    std::uint32_t count = 0;   // 0 until the list is built
    std::uint32_t sorted = 0;  // the first blocks, which are in ascending order of their offsets
  };
  struct Bin {
    std::array<BlockList, kLanes> lists;  // one per phase; all phases share the first where cones
                                          // are very large
    std::vector<Block> blocks;
    std::vector<int> sorted;  // the cell offsets in ascending order; empty until needed
  };
  struct Scratch {
    std::vector<int> pending;
    std::vector<int> repeated;
  };

  int phaseOf(const VPoint2D& p) const { return p.offset & (phases_ - 1); }
  bool votesInBlocks(const VPoint2D& p) const {
    return p.offset >= minApex_ && p.offset <= maxApex_;
  }
  const std::vector<int>& sortedOffsets(int bin);
  void buildList(int bin, int phase, Scratch& scratch);
  template <class Votes>
  void castByCell(const VPoint2D& p, const Votes& votes, float* acc) const;
  template <class Votes>
  void castByBlock(const VPoint2D& p, const Votes& votes, float* acc) const;
  template <class Votes>
  static void addBlocks(const Block* block, const Block* end, std::ptrdiff_t apexBlock,
                        const Votes& votes, float* acc);
  template <class Votes>
  void cast(const VPoint2D& p, const Votes& votes, float* acc);
  template <class Votes>
  void castPart(const VPoint2D& p, const Votes& votes, const Band& band, float* acc) const;
  template <class VotesOf>
  void castInBand(std::span<const VPoint2D> points, bool inRasterOrder, const Band& band,
                  float* acc, const VotesOf& votesOf) const;

  const ConeTable& cones_;
  int phases_;        // with lists of their own: kLanes, or 1
  int minApex_ = 0;   // apexes from minApex_ to maxApex_ have all their blocks in the
  int maxApex_ = -1;  // accumulator; none where cones vote cell by cell
  std::vector<Bin> bins_;
  std::unique_ptr<std::atomic<bool>[]> isNoted_;  // kLanes per bin
  Scratch scratch_;
};

}  // namespace orva::voting

#endif
