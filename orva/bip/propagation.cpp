#include <cstddef>

#include "orva/bip/bip.h"
#include "orva/bip/chamfer_passes.h"
#include "orva/image/uninitialized_image.h"
#include "orva/util/cpu_path.h"

namespace orva::bip {

void propagate(image<short>& labels, float maxDistance) {
  if (labels.isNull()) return;
  image<float> distance = uninitializedImage<float>(labels.nx(), labels.ny(), labels.nz(), 1, 1);
  short* label = labels.pixels();
  float* d = distance.pixels();
  const std::ptrdiff_t count = distance.npix();
  onWidestPath([=] {
    ORVA_INDEPENDENT
    for (std::ptrdiff_t i = 0; i < count; ++i) d[i] = label[i] < 0 ? kUnknownDistance : 0.0F;
  });

  chamferPass(distance, label, Pass::kForward);
  chamferPass(distance, label, Pass::kBackward);

  onWidestPath([=] {
    ORVA_INDEPENDENT
    for (std::ptrdiff_t i = 0; i < count; ++i) {
      label[i] = d[i] >= maxDistance ? short{-1} : label[i];
    }
  });
}

}  // namespace orva::bip
