// Images from the bytes of an input: a few bytes choose what makes their pixels.
#ifndef ORVA_TESTS_FUZZ_OPERATIONS_PICTURES_H
#define ORVA_TESTS_FUZZ_OPERATIONS_PICTURES_H

#include <memory>

#include "orva/image/image.h"
#include "tests/fuzz/operations/parameters.h"

namespace orva::test {

// One value or two, bytes of the input over and over, ramps, discs, noise, odd values.
template <class T>
image<T> takePicture(Input& in, const Shape& shape);

// Most often of 0 and 255 only.
image<unsigned char> takeMask(Input& in, const Shape& shape);

// Labels from below 0 up to `max`.
image<short> takeLabels(Input& in, const Shape& shape, int max);

// Calls visit() with an image of one of the six pixel types.
template <class Visit>
void withPicture(Input& in, const Shape& shape, Visit visit) {
  switch (in.between(0, 5)) {
    case 0:
      return visit(takePicture<unsigned char>(in, shape));
    case 1:
      return visit(takePicture<float>(in, shape));
    case 2:
      return visit(takePicture<short>(in, shape));
    case 3:
      return visit(takePicture<int>(in, shape));
    case 4:
      return visit(takePicture<unsigned int>(in, shape));
    default:
      return visit(takePicture<Rgb>(in, shape));
  }
}

// Of one of these types, or one that is no image<T>.
std::unique_ptr<Image> takeAnyPicture(Input& in, const Shape& shape);

// An image with pixels that is no image<T>: of unsigned shorts or of wider colour.
std::unique_ptr<Image> takeWidePicture(Input& in, const Shape& shape);

// Colour with alpha, which has no form in floats.
std::unique_ptr<Image> takeAlphaPicture(Input& in, const Shape& shape);

}  // namespace orva::test

#endif
