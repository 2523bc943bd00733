// Walks over the cells of cones, several points at once; not installed.
#ifndef ORVA_VOTING_WALK_H
#define ORVA_VOTING_WALK_H

#include <span>

#include "orva/voting/circularvoting.h"
#include "orva/voting/cone_table.h"

namespace orva::voting {

// What a point sees in its cone.
struct View {
  float sum;      // of the votes, added cell by cell
  float most;     // the largest vote above 0, or 0
  int strongest;  // the first cell that holds it, or -1
};

// The views of points in an accumulator; of a point without a cone they are of no use. The
// additions of one point need not wait for those of another, so a few are taken at once; each sum
// has its own order.
void look(std::span<const VPoint2D> points, const ConeTable& cones, const float* acc, View* views);

// The sums alone, of the points with the given indices.
void sumVotes(std::span<const VPoint2D> points, std::span<const int> which, const ConeTable& cones,
              const float* acc, View* views);

}  // namespace orva::voting

#endif
