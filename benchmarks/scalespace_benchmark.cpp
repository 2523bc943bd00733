#include <string>

#include "benchmarks/contest.h"
#include "benchmarks/pictures.h"
#include "benchmarks/works.h"
#include "orva/scalespace/scalespace.h"
#include "tests/support/reference/scalespace.h"

namespace orva_benchmark {
namespace {

namespace scale = orva::scalespace;
using orva::Image;
using reference::Orders;

template <class MakeInput>
void derivative(const std::string& work, MakeInput make, float sigma, Orders order) {
  contest(work, make)
      .ours(
          [=](const Image& img) { return scale::gaussian(img, sigma, order.x, order.y, order.z); })
      .twin([=](const Image& img) {
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
  contest("dXXY byte 1024 sigma 2 2", bytes)
      .ours([](const Image& img) { return scale::dXXY(img, 2, 2); })
      .twin([](const Image& img) {
        return reference::gaussian(img, {2, 2, 1}, {2, 1, 0});
      });
  contest("dXYY byte 1024 sigma 2 2", bytes)
      .ours([](const Image& img) { return scale::dXYY(img, 2, 2); })
      .twin([](const Image& img) {
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
    contest(name + size, discStack)
        .ours([operation](const Image& img) { return operation(img, 2.0F, 2.0F); })
        .twin([=](const Image& img) { return reference::gaussian(img, sigma, order); });
  };
  mixed("dXXZ", scale::dXXZ, {2, 1, 2}, {2, 0, 1});
  mixed("dXZZ", scale::dXZZ, {2, 1, 2}, {1, 0, 2});
  mixed("dYYZ", scale::dYYZ, {1, 2, 2}, {0, 2, 1});
  mixed("dYZZ", scale::dYZZ, {1, 2, 2}, {0, 1, 2});
}

template <class MakeInput>
void smoothed(const std::string& size, MakeInput make) {
  contest("smooth " + size, make)
      .ours([](const Image& img) { return scale::smooth(img, 2, 1); })
      .twin([](const Image& img) {
        return reference::smooth(img, {2, 2, 2});
      });
  contest("gradient " + size, make)
      .ours([](const Image& img) { return scale::gradient(img, 2, 1); })
      .twin([](const Image& img) { return reference::gradient(img, 2, 1); });
  contest("laplacian " + size, make)
      .ours([](const Image& img) { return scale::laplacian(img, 2); })
      .twin([](const Image& img) { return reference::laplacian(img, 2); });
  const auto mask = [&](const std::string& name, orva::FeatureType type) {
    contest(name + " " + size, make)
        .ours([type](const Image& img) { return scale::features(img, 2, type, 1); })
        .twin([type](const Image& img) { return reference::features(img, 2, type, 1); });
  };
  mask("laplacian negative", orva::LAPLACIAN_NEGATIVE);
  mask("laplacian positive", orva::LAPLACIAN_POSITIVE);
  mask("hessian maximum", orva::HESSIAN_MAXIMUM);
  mask("hessian minimum", orva::HESSIAN_MINIMUM);
  mask("gradient concave", orva::GRADIENT_CONCAVE);
  mask("gradient convex", orva::GRADIENT_CONVEX);
}

void harmonic() {
  contest("harmonicCut byte 1024 sigma 2, once", [] {
    return discs(1024);
  }).ours([](const Image& img) {
      return scale::harmonicCut(img, 2, true, 1);
    }).twin([](const Image& img) { return reference::harmonicCut(img, 2, true, 1); });
  contest("hcut byte 1024 sigma 2 4", [] {
    return discs(1024);
  }).ours([](const Image& img) {
      return scale::hcut(img, 2, 4);
    }).twin([](const Image& img) { return reference::hcut(img, 2, 4); });
  contest("reduce byte 1024 by 0.5", [] {
    return discs(1024);
  }).ours([](const Image& img) {
      return std::unique_ptr<Image>(scale::reduce(img, 0.5F, 2));
    }).twin([](const Bytes& img) { return reference::reduce(img, 0.5F, 2); });
  const auto mask = std::make_shared<Bytes>(discMask(1024));
  contestInPlace("laplaceEquation 1024 discs", [] {
    return floats(discs(1024));
  }).ours([mask](Floats& f) {
      scale::laplaceEquation(f, *mask);
    }).twin([mask](Floats& f) { reference::laplaceEquation(f, *mask); });
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
  contest("gradient of two 1024", derivativePair)
      .ours([](const Pair& p) { return scale::gradient(p.a, p.b); })
      .twin([](const Pair& p) { return reference::gradient(p.a, p.b); });
  contest("gradient of three 1024", derivativePair)
      .ours([](const Pair& p) { return scale::gradient(p.a, p.b, p.a); })
      .twin([](const Pair& p) { return reference::gradient(p.a, p.b, p.a); });
  contest("direction of two 1024", derivativePair)
      .ours([](const Pair& p) { return scale::direction(p.a, p.b); })
      .twin([](const Pair& p) { return reference::direction(p.a, p.b); });
  contest("angle of two 1024", derivativePair)
      .ours([](const Pair& p) { return scale::angle(p.a, p.b); })
      .twin([](const Pair& p) { return reference::angle(p.a, p.b); });
  contest("angleInRadian of two 1024", derivativePair)
      .ours([](const Pair& p) { return scale::angleInRadian(p.a, p.b); })
      .twin([](const Pair& p) { return reference::angleInRadian(p.a, p.b); });
}

}  // namespace

void registerWorks() {
  derivativesOfPlanes();
  derivativesOfStacks();
  smoothed("byte 1024 sigma 2", [] { return discs(1024); });
  smoothed("byte 64x256x256 sigma 2", discStack);
  harmonic();
  pixelByPixel();
}

}  // namespace orva_benchmark
