#include <cstddef>

#include "orva/bip/bip.h"
#include "orva/bip/chamfer_passes.h"
#include "orva/image/uninitialized_image.h"
#include "orva/util/cpu_path.h"
#include "orva/util/parallel_for.h"

namespace orva::bip {

void propagate(image<short>& labels, float maxDistance) {
  if (labels.isNull()) return;
  const Step all("propagation", 0, 1);
  image<float> distance = uninitializedImage<float>(labels.nx(), labels.ny(), labels.nz(), 1, 1);
  // What may be stopped works on a copy.
  const image<short> work = isCancellable() ? labels.duplicate() : labels;
  short* label = work.pixels();
  float* d = distance.pixels();
  parallelPixels(distance.npix(), [=](std::ptrdiff_t begin, std::ptrdiff_t end) {
    onWidestPath([=] {
      ORVA_INDEPENDENT
      for (std::ptrdiff_t i = begin; i < end; ++i) d[i] = label[i] < 0 ? kUnknownDistance : 0.0F;
    });
  });
  {
    const Step step("propagation", 0.05, 0.5);
    chamferPass(distance, label, Pass::kForward);
  }
  {
    const Step step("propagation", 0.5, 0.95);
    chamferPass(distance, label, Pass::kBackward);
  }
  short* to = labels.pixels();
  parallelPixels(
      distance.npix(),
      [=](std::ptrdiff_t begin, std::ptrdiff_t end) {
        onWidestPath([=] {
          ORVA_INDEPENDENT
          for (std::ptrdiff_t i = begin; i < end; ++i) {
            to[i] = d[i] >= maxDistance ? short{-1} : label[i];
          }
        });
      },
      Interruption::Off);
}

}  // namespace orva::bip
