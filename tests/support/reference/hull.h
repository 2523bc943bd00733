// Reference implementations of the convex hulls.
#ifndef ORVA_TESTS_SUPPORT_REFERENCE_HULL_H
#define ORVA_TESTS_SUPPORT_REFERENCE_HULL_H

#include "orva/image/image.h"

namespace reference {

// Silent: the number of regions is not printed.
void convexHull(orva::image<short>& labels, int precision);
orva::image<short> convexHull(const orva::image<unsigned char>& mask, int precision);

}  // namespace reference

#endif
