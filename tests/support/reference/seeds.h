// The edges of a level and the places that they surround, written straight from their definitions.
#ifndef ORVA_TESTS_REFERENCE_SEEDS_H
#define ORVA_TESTS_REFERENCE_SEEDS_H

#include <vector>

#include "orva/detect/seeds.h"

namespace orva::test::reference {

// As detect::edgePixels().
std::vector<detect::EdgePixel> edgePixels(const detect::ScaleLevel& level);

// As detect::seeds().
std::vector<detect::Seed> seeds(const detect::ScaleLevel& level,
                                const std::vector<detect::EdgePixel>& edges,
                                detect::Polarity polarity, detect::Band band);

}  // namespace orva::test::reference

#endif
