#include <string>

#include "benchmarks/contest.h"
#include "benchmarks/pictures.h"
#include "benchmarks/works.h"
#include "orva/image_io/image_io.h"
#include "tests/support/reference/image_io.h"

namespace orva_benchmark {
namespace {

namespace io = orva::image_io;
using orva::Image;

constexpr int kSide = 2048;

template <class MakeImage>
void conversions(const std::string& type, MakeImage make) {
  const std::string size = " of " + type + " " + std::to_string(kSide);
  for (const bool rescale : {false, true}) {
    contest("convertToByteImage" + std::string(rescale ? " stretched" : "") + size, make)
        .ours([rescale](const Image& img) { return io::convertToByteImage(img, rescale); })
        .twin([rescale](const Image& img) { return reference::convertToByteImage(img, rescale); });
  }
  contest("convertToUIntImage" + size, make)
      .ours([](const Image& img) { return io::convertToUIntImage(img); })
      .twin([](const Image& img) { return reference::converted<unsigned int>(img); });
  contest("convertToIntImage" + size, make)
      .ours([](const Image& img) { return io::convertToIntImage(img); })
      .twin([](const Image& img) { return reference::converted<int>(img); });
  contest("convertToFloatImage" + size, make)
      .ours([](const Image& img) { return io::convertToFloatImage(img); })
      .twin([](const Image& img) { return reference::converted<float>(img); });
  contest("convertToShortImage" + size, make)
      .ours([](const Image& img) { return io::convertToShortImage(img); })
      .twin([](const Image& img) { return reference::converted<short>(img); });
}

// The twin turns a text of bytes round into a new one.
template <class MakeImage>
void byteOrder(const std::string& type, MakeImage make) {
  contestInPlace("reverse_byte_order " + type + " " + std::to_string(kSide), make)
      .ours([](Image& img) { io::reverse_byte_order(img); })
      .twin([](Image& img) {
        return reference::reversedBytes(img.format(), reference::pixelBytes(img));
      });
}

}  // namespace

void registerWorks() {
  const auto bytes = [] { return discs(kSide); };
  const auto shorts = [] { return labelsOf(discMask(kSide)); };
  const auto wide = [] { return floats(discs(kSide)); };
  conversions("byte", bytes);
  conversions("short", shorts);
  conversions("int", [] { return io::convertToIntImage(discs(kSide)); });
  conversions("float", wide);
  conversions("colour", [] { return orva::toRgbImage(discs(kSide)); });
  byteOrder("short", shorts);
  byteOrder("float", wide);
}

}  // namespace orva_benchmark
