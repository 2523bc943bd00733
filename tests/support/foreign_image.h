// An image of a class that the library does not know.
#ifndef ORVA_TESTS_SUPPORT_FOREIGN_IMAGE_H
#define ORVA_TESTS_SUPPORT_FOREIGN_IMAGE_H

#include "orva/image/image.h"

namespace orva_test {

// An image of 4 x 4 zeros that is no image<T>, whatever format it claims.
class ForeignImage : public orva::Image {
 public:
  explicit ForeignImage(int format) : Image(4, 4, 1, 1, 1), format_(format) {}

  Image* copy() const override { return nullptr; }
  Image* roi(const orva::Point3D&, const orva::Point3D&) const override { return nullptr; }
  Image* clone() const override { return nullptr; }
  Image* frame(int) const override { return nullptr; }
  Image* channel(int, int) const override { return nullptr; }
  Image* timepoint(int) const override { return nullptr; }
  Image* scale(int, int, int) const override { return nullptr; }
  void* data() const override { return const_cast<int*>(zeros_); }
  int format() const override { return format_; }
  int pixelSize() const override { return 4; }
  float pixel(int, int, int, int, int) const override { return 0.0F; }
  float pixel(int, int, int) const override { return 0.0F; }
  float pixel(int, int) const override { return 0.0F; }
  float pixel(const orva::Point&) const override { return 0.0F; }
  float pixel(int) const override { return 0.0F; }
  void setPixel(int, float) override {}
  void setPixel(int, int, float) override {}
  void setPixel(int, int, int, float) override {}
  void setPixel(int, int, int, int, float) override {}
  void setPixel(int, int, int, int, int, float) override {}
  float fmin() const override { return 0.0F; }
  float fmax() const override { return 0.0F; }

 private:
  int format_;
  int zeros_[16] = {};
};

}  // namespace orva_test

#endif
