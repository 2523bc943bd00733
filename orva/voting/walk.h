// Walks over the cells of cones, many points at a time; not installed.
#ifndef ORVA_VOTING_WALK_H
#define ORVA_VOTING_WALK_H

#include <cstddef>

#include "orva/util/lanes.h"

namespace orva::voting {

// What the cones of kLanes points hold. The points look in one direction.
struct Views {
  float sums[kLanes];     // of the votes, added cell by cell
  float most[kLanes];     // the largest vote above 0, or 0
  int strongest[kLanes];  // the first cell that holds it, or -1
};

// Looks from the cells at[0] .. at[kLanes - 1] of an accumulator over `count` cells.
Views look(const float* const* at, const int* offsets, std::size_t count);

// The sums alone.
void sumVotes(const float* const* at, const int* offsets, std::size_t count, float* sums);

}  // namespace orva::voting

#endif
