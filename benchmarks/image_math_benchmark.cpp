#include <string>
#include <vector>

#include "benchmarks/comparison.h"
#include "benchmarks/test_images.h"
#include "benchmarks/workloads.h"
#include "orva/image_math/image_math.h"
#include "orva/scalespace/scalespace.h"
#include "tests/support/reference/statistics.h"

namespace orva_benchmark {
namespace {

namespace im = orva::image_math;
namespace reference = orva::reference;
using orva::Image;

template <class MakeImage>
void compareTopPixels(const std::string& size, MakeImage make) {
  compare("topByPixelNumber " + size, make)
      .ours([](const Image& img) { return im::topByPixelNumber(img, 100000); })
      .reference([](const Image& img) { return reference::topByPixelNumber(img, 100000); });
  compare("topByPercentage " + size, make)
      .ours([](const Image& img) { return im::topByPercentage(img, 0.1F); })
      .reference([](const Image& img) { return reference::topByPercentage(img, 0.1F); });
  compare("meanOfTopByPercentage " + size, make)
      .ours([](const Image& img) { return im::meanOfTopByPercentage(img, 0.1F); })
      .reference([](const Image& img) { return reference::meanOfTopByPercentage(img, 0.1F); });
}

}  // namespace

void registerWorkloads() {
  compareTopPixels("byte 2048", [] { return discs(2048); });
  compareTopPixels("float 2048", [] { return floats(discs(2048)); });

  const auto list = [] {
    const Floats img = floats(discs(2048));
    return std::vector<float>(img.pixels(), img.pixels() + img.npix());
  };
  compare("meanOfTopByPercentage array 4194304", list)
      .ours([](const std::vector<float>& v) { return im::meanOfTopByPercentage(v, 0.1F); })
      .reference(
          [](const std::vector<float>& v) { return reference::meanOfTopByPercentage(v, 0.1F); });

  const auto signs = [] { return orva::scalespace::laplacian(discs(2048), 2); };
  compare("findZeros 2048", signs)
      .ours([](const Image& img) { return im::findZeros(img); })
      .reference([](const Image& img) { return reference::findZeros(img); });
  compare("findZeros of two 2048", signs)
      .ours([](const Image& img) { return im::findZeros(img, img); })
      .reference([](const Image& img) { return reference::findZeros(img, img); });
}

}  // namespace orva_benchmark
