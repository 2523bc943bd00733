// Masks, thresholds and distances.
#include <memory>
#include <type_traits>

#include "orva/bip/bip.h"
#include "tests/fuzz/operations/compare.h"
#include "tests/fuzz/operations/operations.h"
#include "tests/fuzz/operations/pictures.h"
#include "tests/support/reference/bip.h"
#include "tests/support/reference/distance.h"
#include "tests/support/reference/selection.h"

namespace orva::test {

void histogram(Input& in) {
  const int low = takeInt(in);
  const int high = takeInt(in);
  const Shape shape = takeShape(in);
  const auto img = takePicture<unsigned char>(in, shape);
  requireSame(bip::histogram(img, low, high), reference::histogram(img, low, high), "histogram");
}

void binaryImages(Input& in) {
  const Shape shape = takeShape(in);
  const std::unique_ptr<Image> any = takeAnyPicture(in, shape);
  requireSame(bip::isBinaryImage(*any), reference::isBinaryImage(*any),
              "isBinaryImage of any image");
  image<unsigned char> mask = takeMask(in, shape);
  requireSame(bip::isBinaryImage(mask), reference::isBinaryImage(mask), "isBinaryImage");
  image<unsigned char> expected = mask.duplicate();
  bip::reverse(mask);
  reference::reverse(expected);
  requireSame(mask, expected, "reverse");
}

void erodeAndDilate(Input& in) {
  const Shape shape = takeShape(in);
  image<unsigned char> mask = takeMask(in, shape);
  image<unsigned char> expectedMask = mask.duplicate();
  for (int n = in.between(1, 4); n > 0; --n) {
    if (takeBool(in)) {
      bip::dilate(mask);
      reference::dilate(expectedMask);
    } else {
      bip::erode(mask);
      reference::erode(expectedMask);
    }
    requireSame(mask, expectedMask, "erode or dilate of a mask");
  }
  image<short> labels = takeLabels(in, shape, 32767);
  image<short> expectedLabels = labels.duplicate();
  bip::erode(labels);
  reference::erode(expectedLabels);
  requireSame(labels, expectedLabels, "erode of labels");
}

void edge(Input& in) {
  const Shape shape = takeShape(in);
  withPicture(in, shape, []<class T>(const image<T>& img) {
    if constexpr (std::is_same_v<T, Rgb> || std::is_same_v<T, unsigned int>) {
      require(bip::edge(img).isNull(), "no edges of these pixel types");
    } else {
      requireSame(bip::edge(img), reference::edge(img), "edge");
    }
  });
}

void removeInternalStructures(Input& in) {
  const Shape shape = takeShape(in);
  image<unsigned char> mask = takeMask(in, shape);
  image<unsigned char> expected = mask.duplicate();
  bip::removeInternalStructures(mask);
  reference::removeInternalStructures(expected);
  requireSame(mask, expected, "removeInternalStructures");
}

void chamfer(Input& in) {
  const bool invert = takeBool(in);
  const int kind = in.between(0, 7);
  const Shape shape = takeShape(in);
  const auto check = [invert](const Image& img, const image<float>& expected) {
    requireSame(bip::fchamfer(img), expected, "fchamfer");
    requireSame(bip::chamfer(img, invert), reference::chamferBytes(expected, invert), "chamfer");
  };
  if (kind == 7) {
    const auto img = takePicture<float>(in, shape);
    require(bip::fchamfer(img).isNull() && bip::chamfer(img, invert).isNull(),
            "no distances of floats");
  } else if (kind % 2 == 0) {
    const image<unsigned char> mask = takeMask(in, shape);
    check(mask, reference::fchamfer(mask));
  } else {
    const image<short> labels = takeLabels(in, shape, 32767);
    check(labels, reference::fchamfer(labels));
  }
}

void propagate(Input& in) {
  // Whole numbers are distances that pixels have.
  const bool isWhole = takeBool(in);
  const float maxDistance = isWhole ? static_cast<float>(in.between(0, 6)) : takeFloat(in);
  const Shape shape = takeShape(in);
  image<short> labels = takeLabels(in, shape, 32767);
  image<short> expected = labels.duplicate();
  bip::propagate(labels, maxDistance);
  reference::propagate(expected, maxDistance);
  requireSame(labels, expected, "propagate");
}

void threshold(Input& in) {
  const float t = takeFloat(in);
  const Shape shape = takeShape(in);
  const std::unique_ptr<Image> img = takeAnyPicture(in, shape);
  requireSame(bip::threshold(*img, t), reference::threshold(*img, t), "threshold");
}

void computeThreshold(Input& in) {
  const float scale = takeSigma(in);
  const Shape shape = takeFilledShape(in);
  const std::unique_ptr<Image> img = takeAnyPicture(in, shape);
  requireSame(bip::computeThreshold(*img, scale), reference::computeThreshold(*img, scale),
              "computeThreshold");
}

}  // namespace orva::test
