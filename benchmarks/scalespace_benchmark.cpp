#include <string>

#include "benchmarks/comparison.h"
#include "benchmarks/test_images.h"
#include "benchmarks/workloads.h"
#include "orva/scalespace/scalespace.h"
#include "tests/support/reference/scalespace.h"

namespace orva_benchmark {
namespace {

namespace reference = orva::reference;
namespace scale = orva::scalespace;
using orva::Image;
using reference::Orders;

template <class MakeInput>
void compareDerivative(const std::string& workload, MakeInput make, float sigma, Orders order) {
  compare(workload, make)
      .ours(
          [=](const Image& img) { return scale::gaussian(img, sigma, order.x, order.y, order.z); })
      .reference([=](const Image& img) {
        return reference::gaussian(img, {sigma, sigma, sigma}, order);
      });
}

void comparePlaneDerivatives() {
  for (const int side : {1024, 4096}) {
    for (const int sigma : {1, 2, 5}) {
      const auto s = static_cast<float>(sigma);
      const std::string size = std::to_string(side) + " sigma " + std::to_string(sigma);
      const auto bytes = [side] { return discs(side); };
      const auto wide = [side] { return floats(discs(side)); };
      compareDerivative("dX byte " + size, bytes, s, {1, 0, 0});
      compareDerivative("dY byte " + size, bytes, s, {0, 1, 0});
      compareDerivative("dX float " + size, wide, s, {1, 0, 0});
      compareDerivative("dY float " + size, wide, s, {0, 1, 0});
    }
  }
  const auto bytes = [] { return discs(1024); };
  compareDerivative("gaussian 0 0 byte 1024 sigma 2", bytes, 2, {0, 0, 0});
  compareDerivative("dXX byte 1024 sigma 2", bytes, 2, {2, 0, 0});
  compareDerivative("dYY byte 1024 sigma 2", bytes, 2, {0, 2, 0});
  compareDerivative("dXXX byte 1024 sigma 2", bytes, 2, {3, 0, 0});
  compareDerivative("dYYY byte 1024 sigma 2", bytes, 2, {0, 3, 0});
  compareDerivative("dXY byte 1024 sigma 2", bytes, 2, {1, 1, 0});
  compare("dXXY byte 1024 sigma 2 2", bytes)
      .ours([](const Image& img) { return scale::dXXY(img, 2, 2); })
      .reference([](const Image& img) {
        return reference::gaussian(img, {2, 2, 1}, {2, 1, 0});
      });
  compare("dXYY byte 1024 sigma 2 2", bytes)
      .ours([](const Image& img) { return scale::dXYY(img, 2, 2); })
      .reference([](const Image& img) {
        return reference::gaussian(img, {2, 2, 1}, {1, 2, 0});
      });
}

void compareStackDerivatives() {
  const std::string size = " byte 64x256x256 sigma 2";
  compareDerivative("dX" + size, discStack, 2, {1, 0, 0});
  compareDerivative("dY" + size, discStack, 2, {0, 1, 0});
  compareDerivative("dZ" + size, discStack, 2, {0, 0, 1});
  compareDerivative("dZZ" + size, discStack, 2, {0, 0, 2});
  compareDerivative("dZZZ" + size, discStack, 2, {0, 0, 3});
  compareDerivative("dXZ" + size, discStack, 2, {1, 0, 1});
  compareDerivative("dYZ" + size, discStack, 2, {0, 1, 1});
  compareDerivative("dXYZ" + size, discStack, 2, {1, 1, 1});
  compareDerivative("dX float 64x256x256 sigma 2", [] { return floats(discStack()); }, 2,
                    {1, 0, 0});
  // Mixed derivatives with two sigmas smooth the third axis with sigma 1.
  const auto compareMixed = [&size](const std::string& name, auto operation,
                                    reference::Triple sigma, Orders order) {
    compare(name + size, discStack)
        .ours([operation](const Image& img) { return operation(img, 2.0F, 2.0F); })
        .reference([=](const Image& img) { return reference::gaussian(img, sigma, order); });
  };
  compareMixed("dXXZ", scale::dXXZ, {2, 1, 2}, {2, 0, 1});
  compareMixed("dXZZ", scale::dXZZ, {2, 1, 2}, {1, 0, 2});
  compareMixed("dYYZ", scale::dYYZ, {1, 2, 2}, {0, 2, 1});
  compareMixed("dYZZ", scale::dYZZ, {1, 2, 2}, {0, 1, 2});
}

template <class MakeInput>
void compareSmoothingAndFeatures(const std::string& size, MakeInput make) {
  compare("smooth " + size, make)
      .ours([](const Image& img) { return scale::smooth(img, 2, 1); })
      .reference([](const Image& img) {
        return reference::smooth(img, {2, 2, 2});
      });
  compare("gradient " + size, make)
      .ours([](const Image& img) { return scale::gradient(img, 2, 1); })
      .reference([](const Image& img) { return reference::gradient(img, 2, 1); });
  compare("laplacian " + size, make)
      .ours([](const Image& img) { return scale::laplacian(img, 2); })
      .reference([](const Image& img) { return reference::laplacian(img, 2); });
  const auto compareFeature = [&](const std::string& name, orva::FeatureType type) {
    compare(name + " " + size, make)
        .ours([type](const Image& img) { return scale::features(img, 2, type, 1); })
        .reference([type](const Image& img) { return reference::features(img, 2, type, 1); });
  };
  compareFeature("laplacian negative", orva::LAPLACIAN_NEGATIVE);
  compareFeature("laplacian positive", orva::LAPLACIAN_POSITIVE);
  compareFeature("hessian maximum", orva::HESSIAN_MAXIMUM);
  compareFeature("hessian minimum", orva::HESSIAN_MINIMUM);
  compareFeature("gradient concave", orva::GRADIENT_CONCAVE);
  compareFeature("gradient convex", orva::GRADIENT_CONVEX);
}

void compareHarmonicCuts() {
  compare("harmonicCut byte 1024 sigma 2, once", [] {
    return discs(1024);
  }).ours([](const Image& img) {
      return scale::harmonicCut(img, 2, true, 1);
    }).reference([](const Image& img) { return reference::harmonicCut(img, 2, true, 1); });
  compare("hcut byte 1024 sigma 2 4", [] {
    return discs(1024);
  }).ours([](const Image& img) {
      return scale::hcut(img, 2, 4);
    }).reference([](const Image& img) { return reference::hcut(img, 2, 4); });
  compare("reduce byte 1024 by 0.5", [] {
    return discs(1024);
  }).ours([](const Image& img) {
      return std::unique_ptr<Image>(scale::reduce(img, 0.5F, 2));
    }).reference([](const Bytes& img) { return reference::reduce(img, 0.5F, 2); });
  const auto mask = std::make_shared<Bytes>(discMask(1024));
  compareInPlace("laplaceEquation 1024 discs", [] {
    return floats(discs(1024));
  }).ours([mask](Floats& f) {
      scale::laplaceEquation(f, *mask);
    }).reference([mask](Floats& f) { reference::laplaceEquation(f, *mask); });
}

struct Gradient {
  Floats y;
  Floats x;
};

Gradient gradientImages() {
  const Bytes img = discs(1024);
  return {scale::dY(img, 2), scale::dX(img, 2)};
}

void comparePixelwise() {
  compare("gradient of two 1024", gradientImages)
      .ours([](const Gradient& g) { return scale::gradient(g.y, g.x); })
      .reference([](const Gradient& g) { return reference::gradient(g.y, g.x); });
  compare("gradient of three 1024", gradientImages)
      .ours([](const Gradient& g) { return scale::gradient(g.y, g.x, g.y); })
      .reference([](const Gradient& g) { return reference::gradient(g.y, g.x, g.y); });
  compare("direction of two 1024", gradientImages)
      .ours([](const Gradient& g) { return scale::direction(g.y, g.x); })
      .reference([](const Gradient& g) { return reference::direction(g.y, g.x); });
  compare("angle of two 1024", gradientImages)
      .ours([](const Gradient& g) { return scale::angle(g.y, g.x); })
      .reference([](const Gradient& g) { return reference::angle(g.y, g.x); });
  compare("angleInRadian of two 1024", gradientImages)
      .ours([](const Gradient& g) { return scale::angleInRadian(g.y, g.x); })
      .reference([](const Gradient& g) { return reference::angleInRadian(g.y, g.x); });
}

}  // namespace

void registerWorkloads() {
  comparePlaneDerivatives();
  compareStackDerivatives();
  compareSmoothingAndFeatures("byte 1024 sigma 2", [] { return discs(1024); });
  compareSmoothingAndFeatures("byte 64x256x256 sigma 2", discStack);
  compareHarmonicCuts();
  comparePixelwise();
}

}  // namespace orva_benchmark
