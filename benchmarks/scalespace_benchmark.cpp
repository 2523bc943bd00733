#include <string>

#include "benchmarks/comparison.h"
#include "benchmarks/pictures.h"
#include "benchmarks/workloads.h"
#include "orva/scalespace/scalespace.h"
#include "tests/support/reference/scalespace.h"

namespace orva_benchmark {
namespace {

namespace scale = orva::scalespace;
using orva::Image;
using reference::Orders;

template <class MakeInput>
void derivative(const std::string& workload, MakeInput make, float sigma, Orders order) {
  compare(workload, make)
      .ours(
          [=](const Image& img) { return scale::gaussian(img, sigma, order.x, order.y, order.z); })
      .reference([=](const Image& img) {
        return reference::gaussian(img, {sigma, sigma, sigma}, order);
      });
}

void derivativesOfPlanes() {
  for (const int side : {1024, 4096}) {
    for (const int sigma : {1, 2, 5}) {
      const auto s = static_cast<float>(sigma);
      const std::string size = std::to_string(side) + " sigma " + std::to_string(sigma);
      const auto bytes = [side] { return discs(side); };
      const auto wide = [side] { return floats(discs(side)); };
      derivative("dX byte " + size, bytes, s, {1, 0, 0});
      derivative("dY byte " + size, bytes, s, {0, 1, 0});
      derivative("dX float " + size, wide, s, {1, 0, 0});
      derivative("dY float " + size, wide, s, {0, 1, 0});
    }
  }
  const auto bytes = [] { return discs(1024); };
  derivative("gaussian 0 0 byte 1024 sigma 2", bytes, 2, {0, 0, 0});
  derivative("dXX byte 1024 sigma 2", bytes, 2, {2, 0, 0});
  derivative("dYY byte 1024 sigma 2", bytes, 2, {0, 2, 0});
  derivative("dXXX byte 1024 sigma 2", bytes, 2, {3, 0, 0});
  derivative("dYYY byte 1024 sigma 2", bytes, 2, {0, 3, 0});
  derivative("dXY byte 1024 sigma 2", bytes, 2, {1, 1, 0});
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

void derivativesOfStacks() {
  const std::string size = " byte 64x256x256 sigma 2";
  derivative("dX" + size, discStack, 2, {1, 0, 0});
  derivative("dY" + size, discStack, 2, {0, 1, 0});
  derivative("dZ" + size, discStack, 2, {0, 0, 1});
  derivative("dZZ" + size, discStack, 2, {0, 0, 2});
  derivative("dZZZ" + size, discStack, 2, {0, 0, 3});
  derivative("dXZ" + size, discStack, 2, {1, 0, 1});
  derivative("dYZ" + size, discStack, 2, {0, 1, 1});
  derivative("dXYZ" + size, discStack, 2, {1, 1, 1});
  derivative("dX float 64x256x256 sigma 2", [] { return floats(discStack()); }, 2, {1, 0, 0});
  // Mixed derivatives with two sigmas smooth the third axis with sigma 1.
  const auto mixed = [&size](const std::string& name, auto operation, reference::Triple sigma,
                             Orders order) {
    compare(name + size, discStack)
        .ours([operation](const Image& img) { return operation(img, 2.0F, 2.0F); })
        .reference([=](const Image& img) { return reference::gaussian(img, sigma, order); });
  };
  mixed("dXXZ", scale::dXXZ, {2, 1, 2}, {2, 0, 1});
  mixed("dXZZ", scale::dXZZ, {2, 1, 2}, {1, 0, 2});
  mixed("dYYZ", scale::dYYZ, {1, 2, 2}, {0, 2, 1});
  mixed("dYZZ", scale::dYZZ, {1, 2, 2}, {0, 1, 2});
}

template <class MakeInput>
void smoothed(const std::string& size, MakeInput make) {
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
  const auto mask = [&](const std::string& name, orva::FeatureType type) {
    compare(name + " " + size, make)
        .ours([type](const Image& img) { return scale::features(img, 2, type, 1); })
        .reference([type](const Image& img) { return reference::features(img, 2, type, 1); });
  };
  mask("laplacian negative", orva::LAPLACIAN_NEGATIVE);
  mask("laplacian positive", orva::LAPLACIAN_POSITIVE);
  mask("hessian maximum", orva::HESSIAN_MAXIMUM);
  mask("hessian minimum", orva::HESSIAN_MINIMUM);
  mask("gradient concave", orva::GRADIENT_CONCAVE);
  mask("gradient convex", orva::GRADIENT_CONVEX);
}

void harmonic() {
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

struct Pair {
  Floats a;
  Floats b;
};

Pair derivativePair() {
  const Bytes img = discs(1024);
  return {scale::dY(img, 2), scale::dX(img, 2)};
}

void pixelByPixel() {
  compare("gradient of two 1024", derivativePair)
      .ours([](const Pair& p) { return scale::gradient(p.a, p.b); })
      .reference([](const Pair& p) { return reference::gradient(p.a, p.b); });
  compare("gradient of three 1024", derivativePair)
      .ours([](const Pair& p) { return scale::gradient(p.a, p.b, p.a); })
      .reference([](const Pair& p) { return reference::gradient(p.a, p.b, p.a); });
  compare("direction of two 1024", derivativePair)
      .ours([](const Pair& p) { return scale::direction(p.a, p.b); })
      .reference([](const Pair& p) { return reference::direction(p.a, p.b); });
  compare("angle of two 1024", derivativePair)
      .ours([](const Pair& p) { return scale::angle(p.a, p.b); })
      .reference([](const Pair& p) { return reference::angle(p.a, p.b); });
  compare("angleInRadian of two 1024", derivativePair)
      .ours([](const Pair& p) { return scale::angleInRadian(p.a, p.b); })
      .reference([](const Pair& p) { return reference::angleInRadian(p.a, p.b); });
}

}  // namespace

void registerWorkloads() {
  derivativesOfPlanes();
  derivativesOfStacks();
  smoothed("byte 1024 sigma 2", [] { return discs(1024); });
  smoothed("byte 64x256x256 sigma 2", discStack);
  harmonic();
  pixelByPixel();
}

}  // namespace orva_benchmark
