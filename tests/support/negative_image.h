// An image class other than image<T>.
#ifndef ORVA_TESTS_SUPPORT_NEGATIVE_IMAGE_H
#define ORVA_TESTS_SUPPORT_NEGATIVE_IMAGE_H

#include "orva/image/image.h"

namespace orva::test {

// pixel() returns the negative of the stored value.
class NegativeImage : public image<short> {
 public:
  explicit NegativeImage(const image<short>& img) : image<short>(img) {}
  using image<short>::pixel;
  float pixel(int index) const override { return -image<short>::pixel(index); }
};

}  // namespace orva::test

#endif
