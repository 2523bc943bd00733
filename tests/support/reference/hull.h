// Reference implementations of the convex hulls.
#ifndef ORVA_TESTS_SUPPORT_REFERENCE_HULL_H
#define ORVA_TESTS_SUPPORT_REFERENCE_HULL_H

#include "orva/image/image.h"

namespace orva::reference {

// Silent: the number of regions is not printed.
void convexHull(image<short>& labels, int precision);
image<short> convexHull(const image<unsigned char>& mask, int precision);

}  // namespace orva::reference

#endif
