// Label images from lists of labels.
#ifndef ORVA_TESTS_DETECT_LABEL_IMAGE_H
#define ORVA_TESTS_DETECT_LABEL_IMAGE_H

#include <algorithm>
#include <vector>

#include "orva/image/image.h"

namespace orva::test {

// The labels as rows of `nx`.
inline image<int> labelImage(int nx, const std::vector<int>& labels) {
  image<int> img(nx, static_cast<int>(labels.size()) / nx, 1, 1, 1);
  std::copy(labels.begin(), labels.end(), img.pixels());
  return img;
}

// Its labels in raster order.
inline std::vector<int> labelsOf(const image<int>& img) {
  return {img.pixels(), img.pixels() + img.npix()};
}

}  // namespace orva::test

#endif
