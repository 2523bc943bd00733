// Gathers votes under the cones of several points; not installed.
#ifndef ORVA_VOTING_GATHER_H
#define ORVA_VOTING_GATHER_H

#include <cstddef>
#include <span>

namespace orva::voting {

// A cone at its place in an accumulator.
struct PlacedCone {
  const float* apex;
  const int* offsets;  // of its cells, relative to the apex
};

// Statistics of the votes under a cone.
struct ConeStats {
  float sum;   // single-precision sum in the order of the cells
  float max;   // largest positive vote, or 0
  int argmax;  // first cell that holds it, or -1
};

// Writes the statistics of each cone of `cells` cells to stats[0], stats[1], ...
void gatherStats(std::span<const PlacedCone> cones, std::size_t cells, ConeStats* stats);

// Writes ConeStats::sum of each cone to sums[0], sums[1], ...
void gatherSums(std::span<const PlacedCone> cones, std::size_t cells, float* sums);

}  // namespace orva::voting

#endif
