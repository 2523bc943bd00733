#include <memory>
#include <string>

#include "benchmarks/comparison.h"
#include "benchmarks/test_images.h"
#include "benchmarks/workloads.h"
#include "tests/support/reference/image.h"

namespace orva_benchmark {
namespace {

namespace reference = orva::reference;
using orva::Image;
using orva::Point3D;
using Colour = orva::image<orva::GenericRgb<unsigned char>>;

constexpr int kSide = 2048;

template <class T>
using Owned = std::unique_ptr<orva::image<T>>;

// Conversions between pixel types.
template <class MakeImage>
void compareConversions(const std::string& type, MakeImage make) {
  const std::string size = " of " + type + " " + std::to_string(kSide);
  compare("toByteImage" + size, make)
      .ours([](const Image& img) { return orva::toByteImage(img, false); })
      .reference([](const Image& img) { return reference::toByteImage(img, false); });
  compare("toByteImage stretched" + size, make)
      .ours([](const Image& img) { return orva::toByteImage(img, true); })
      .reference([](const Image& img) { return reference::toByteImage(img, true); });
  compare("toFloatImage" + size, make)
      .ours([](const Image& img) { return orva::toFloatImage(img); })
      .reference([](const Image& img) { return reference::toFloatImage(img); });
  compare("toRgbImage" + size, make)
      .ours([](const Image& img) { return orva::toRgbImage(img); })
      .reference([](const Image& img) { return reference::toRgbImage(img); });
}

// Parts, scaled copies and extremes of a stack of 8 slices, 4 channels and 2 time points.
template <class T, class Convert>
void compareExtracts(const std::string& type, Convert convert) {
  using Typed = reference::Typed<T>;
  using Img = orva::image<T>;
  const std::string size = " " + type + " 64x256x256";
  const auto stack = [convert] {
    const orva::image<T> planes = convert(discStack());
    orva::image<T> img(256, 256, 8, 4, 2);
    std::copy_n(planes.pixels(), planes.npix(), img.pixels());
    return img;
  };
  const Point3D low(10, 20, 5);
  const Point3D high(200, 240, 50);
  compare("roi" + size, stack)
      .ours([=](const Img& img) { return Owned<T>(img.roi(low, high)); })
      .reference([=](const Img& img) { return Typed::roi(img, low, high); });
  compare("frame" + size, stack)
      .ours([](const Img& img) { return Owned<T>(img.frame(7)); })
      .reference([](const Img& img) { return Typed::frame(img, 7); });
  compare("channel" + size, stack)
      .ours([](const Img& img) { return Owned<T>(img.channel(2, 1)); })
      .reference([](const Img& img) { return Typed::channel(img, 2, 1); });
  compare("timepoint" + size, stack)
      .ours([](const Img& img) { return Owned<T>(img.timepoint(1)); })
      .reference([](const Img& img) { return Typed::timepoint(img, 1); });
  compare("scale to half" + size, stack)
      .ours([](const Img& img) { return Owned<T>(img.scale(128, 128, 32)); })
      .reference([](const Img& img) { return Typed::scale(img, 128, 128, 32); });
  compare("scale to double" + size, stack)
      .ours([](const Img& img) { return Owned<T>(img.scale(512, 512, 64)); })
      .reference([](const Img& img) { return Typed::scale(img, 512, 512, 64); });
  compare("min" + size, stack)
      .ours([](const Img& img) { return img.min(); })
      .reference([](const Img& img) { return Typed::smallest(img); });
  compare("max" + size, stack)
      .ours([](const Img& img) { return img.max(); })
      .reference([](const Img& img) { return Typed::largest(img); });
  // The reference implementations have no counterpart.
  compare("duplicate" + size, stack).ours([](const Img& img) { return img.duplicate(); });
}

}  // namespace

void registerWorkloads() {
  compareConversions("byte", [] { return discs(kSide); });
  compareConversions("short", [] { return labelsOf(discMask(kSide)); });
  compareConversions("float", [] { return floats(discs(kSide)); });
  compareConversions("colour", [] { return orva::toRgbImage(discs(kSide)); });
  compareExtracts<unsigned char>("byte", [](const Bytes& img) { return img; });
  compareExtracts<float>("float", [](const Bytes& img) { return floats(img); });

  compare("interior 2048", [] {
    return discs(kSide);
  }).ours([](const Image& img) {
      return img.interior();
    }).reference([](const Image& img) { return reference::interior(img.nx(), img.ny(), 1); });
}

}  // namespace orva_benchmark
