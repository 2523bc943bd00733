// The passes of chamfer distances, for the distance transform and for propagation. For the
// library's own sources; not installed.
//
// G. Borgefors, Distance transformations in digital images, Computer Vision, Graphics, and Image
// Processing 34, 1986.
#ifndef ORVA_BIP_CHAMFER_PASSES_H
#define ORVA_BIP_CHAMFER_PASSES_H

#include "orva/image/image.h"

namespace orva::bip {

constexpr float kUnknownDistance = 10000.0F;

enum class Pass { kForward, kBackward };

// One pass over the pixels off the border of `distance`, in place: a pixel takes the smallest sum
// of a neighbour's distance and the Euclidean length of the step to it, the first of equals in the
// order of dz, dy, dx, if that is smaller than its own. Steps whose coordinate sum is 0 belong to
// both passes; this is intended.
//
// Distances are 0 or from 1 to kUnknownDistance. Those up to 1 cannot become smaller, so the passes
// need no test that keeps them.
void chamferPass(image<float>& distance, Pass pass);

// The same, and a pixel takes the label of the neighbour with the distance.
void chamferPass(image<float>& distance, short* labels, Pass pass);

}  // namespace orva::bip

#endif
