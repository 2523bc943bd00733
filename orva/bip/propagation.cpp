#include <algorithm>

#include "orva/bip/bip.h"
#include "orva/bip/chamfer_steps.h"
#include "orva/image/unset_image.h"

namespace orva::bip {

void propagate(image<short>& labels, float maxDistance) {
  if (labels.isNull()) return;
  image<float> distance = unsetImage<float>(labels.nx(), labels.ny(), labels.nz(), 1, 1);
  short* label = labels.pixels();
  std::transform(label, label + distance.npix(), distance.pixels(),
                 [](short k) { return k < 0 ? kUnknownDistance : 0.0F; });

  chamferPass(distance, label, Pass::kForward);
  chamferPass(distance, label, Pass::kBackward);

  for (int i = 0; i < distance.npix(); ++i) {
    if (distance.pixels()[i] >= maxDistance) label[i] = -1;
  }
}

}  // namespace orva::bip
