// Reference implementations of the operations of orva/image_io: files as strings of bytes, parsed
// front to back. Bytes past the end of a string read as 0.
#ifndef ORVA_TESTS_SUPPORT_REFERENCE_IMAGE_IO_H
#define ORVA_TESTS_SUPPORT_REFERENCE_IMAGE_IO_H

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "tests/support/reference/image.h"

namespace orva::reference {

// With all frames as planes, each pixel by way of a float.
template <class T>
image<T> converted(const Image& img) {
  if (img.npix() == 0) return {0, 1, 1, 1, 1};
  image<T> result(img.nx(), img.ny(), img.nz() * img.nc() * img.nt(), 1, 1);
  for (int i = 0; i < img.npix(); ++i) {
    result.pixels()[i] = Typed<T>::fromFloat(img.pixel(i));
  }
  return result;
}

// The bytes of pixels of this format with the bytes of each sample reversed.
std::string reversedBytes(int format, const std::string& bytes);

// The machine's own bytes of a number.
std::string int32Bytes(int v);
// The pixels as they lie in memory.
std::string pixelBytes(const Image& img);

std::string fileUIF(const Image& img);
// With an address of 0.
std::string fileIHT(const Image& img);

// The content of a file: an image, nothing, or sizes that no image may have.
struct RawRead {
  std::unique_ptr<Image> img;
  bool badSizes = false;
};
RawRead readUIF(const std::string& content);
RawRead readIHT(const std::string& content);

struct StackCount {
  int count = -1;
  std::string printed;
};
StackCount stackCount(const std::string& content);

struct IcsHeader {
  int result = 0;
  std::optional<std::string> dataset;
  std::optional<std::string> type;
  int x = 0;
  int y = 0;
  int z = 1;
  int c = 0;
  int t = 0;
  int bigEndian = 1;
};
IcsHeader icsHeader(const std::string& content);

}  // namespace orva::reference

#endif
