#include <string>

#include "benchmarks/comparison.h"
#include "benchmarks/test_images.h"
#include "benchmarks/workloads.h"
#include "orva/image_io/image_io.h"
#include "tests/support/reference/image_io.h"

namespace orva_benchmark {
namespace {

namespace io = orva::image_io;
namespace reference = orva::reference;
using orva::Image;

constexpr int kSide = 2048;

template <class MakeImage>
void compareConversions(const std::string& type, MakeImage make) {
  const std::string size = " of " + type + " " + std::to_string(kSide);
  for (const bool rescale : {false, true}) {
    compare("convertToByteImage" + std::string(rescale ? " stretched" : "") + size, make)
        .ours([rescale](const Image& img) { return io::convertToByteImage(img, rescale); })
        .reference(
            [rescale](const Image& img) { return reference::convertToByteImage(img, rescale); });
  }
  compare("convertToUIntImage" + size, make)
      .ours([](const Image& img) { return io::convertToUIntImage(img); })
      .reference([](const Image& img) { return reference::converted<unsigned int>(img); });
  compare("convertToIntImage" + size, make)
      .ours([](const Image& img) { return io::convertToIntImage(img); })
      .reference([](const Image& img) { return reference::converted<int>(img); });
  compare("convertToFloatImage" + size, make)
      .ours([](const Image& img) { return io::convertToFloatImage(img); })
      .reference([](const Image& img) { return reference::converted<float>(img); });
  compare("convertToShortImage" + size, make)
      .ours([](const Image& img) { return io::convertToShortImage(img); })
      .reference([](const Image& img) { return reference::converted<short>(img); });
}

// The reference implementation returns the reversed bytes as a new string.
template <class MakeImage>
void compareByteOrder(const std::string& type, MakeImage make) {
  compareInPlace("reverse_byte_order " + type + " " + std::to_string(kSide), make)
      .ours([](Image& img) { io::reverse_byte_order(img); })
      .reference([](Image& img) {
        return reference::reversedBytes(img.format(), reference::pixelBytes(img));
      });
}

}  // namespace

void registerWorkloads() {
  const auto bytes = [] { return discs(kSide); };
  const auto shorts = [] { return labelsOf(discMask(kSide)); };
  const auto wide = [] { return floats(discs(kSide)); };
  compareConversions("byte", bytes);
  compareConversions("short", shorts);
  compareConversions("int", [] { return io::convertToIntImage(discs(kSide)); });
  compareConversions("float", wide);
  compareConversions("colour", [] { return orva::toRgbImage(discs(kSide)); });
  compareByteOrder("short", shorts);
  compareByteOrder("float", wide);
}

}  // namespace orva_benchmark
