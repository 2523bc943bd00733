// Label images grown from markers, written straight from the definition.
#ifndef ORVA_TESTS_REFERENCE_FLOODING_H
#define ORVA_TESTS_REFERENCE_FLOODING_H

#include <vector>

#include "orva/detect/flooding.h"

namespace orva::test::reference {

// As detect::flooded().
image<int> flooded(const image<float>& values, const std::vector<detect::Basin>& basins);

// As detect::fillHoles().
image<int> withoutHoles(const image<int>& labels);

}  // namespace orva::test::reference

#endif
