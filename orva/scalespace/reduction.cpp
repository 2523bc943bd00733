#include <cstddef>
#include <memory>

#include "orva/image/float_conversion.h"
#include "orva/image/truncate.h"
#include "orva/scalespace/scalespace.h"
#include "orva/util/parallel_for.h"

namespace orva::scalespace {

Image* reduce(const Image& img, float factor, float sigma) {
  if (img.isNull() || factor <= 0.0F) return nullptr;
  const Step step("reduction", 0, 1);
  const image<float> smoothed = smooth(img, sigma, 1.0F);
  const std::unique_ptr<Image> stored(img.clone());
  if (!stored || stored->npix() != smoothed.npix()) return nullptr;  // no clone, no float form
  parallelParts(Parts(smoothed.npix(), isOwnImage(*stored) ? kPixelsPerTask : smoothed.npix(), 64),
                [&](std::ptrdiff_t begin, std::ptrdiff_t end) {
                  for (std::ptrdiff_t i = begin; i < end; ++i) {
                    stored->setPixel(static_cast<int>(i), smoothed.pixels()[i]);
                  }
                });
  const auto reduced = [factor](int size) {
    const int n = truncateTo<int>(static_cast<float>(size) * factor);
    return n < 2 ? 1 : n;
  };
  return stored->scale(reduced(img.nx()), reduced(img.ny()), reduced(img.nframes()));
}

}  // namespace orva::scalespace
