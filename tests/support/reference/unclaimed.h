// Regions that no object claims, written straight from the definition.
#ifndef ORVA_TESTS_REFERENCE_UNCLAIMED_H
#define ORVA_TESTS_REFERENCE_UNCLAIMED_H

#include <vector>

#include "orva/detect/unclaimed.h"

namespace orva::test::reference {

// As detect::labelUnclaimed().
std::vector<detect::Object> labelUnclaimed(const image<float>& plane, image<int>& labels);

}  // namespace orva::test::reference

#endif
