// Votes of a whole cone as vectors; not installed.
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
// The cells of a wide cone are kept as blocks of kLanes neighbours, with a mask of those that
// belong to it. Blocks begin at multiples of kLanes in the accumulator, so that a point's votes are
// read just as the points before stored them; so a cone has a list of blocks for each place of its
// apex in a block. The other cells of a block get a zero added, which leaves them as they are.
// Cells that a cone holds twice are in two blocks. Narrow cones vote cell by cell: they have few
// neighbours, and as many cells in every direction, so that the end of the loop over them is
// foreseen.
class VoteBlocks {
 public:
  // For accumulators of `pixels` pixels.
  VoteBlocks(const ConeTable& cones, int pixels);

  // Every point gives its weight to all cells of its cone.
  void castWeights(std::span<const VPoint2D> points, float* acc);
  // Every point divides its weight among the cells of its cone in proportion to their votes in
  // `prev`, whose sum is known; none where that is negligible.
  void castShares(std::span<const VPoint2D> points, std::span<const ConeStats> stats,
                  const float* prev, float* acc);

 private:
  struct Block {
    int offset;  // from the block of the apex
    int lanes;   // bit i for lane i
  };
  struct Run {
    std::size_t first = 0;
    std::size_t count = 0;
  };

  template <class Votes>
  void castOne(const VPoint2D& p, const Votes& votes, float* acc);
  const std::vector<int>& sortedCells(int bin);
  void makeBlocks(Run& run, int bin, int place);

  const ConeTable& cones_;
  int places_;             // of an apex in a block that have lists of their own
  int lowest_ = 0;         // apexes whose blocks all lie in the accumulator
  int highest_ = 0;        // below the lowest where there are no blocks
  std::vector<Run> runs_;  // for a bin and a place; empty until it is needed
  std::vector<Block> blocks_;
  std::vector<std::vector<int>> sorted_;  // the offsets of those cones that were needed
  std::vector<int> todo_;
  std::vector<int> repeated_;
};

}  // namespace orva::voting

#endif
