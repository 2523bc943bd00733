// Threshold at which magnitudes, lengths and votes count as 0; not installed.
#ifndef ORVA_VOTING_NEGLIGIBLE_H
#define ORVA_VOTING_NEGLIGIBLE_H

namespace orva::voting {

// A double, as comparisons with it are made in double precision.
constexpr double kNegligible = 0.001;

}  // namespace orva::voting

#endif
