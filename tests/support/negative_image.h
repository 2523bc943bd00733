// An image of a class that is not the library's own.
#ifndef ORVA_TESTS_SUPPORT_NEGATIVE_IMAGE_H
#define ORVA_TESTS_SUPPORT_NEGATIVE_IMAGE_H

#include "orva/image/image.h"

namespace orva_test {

// Shows other values than it stores.
class NegativeImage : public orva::image<short> {
 public:
  explicit NegativeImage(const orva::image<short>& img) : orva::image<short>(img) {}
  using orva::image<short>::pixel;
  float pixel(int index) const override { return -orva::image<short>::pixel(index); }
};

}  // namespace orva_test

#endif
