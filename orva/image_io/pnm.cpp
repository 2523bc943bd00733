#include <algorithm>
#include <cctype>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <iostream>
#include <limits>
#include <memory>
#include <string>
#include <vector>

#include "orva/image/bad_alloc.h"
#include "orva/image_io/encode.h"
#include "orva/image_io/image_io.h"
#include "orva/image_io/pnm_header.h"

namespace orva::image_io {
namespace {

// PGM input has no other way to fail.
[[noreturn]] void fail(const std::string& message) {
  std::cerr << message << '\n';
  std::exit(1);
}

struct FreeBlock {
  void operator()(unsigned char* block) const { std::free(block); }
};
using PixelBlock = std::unique_ptr<unsigned char, FreeBlock>;

// Skips a comment to the end of its line, or as much of it as is skipped. False when the file ends
// at its first character.
bool skipComment(std::FILE* in, bool& isLong) {
  for (int length = 0; length < kMaxPnmComment; ++length) {
    const int c = std::getc(in);
    if (c == EOF) return length > 0;
    if (c == '\n') return true;
  }
  const int next = std::ungetc(std::getc(in), in);
  if (next != EOF && next != '\n') isLong = true;
  return true;
}

// The next number of a header, or -1 where the file ends before it.
std::int64_t nextNumber(std::FILE* in, bool& hasLongComment) {
  int c = std::getc(in);
  while (std::isdigit(c) == 0) {
    if (c == EOF || (c == '#' && !skipComment(in, hasLongComment))) return -1;
    c = std::getc(in);
  }
  std::int64_t value = 0;
  for (; std::isdigit(c) != 0; c = std::getc(in)) {
    value = std::min(value * 10 + (c - '0'), kMaxPnmNumber);
  }
  return value;
}

int fittedToInt(std::int64_t number) {
  return static_cast<int>(std::min<std::int64_t>(number, std::numeric_limits<int>::max()));
}

PixelBlock get_image(const std::string& filename, int& width, int& height) {
  const File in(std::fopen(filename.c_str(), "r"));
  if (!in) fail("Can't input image " + filename + ".");
  if (std::getc(in.get()) != 'P' || std::getc(in.get()) != '5') {
    fail("Image " + filename + " does not have binary PGM header.");
  }
  const PnmHeader header = readPnmHeader(in.get());          // the maximum gray value is not used
  if (!header.isComplete) fail("Image is not binary PGM.");  // intended: without the file's name
  width = fittedToInt(header.width);
  height = fittedToInt(header.height);

  const std::size_t size = static_cast<std::size_t>(width) * static_cast<std::size_t>(height);
  const bool addressable = size <= std::numeric_limits<int>::max();
  // One byte more, so that an image without pixels does not look like a failure.
  PixelBlock block(addressable ? static_cast<unsigned char*>(std::malloc(size + 1)) : nullptr);
  if (!block) fail("out of memory");
  if (std::fread(block.get(), 1, size, in.get()) != size) {
    fail("Image " + filename + " is wrong size.");
  }
  return block;
}

// Nothing calls this counterpart of get_image; it completes the pair.
[[maybe_unused]] void put_image(const std::string& filename, const unsigned char* block, int width,
                                int height) {
  File out(std::fopen(filename.c_str(), "w"));
  if (!out) fail("Can't output image" + filename + ".");  // intended: without a blank
  const std::size_t size = static_cast<std::size_t>(width) * static_cast<std::size_t>(height);
  const bool written = std::fprintf(out.get(), "P5\n%d %d\n255\n", width, height) > 0 &&
                       std::fwrite(block, 1, size, out.get()) == size;
  if (std::fclose(out.release()) != 0 || !written) fail("Can't write image " + filename + ".");
}

}  // namespace

PnmHeader readPnmHeader(std::FILE* in) {
  PnmHeader header;
  for (std::int64_t* number : {&header.width, &header.height, &header.maximum}) {
    *number = nextNumber(in, header.hasLongComment);
    if (*number < 0) return header;
  }
  header.isComplete = true;
  return header;
}

image<unsigned char>* readPGM(const std::string& filename) {
  int width = 0;
  int height = 0;
  const PixelBlock block = get_image(filename, width, height);
  auto* img = new image<unsigned char>(width, height, 1, 1, 1);
  std::copy_n(block.get(), img->npix(), img->pixels());
  return img;
}

bool isPpmImage(const image<unsigned char>& img) {
  return img.nframes() == 1 || img.nframes() == 3;
}

void encodePpm(std::ostream& out, const image<unsigned char>& img) {
  // Digits of the "C" locale, whatever the stream's is.
  out << "P6\n" + std::to_string(img.nx()) + ' ' + std::to_string(img.ny()) + "\n255\n";
  const std::size_t count = static_cast<std::size_t>(img.nx()) * static_cast<std::size_t>(img.ny());
  const std::size_t step =
      img.nframes() == 3 ? count : 0;  // from one component's plane to the next
  auto buffer = exitOnBadAlloc([count] { return std::vector<unsigned char>(count * 3); });
  for (std::size_t i = 0; i < count; ++i) {
    for (std::size_t c = 0; c < 3; ++c) buffer[3 * i + c] = img.pixels()[i + c * step];
  }
  out.write(reinterpret_cast<const char*>(buffer.data()),
            static_cast<std::streamsize>(buffer.size()));
}

void writePPM(const std::string& filename, const image<unsigned char>& img) {
  if (!isPpmImage(img)) {
    std::cerr << "image_io::writePPM -> img must be a grayscale or color image\n";
    return;
  }
  std::ofstream out(filename, std::ios::binary | std::ios::trunc);
  if (!out) {
    std::cerr << "Can not open file: " << filename << '\n';
    return;
  }
  encodePpm(out, img);
  out.close();
  if (!out) std::cerr << "Can not write file: " << filename << '\n';
}

}  // namespace orva::image_io
