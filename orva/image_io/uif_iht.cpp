#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <fstream>
#include <iostream>
#include <limits>

#include "orva/image_io/encode.h"
#include "orva/image_io/image_io.h"
#include "orva/image_io/raw_header.h"

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
bool readFields(std::istream& in, Fields<N>& fields) {
  return static_cast<bool>(in.read(reinterpret_cast<char*>(fields.data()), sizeof fields));
}

// Closes the file and reports one that is not whole.
void finish(std::ofstream& out, const char* routine, const std::string& filename) {
  out.close();
  if (out) return;
  std::cerr << "In image_io::" << routine << '\n' << "Error in writing " << filename << '\n';
}

void reportSize(const char* routine, const std::string& filename) {
  std::cerr << "In image_io::" << routine << '\n'
            << "Error: invalid image size in " << filename << '\n';
}

template <class T>
std::unique_ptr<Image> readPixels(std::istream& in, const RawHeader& header) {
  auto img = std::make_unique<image<T>>(header.width, header.height, header.planes, 1, 1);
  in.read(static_cast<char*>(img->data()),
          static_cast<std::streamsize>(img->npix()) * img->pixelSize());
  return img;
}

}  // namespace

RawHeader readUifHeader(std::istream& in) {
  Fields<5> fields{};
  const bool isComplete = readFields(in, fields);
  return {fields[0], fields[1], fields[2], fields[4], isComplete};
}

// The last field, an address, is not used.
RawHeader readIhtHeader(std::istream& in) {
  Fields<10> fields{};
  const bool isComplete = readFields(in, fields);
  return {fields[1], fields[0], fields[7], fields[6], isComplete};
}

bool hasPossibleSizes(const RawHeader& header) {
  constexpr std::int64_t kMax = std::numeric_limits<std::int32_t>::max();
  const std::int64_t width = header.width;
  const std::int64_t height = header.height;
  const std::int64_t planes = header.planes;
  if (width < 0 || height < 0 || planes < 0) return false;
  if (width == 0 || height == 0 || planes == 0) return true;
  return width * height <= kMax && width * height * planes <= kMax;
}

int rawPixelBytes(std::int32_t format) {
  switch (format) {
    case BYTE:
      return 1;
    case SHORT:
      return 2;
    case INT:
    case FLOAT:
      return 4;
    default:
      return 0;
  }
}

std::unique_ptr<Image> readRawPixels(std::istream& in, const RawHeader& header,
                                     std::int32_t format) {
  switch (format) {
    case BYTE:
      return readPixels<unsigned char>(in, header);
    case INT:
      return readPixels<int>(in, header);
    case SHORT:
      return readPixels<short>(in, header);
    case FLOAT:
      return readPixels<float>(in, header);
    default:
      return nullptr;
  }
}

void encodePixels(std::ostream& out, const Image& img) {
  const auto pixels = static_cast<std::streamsize>(std::max(img.npix(), 0));
  out.write(static_cast<const char*>(img.data()), pixels * img.pixelSize());
}

void encodeUif(std::ostream& out, const Image& img) {
  writeFields(out, Fields<5>{img.nx(), img.ny(), img.nframes(), img.pixelSize(), img.format()});
  encodePixels(out, img);
}

void encodeIht(std::ostream& out, const Image& img) {
  constexpr std::int32_t kNoAddress = 0;
  writeFields(out, Fields<10>{img.ny(), img.nx(), 0, 0, img.ny(), img.nx(), img.format(),
                              img.nframes(), img.npix(), kNoAddress});
  encodePixels(out, img);
}

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
  encodeUif(out, img);
  finish(out, "writeUIF", filename);
}

Image* readUIF(const std::string& filename) {
  std::ifstream in(filename, std::ios::binary);
  if (!in) {
    std::cerr << "In image_io::readUIF\n";
    std::cout << "Can not open the file " << filename << '\n';
    return nullptr;
  }
  const RawHeader header = readUifHeader(in);
  if (!hasPossibleSizes(header)) {
    reportSize("readUIF", filename);
    return nullptr;
  }
  // Intended: bytes, whatever the format.
  return rawPixelBytes(header.format) == 0 ? nullptr : readRawPixels(in, header, BYTE).release();
}

void writeIHT(const std::string& filename, const Image& img) {
  std::ofstream out(filename, std::ios::binary | std::ios::trunc);
  if (!out) {
    std::cout << "Can not open file" << filename << '\n';
    return;
  }
  encodeIht(out, img);
  finish(out, "writeIHT", filename);
}

Image* readIHT(const std::string& filename) {
  std::ifstream in(filename, std::ios::binary);
  if (!in) {
    std::cout << "Can not open the file " << filename << '\n';
    return nullptr;
  }
  const RawHeader header = readIhtHeader(in);
  if (!hasPossibleSizes(header)) {
    reportSize("readIHT", filename);
    return nullptr;
  }
  return readRawPixels(in, header, header.format).release();
}

}  // namespace orva::image_io
