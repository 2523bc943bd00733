// Image files of every format for the command's tests, written and read without the command's own
// code.
#ifndef ORVA_TESTS_APPS_IMAGE_FILES_H
#define ORVA_TESTS_APPS_IMAGE_FILES_H

#include <cstdint>
#include <filesystem>
#include <memory>
#include <ostream>
#include <string>
#include <vector>

#include "orva/image/image.h"

namespace orva::test {

// What an image file holds: the pixel type, the sizes, and the samples plane by plane and row by
// row; those of a colour pixel lie together.
struct Content {
  ImageFormat type;  // BYTE, USHORT, SHORT, INT, UINT, FLOAT or RGB
  int width;
  int height;
  int planes;
  std::vector<double> values;

  int samples() const { return type == RGB ? 3 : 1; }
  Content plane(int k) const;

  bool operator==(const Content&) const = default;
};
std::ostream& operator<<(std::ostream& out, const Content& content);

// By the extension of the name: .pgm, .ppm, .png, .tif, .iht or .uif. The format must hold
// `content`.
void writeContent(const std::filesystem::path& path, const Content& content);
bool formatHolds(const std::string& extension, const Content& content);

// By the extension of the name, .ics too. Throws for a file that is not exactly of its format.
Content readContent(const std::filesystem::path& path);

// The bytes of a file of 32-bit fields and what follows.
std::string fieldsAnd(const std::vector<std::int32_t>& fields, const std::string& rest);
std::string iht(const Content& content);
std::string uif(const Content& content);
std::string ppm(const Content& colour);

// The same pixels as an image of the library; USHORT as int.
struct AsImage {
  explicit AsImage(const Content& content);
  const Image& operator*() const { return *image_; }

 private:
  std::shared_ptr<Image> image_;
};

}  // namespace orva::test

#endif
