#include <algorithm>

#include "orva/bip/bip.h"
#include "orva/bip/chamfer_steps.h"

namespace orva::bip {

void propagate(image<short>& labels, float maxDistance) {
  if (labels.isNull()) return;
  image<float> distance(labels.nx(), labels.ny(), labels.nz(), 1, 1);
  short* label = labels.pixels();
  std::transform(label, label + distance.npix(), distance.pixels(),
                 [](short k) { return k < 0 ? kUnknownDistance : 0.0F; });

  const auto follow = [label](std::ptrdiff_t i, std::ptrdiff_t from) { label[i] = label[from]; };
  // Intended: two thresholds in a plane, one in a volume. Distances are 0 or at least 1, so all act
  // alike.
  const float forward = labels.nz() < 2 ? 0.5F : 0.0F;
  chamferPass(distance, Pass::kForward, forward, follow);
  chamferPass(distance, Pass::kBackward, 0.0F, follow);

  for (int i = 0; i < distance.npix(); ++i) {
    if (distance.pixels()[i] >= maxDistance) label[i] = -1;
  }
}

}  // namespace orva::bip
