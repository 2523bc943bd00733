// Adds votes to an accumulator eight cells at a time; not installed.
#ifndef ORVA_VOTING_VOTE_BLOCKS_H
#define ORVA_VOTING_VOTE_BLOCKS_H

#include <cstddef>
#include <span>
#include <vector>

#include "orva/voting/circularvoting.h"
#include "orva/voting/cone_table.h"
#include "orva/voting/gather.h"

namespace orva::voting {

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
class VoteBlocks {
 public:
  // For an accumulator of `pixels` pixels. Keeps a reference to `cones`.
  VoteBlocks(const ConeTable& cones, int pixels);

  // Every point adds its weight to all cells of its cone. Points without a cone do not vote.
  void castWeights(std::span<const VPoint2D> points, float* acc);
  // Every point spreads its weight over the cells of its cone in proportion to their votes in
  // `prev`, of which stats[i].sum is the sum; none where that is negligible.
  void castShares(std::span<const VPoint2D> points, std::span<const ConeStats> stats,
                  const float* prev, float* acc);

 private:
  struct Block {
    int offset;  // relative to the block of the apex
    int mask;    // bit i is set where pixel i of the block is a cell
  };
  struct BlockList {
    std::size_t first = 0;  // index in blocks_
    std::size_t count = 0;  // 0 until the list is built
  };

  template <class Votes>
  void cast(const VPoint2D& p, const Votes& votes, float* acc);
  const std::vector<int>& sortedOffsets(int bin);
  void buildList(BlockList& list, int bin, int phase);

  const ConeTable& cones_;
  int phases_;       // with lists of their own: kLanes, or 1
  int minApex_ = 0;  // apexes from minApex_ to maxApex_ have all their blocks in the accumulator;
  int maxApex_ = 0;  // none where cones vote cell by cell
  std::vector<BlockList> lists_;  // phases_ per bin
  std::vector<Block> blocks_;
  std::vector<std::vector<int>> sorted_;  // per bin; empty until needed
  std::vector<int> pending_;              // working memory of buildList()
  std::vector<int> repeated_;
};

}  // namespace orva::voting

#endif
