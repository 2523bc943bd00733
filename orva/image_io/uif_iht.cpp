#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <fstream>
#include <iostream>
#include <limits>

#include "orva/image_io/image_io.h"

namespace orva::image_io {
namespace {

template <std::size_t N>
using Fields = std::array<std::int32_t, N>;

template <std::size_t N>
void writeFields(std::ostream& out, const Fields<N>& fields) {
  out.write(reinterpret_cast<const char*>(fields.data()), sizeof fields);
}

// Fields past the end of the file are 0.
template <std::size_t N>
Fields<N> readFields(std::istream& in) {
  Fields<N> fields{};
  in.read(reinterpret_cast<char*>(fields.data()), sizeof fields);
  return fields;
}

void writePixels(std::ostream& out, const Image& img) {
  const auto pixels = static_cast<std::streamsize>(std::max(img.npix(), 0));
  out.write(static_cast<const char*>(img.data()), pixels * img.pixelSize());
}

// Closes the file and reports one that is not whole.
void finish(std::ofstream& out, const char* routine, const std::string& filename) {
  out.close();
  if (out) return;
  std::cerr << "In image_io::" << routine << '\n' << "Error in writing " << filename << '\n';
}

// True when an image may have these sizes: none is negative and their product fits 32 bits.
bool isPossible(std::int64_t width, std::int64_t height, std::int64_t planes) {
  constexpr std::int64_t kMost = std::numeric_limits<std::int32_t>::max();
  if (width < 0 || height < 0 || planes < 0) return false;
  if (width == 0 || height == 0 || planes == 0) return true;
  return width * height <= kMost && width * height * planes <= kMost;
}

void reportSize(const char* routine, const std::string& filename) {
  std::cerr << "In image_io::" << routine << '\n'
            << "Error: invalid image size in " << filename << '\n';
}

// A new image with the pixels that follow; those past the end of the file are 0.
template <class T>
Image* readPixels(std::istream& in, int width, int height, int planes) {
  auto* img = new image<T>(width, height, planes, 1, 1);
  in.read(static_cast<char*>(img->data()),
          static_cast<std::streamsize>(img->npix()) * img->pixelSize());
  return img;
}

}  // namespace

// Intended: the messages of the four functions go to different streams, and those of the writers
// have no blank before the name.

void writeUIF(const std::string& filename, const Image& img) {
  std::ofstream out(filename, std::ios::binary | std::ios::trunc);
  if (!out) {
    std::cerr << "In image_io::writeUIF\n"
              << "Can not open file" << filename << '\n'
              << "Ignored.\n";
    return;
  }
  writeFields(out, Fields<5>{img.nx(), img.ny(), img.nframes(), img.pixelSize(), img.format()});
  writePixels(out, img);
  finish(out, "writeUIF", filename);
}

Image* readUIF(const std::string& filename) {
  std::ifstream in(filename, std::ios::binary);
  if (!in) {
    std::cerr << "In image_io::readUIF\n";
    std::cout << "Can not open the file " << filename << '\n';
    return nullptr;
  }
  const auto [width, height, planes, pixelSize, format] = readFields<5>(in);
  if (!isPossible(width, height, planes)) {
    reportSize("readUIF", filename);
    return nullptr;
  }
  switch (format) {
    case BYTE:
    case INT:
    case SHORT:
    case FLOAT:
      return readPixels<unsigned char>(in, width, height, planes);  // intended: bytes for all
    default:
      return nullptr;
  }
}

void writeIHT(const std::string& filename, const Image& img) {
  std::ofstream out(filename, std::ios::binary | std::ios::trunc);
  if (!out) {
    std::cout << "Can not open file" << filename << '\n';
    return;
  }
  constexpr std::int32_t kNoAddress = 0;
  writeFields(out, Fields<10>{img.ny(), img.nx(), 0, 0, img.ny(), img.nx(), img.format(),
                              img.nframes(), img.npix(), kNoAddress});
  writePixels(out, img);
  finish(out, "writeIHT", filename);
}

Image* readIHT(const std::string& filename) {
  std::ifstream in(filename, std::ios::binary);
  if (!in) {
    std::cout << "Can not open the file " << filename << '\n';
    return nullptr;
  }
  const Fields<10> fields = readFields<10>(in);  // the last, an address, is not used
  const int height = fields[0];
  const int width = fields[1];
  const int format = fields[6];
  const int planes = fields[7];
  if (!isPossible(width, height, planes)) {
    reportSize("readIHT", filename);
    return nullptr;
  }
  switch (format) {
    case BYTE:
      return readPixels<unsigned char>(in, width, height, planes);
    case INT:
      return readPixels<int>(in, width, height, planes);
    case SHORT:
      return readPixels<short>(in, width, height, planes);
    case FLOAT:
      return readPixels<float>(in, width, height, planes);
    default:
      return nullptr;
  }
}

}  // namespace orva::image_io
