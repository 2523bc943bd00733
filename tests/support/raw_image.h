// Images that are no image<T>: without pixels, and with any format code.
#ifndef ORVA_TESTS_SUPPORT_RAW_IMAGE_H
#define ORVA_TESTS_SUPPORT_RAW_IMAGE_H

#include <cstring>
#include <memory>
#include <utility>
#include <vector>

#include "tests/support/images.h"

namespace orva::test {

// Has sizes but no pixels.
class BareImage : public Image {
 public:
  using Image::Image;

  Image* copy() const override { return nullptr; }
  Image* roi(const Point3D&, const Point3D&) const override { return nullptr; }
  Image* clone() const override { return nullptr; }
  Image* frame(int) const override { return nullptr; }
  Image* channel(int, int) const override { return nullptr; }
  Image* timepoint(int) const override { return nullptr; }
  Image* scale(int, int, int) const override { return nullptr; }

  void* data() const override { return nullptr; }
  int format() const override { return BYTE; }
  int pixelSize() const override { return 1; }

  float pixel(int x, int y, int z, int c, int t) const override {
    return pixel(x + nx() * (y + ny() * (z + nz() * (c + nc() * t))));
  }
  float pixel(int x, int y, int z) const override { return pixel(x, y, z, 0, 0); }
  float pixel(int x, int y) const override { return pixel(x, y, 0); }
  float pixel(const Point& p) const override { return pixel(p.x, p.y); }
  float pixel(int) const override { return 0; }

  void setPixel(int, float) override {}
  void setPixel(int, int, float) override {}
  void setPixel(int, int, int, float) override {}
  void setPixel(int, int, int, int, float) override {}
  void setPixel(int, int, int, int, int, float) override {}

  float fmin() const override { return 0; }
  float fmax() const override { return 0; }
};

// Has a format code, raw samples, and every pixel as a float. The floats are independent of the
// samples, so that a test sees which of the two was read.
class RawImage : public BareImage {
 public:
  template <class Sample>
  RawImage(const Shape& s, int format, const std::vector<Sample>& samples,
           std::vector<float> values)
      : BareImage(s.nx, s.ny, s.nz, s.nc, s.nt),
        format_(format),
        bytes_(std::make_unique<unsigned char[]>(samples.size() * sizeof(Sample))),
        values_(std::move(values)) {
    EXPECT_EQ(values_.size(), static_cast<std::size_t>(npix()));
    if (samples.empty() || values_.empty()) return;
    std::memcpy(bytes_.get(), samples.data(), samples.size() * sizeof(Sample));
    pixelSize_ = static_cast<int>(samples.size() * sizeof(Sample) / values_.size());
  }

  void* data() const override { return bytes_.get(); }
  int format() const override { return format_; }
  int pixelSize() const override { return pixelSize_; }
  using BareImage::pixel;
  float pixel(int index) const override { return values_.at(static_cast<std::size_t>(index)); }
  float fmin() const override { return *std::min_element(values_.begin(), values_.end()); }
  float fmax() const override { return *std::max_element(values_.begin(), values_.end()); }

 private:
  int format_;
  int pixelSize_ = 0;
  std::unique_ptr<unsigned char[]> bytes_;
  std::vector<float> values_;
};

// 4 x 4 zeros of any format code.
class ForeignImage : public RawImage {
 public:
  explicit ForeignImage(int format)
      : RawImage({4, 4}, format, std::vector<int>(16), std::vector<float>(16)) {}
};

}  // namespace orva::test

#endif
