// Which candidates are the same object.
#ifndef ORVA_DETECT_OVERLAP_H
#define ORVA_DETECT_OVERLAP_H

#include <cstddef>
#include <vector>

#include "orva/detect/candidate.h"

namespace orva::detect {

// The share of the area of `a` that lies inside the outline of `b`, from 32 points.
float overlapShare(const Candidate& a, const Candidate& b);

// Of outlines with nearly the same centroid and radius the one of the highest path value.
std::vector<Candidate> withoutDuplicates(const std::vector<Candidate>& candidates);

// Greedy selection: in the order of descending logits (equal ones in raster order), each candidate
// of at least `minLogit` is kept unless it overlaps one that is kept already. The indices of the
// kept, in that order. Neighbours are looked up in a grid, so that the cost is proportional to the
// candidates.
std::vector<std::size_t> withoutOverlaps(const std::vector<Candidate>& candidates, double minLogit);

}  // namespace orva::detect

#endif
