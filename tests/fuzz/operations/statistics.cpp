// Numbers from brightness.
#include "tests/support/reference/statistics.h"

#include <algorithm>
#include <memory>
#include <vector>

#include "orva/image_math/image_math.h"
#include "tests/fuzz/operations/compare.h"
#include "tests/fuzz/operations/operations.h"
#include "tests/fuzz/operations/pictures.h"

namespace orva::test {
namespace {

// 0 .. 1 or a NaN: any other ends the process.
float takeShare(Input& in) {
  const float any = takeFloat(in);
  return any < 0.0F || any > 1.0F ? static_cast<float>(in.between(0, 200)) / 200.0F : any;
}

}  // namespace

void topOfImage(Input& in) {
  namespace library = image_math;
  const float share = takeShare(in);
  const int number = in.take<std::uint16_t>();
  const Shape shape = takeFilledShape(in);
  const std::unique_ptr<Image> img = takeAnyPicture(in, shape);
  const int n = number % img->npix();
  requireSame(library::topByPixelNumber(*img, n), reference::topByPixelNumber(*img, n),
              "topByPixelNumber");
  requireSame(library::meanOfTopByPercentage(*img, share),
              reference::meanOfTopByPercentage(*img, share), "meanOfTopByPercentage of an image");
  // All pixels are out of range.
  if (share * static_cast<float>(img->npix()) >= static_cast<float>(img->npix())) return;
  requireSame(library::topByPercentage(*img, share), reference::topByPercentage(*img, share),
              "topByPercentage");
}

void topOfArray(Input& in) {
  const float share = takeShare(in);
  const int count = in.between(0, 200);
  std::vector<float> values;
  if (count > 0) values = pixelsOf(takePicture<float>(in, {count, 1}));
  requireSame(image_math::meanOfTopByPercentage(values, share),
              reference::meanOfTopByPercentage(values, share), "meanOfTopByPercentage of an array");
}

void findZeros(Input& in) {
  using image_math::findZeros;
  const Shape shape = takeShape(in);
  const Shape other = takeOther(in, shape);
  const std::unique_ptr<Image> a = takeAnyPicture(in, shape);
  const std::unique_ptr<Image> b = takeAnyPicture(in, other);
  requireSame(findZeros(*a), reference::findZeros(*a), "findZeros");
  requireSame(findZeros(*a, *b), reference::findZeros(*a, *b), "findZeros of two images");
}

}  // namespace orva::test
