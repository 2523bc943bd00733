// Reference implementations of the chamfer distances and of the propagation of labels.
#ifndef ORVA_TESTS_SUPPORT_REFERENCE_DISTANCE_H
#define ORVA_TESTS_SUPPORT_REFERENCE_DISTANCE_H

#include "orva/image/image.h"

namespace orva::reference {

image<float> fchamfer(const image<unsigned char>& mask);
image<float> fchamfer(const image<short>& labels);

// Distances stretched to 0..255, and complemented on demand.
image<unsigned char> chamferBytes(const image<float>& distance, bool invert);

void propagate(image<short>& labels, float maxDistance);

}  // namespace orva::reference

#endif
