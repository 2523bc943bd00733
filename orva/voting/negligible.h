// Up to this, a magnitude, a sum of votes or a length counts as 0. Not installed.
#ifndef ORVA_VOTING_NEGLIGIBLE_H
#define ORVA_VOTING_NEGLIGIBLE_H

namespace orva::voting {

constexpr double kNegligible = 0.001;

}  // namespace orva::voting

#endif
