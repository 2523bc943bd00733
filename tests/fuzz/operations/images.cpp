// Pixels, their types and bytes, and parts of images.
#include <cstring>
#include <memory>
#include <string>
#include <type_traits>
#include <vector>

#include "orva/image_io/image_io.h"
#include "tests/fuzz/operations/compare.h"
#include "tests/fuzz/operations/operations.h"
#include "tests/fuzz/operations/pictures.h"
#include "tests/support/reference/image_io.h"

namespace orva::test {
namespace {

template <class T>
std::unique_ptr<Image> owned(image<T>* part) {
  return std::unique_ptr<Image>(part);
}

template <class T>
void requireSamePart(image<T>* part, const typename reference::Typed<T>::Part& expected,
                     const char* operation) {
  const std::unique_ptr<Image> result = owned(part);
  requireSame<const Image*>(result.get(), expected.get(), operation);
}

// The bytes, but for those of a NaN.
template <class T>
bool isSamePixel(T a, T b) {
  if constexpr (std::is_same_v<T, float>) {
    return isSame(a, b);
  } else {
    return std::memcmp(&a, &b, sizeof a) == 0;
  }
}

void convert(const Image& img, bool scale) {
  requireSame(toByteImage(img, scale), reference::toByteImage(img, scale), "toByteImage");
  requireSame(toRgbImage(img), reference::toRgbImage(img), "toRgbImage");
  requireSame(toFloatImage(img), reference::toFloatImage(img), "toFloatImage");
  namespace io = image_io;
  requireSame(io::convertToUIntImage(img), reference::converted<unsigned int>(img),
              "convertToUIntImage");
  requireSame(io::convertToIntImage(img), reference::converted<int>(img), "convertToIntImage");
  requireSame(io::convertToFloatImage(img), reference::converted<float>(img),
              "convertToFloatImage");
  requireSame(io::convertToShortImage(img), reference::converted<short>(img),
              "convertToShortImage");
}

}  // namespace

void pixels(Input& in) {
  const float value = takeFloat(in);
  const int number = in.take<std::uint16_t>();
  const Shape shape = takeFilledShape(in);
  withPicture(in, shape, [=]<class T>(const image<T>& picture) {
    image<T> img = picture.duplicate();
    const int i = number % img.npix();
    requireSame(img.pixel(i), reference::Typed<T>::toFloat(img.pixels()[i]), "pixel");
    img.setPixel(i, value);
    require(isSamePixel(img.pixels()[i], reference::Typed<T>::fromFloat(value)),
            "setPixel as the reference");
    img.pixels()[i] = picture.pixels()[i];
    requireSame<Image>(img, picture, "setPixel of one pixel alone");
  });
}

void extremes(Input& in) {
  const Shape shape = takeFilledShape(in);
  withPicture(in, shape, []<class T>(const image<T>& img) {
    const T min = reference::Typed<T>::smallest(img);
    const T max = reference::Typed<T>::largest(img);
    require(isSamePixel(img.min(), min), "min as the reference");
    require(isSamePixel(img.max(), max), "max as the reference");
    requireSame(img.fmin(), reference::Typed<T>::toFloat(min), "fmin");
    requireSame(img.fmax(), reference::Typed<T>::toFloat(max), "fmax");
  });
}

void conversions(Input& in) {
  const bool scale = takeBool(in);
  const Shape shape = takeShape(in);
  convert(*takeAnyPicture(in, shape), scale);
}

void conversionsOfColour(Input& in) {
  const bool scale = takeBool(in);
  const bool hasAlpha = takeBool(in);
  const Shape shape = takeFilledShape(in);
  convert(hasAlpha ? *takeAlphaPicture(in, shape) : *takeWidePicture(in, shape), scale);
}

void byteOrder(Input& in) {
  const bool inOrder = takeBool(in);
  const bool hasAlpha = in.between(0, 15) == 15;
  const Shape shape = takeFilledShape(in);
  const std::unique_ptr<Image> img =
      hasAlpha ? takeAlphaPicture(in, shape) : takeAnyPicture(in, shape);
  const std::string before = reference::pixelBytes(*img);
  const std::string reversed = reference::reversedBytes(img->format(), before);
  image_io::adjust_byte_order_for_write(*img);
  require(reference::pixelBytes(*img) == before, "no other byte order for writing");
  image_io::adjust_byte_order_for_read(*img, inOrder);
  require(reference::pixelBytes(*img) == (inOrder ? before : reversed), "a byte order for reading");
  if (inOrder) image_io::reverse_byte_order(*img);
  require(reference::pixelBytes(*img) == reversed, "reverse_byte_order as the reference");
}

void scale(Input& in) {
  const int sx = in.between(-1, 70);
  const int sy = in.between(-1, 70);
  const int sz = in.between(-1, 6);
  const Shape shape = takeFilledShape(in);
  withPicture(in, shape, [=]<class T>(const image<T>& img) {
    requireSamePart(img.scale(sx, sy, sz), reference::Typed<T>::scale(img, sx, sy, sz), "scale");
  });
}

void parts(Input& in) {
  std::vector<int> bounds;
  for (int k = 0; k < 6; ++k) bounds.push_back(takeInt(in));
  const int f = in.between(-1, 5);
  const int c = in.between(-1, 3);
  const int t = in.between(-1, 3);
  const Shape shape = takeShape(in);
  withPicture(in, shape, [&]<class T>(const image<T>& img) {
    const Point3D first(bounds[0], bounds[1], bounds[2]);
    const Point3D last(bounds[3], bounds[4], bounds[5]);
    requireSamePart(img.roi(first, last), reference::Typed<T>::roi(img, first, last), "roi");
    requireSamePart(img.frame(f), reference::Typed<T>::frame(img, f), "frame");
    requireSamePart(img.channel(c, t), reference::Typed<T>::channel(img, c, t), "channel");
    requireSamePart(img.timepoint(t), reference::Typed<T>::timepoint(img, t), "timepoint");
    requireSamePart(img.clone(), std::make_unique<image<T>>(img), "clone");
    requireSamePart(img.copy(), std::make_unique<image<T>>(img), "copy");

    const Roi rectangle(bounds[0], bounds[1], bounds[3], bounds[4]);
    const std::unique_ptr<Image> sub(rectangle.getSubImage(img));
    const auto expected = reference::Typed<T>::roi(img, Point3D(bounds[0], bounds[1], 0),
                                                   Point3D(bounds[3], bounds[4], 0));
    requireSame<const Image*>(sub.get(), expected.get(), "getSubImage");
  });
}

void interior(Input& in) {
  const Shape s = takeShape(in);
  const image<unsigned char> img = blank<unsigned char>(s);
  const int frames = s.nz * s.nc * s.nt;
  require(img.interior() == reference::interior(s.nx, s.ny, frames), "interior as the reference");
  require(Image::interior(s.nx, s.ny, s.nz) == reference::interior(s.nx, s.ny, s.nz),
          "interior of three sizes as the reference");
}

}  // namespace orva::test
