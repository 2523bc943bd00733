// Reference implementations of the chamfer distances and of the propagation of labels.
#ifndef ORVA_TESTS_SUPPORT_REFERENCE_DISTANCE_H
#define ORVA_TESTS_SUPPORT_REFERENCE_DISTANCE_H

#include "orva/image/image.h"

namespace reference {

orva::image<float> fchamfer(const orva::image<unsigned char>& mask);
orva::image<float> fchamfer(const orva::image<short>& labels);

// Distances stretched to 0..255, and complemented on demand.
orva::image<unsigned char> chamferBytes(const orva::image<float>& distance, bool invert);

void propagate(orva::image<short>& labels, float maxDistance);

}  // namespace reference

#endif
