// An image of a class that is not the library's own.
#ifndef ORVA_TESTS_SUPPORT_NEGATIVE_IMAGE_H
#define ORVA_TESTS_SUPPORT_NEGATIVE_IMAGE_H

#include "orva/image/image.h"

namespace orva::test {

// Shows other values than it stores.
class NegativeImage : public image<short> {
 public:
  explicit NegativeImage(const image<short>& img) : image<short>(img) {}
  using image<short>::pixel;
  float pixel(int index) const override { return -image<short>::pixel(index); }
};

}  // namespace orva::test

#endif
