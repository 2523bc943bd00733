#include <algorithm>
#include <array>
#include <cctype>
#include <cstddef>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <iostream>
#include <limits>
#include <locale>
#include <memory>
#include <vector>

#include "orva/image/with_memory.h"
#include "orva/image_io/image_io.h"

namespace orva::image_io {
namespace {

// PGM input has no other way to fail.
[[noreturn]] void fail(const std::string& message) {
  std::cerr << message << '\n';
  std::exit(1);
}

struct CloseFile {
  void operator()(std::FILE* file) const { std::fclose(file); }
};
using File = std::unique_ptr<std::FILE, CloseFile>;

struct FreeBlock {
  void operator()(unsigned char* block) const { std::free(block); }
};
using PixelBlock = std::unique_ptr<unsigned char, FreeBlock>;

// The next decimal number of a header. Comments run from '#' to the end of the line; anything else
// that is no digit is skipped, and the character after the number is dropped. A number too large
// for an int counts as the largest int.
int getint(std::FILE* in) {
  constexpr int kLongestComment = 9000;
  int c = std::getc(in);
  while (std::isdigit(c) == 0) {
    if (c == '#') {
      std::array<char, kLongestComment + 1> comment;
      c = std::fgets(comment.data(), static_cast<int>(comment.size()), in) == nullptr ? EOF : c;
    }
    if (c == EOF) fail("Image is not binary PGM.");  // intended: without the file's name
    c = std::getc(in);
  }
  constexpr int kMost = std::numeric_limits<int>::max();
  int value = 0;
  for (; std::isdigit(c) != 0; c = std::getc(in)) {
    const int digit = c - '0';
    value = value > (kMost - digit) / 10 ? kMost : value * 10 + digit;
  }
  return value;
}

PixelBlock get_image(const std::string& filename, int& width, int& height) {
  const File in(std::fopen(filename.c_str(), "r"));
  if (!in) fail("Can't input image " + filename + ".");
  if (std::getc(in.get()) != 'P' || std::getc(in.get()) != '5') {
    fail("Image " + filename + " does not have binary PGM header.");
  }
  width = getint(in.get());
  height = getint(in.get());
  getint(in.get());  // the maximum grey value is not used

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

image<unsigned char>* readPGM(const std::string& filename) {
  int width = 0;
  int height = 0;
  const PixelBlock block = get_image(filename, width, height);
  auto* img = new image<unsigned char>(width, height, 1, 1, 1);
  std::copy_n(block.get(), img->npix(), img->pixels());
  return img;
}

void writePPM(const std::string& filename, const image<unsigned char>& img) {
  const int planes = img.nframes();
  if (planes != 1 && planes != 3) {
    std::cerr << "image_io::writePPM -> img must be a grayscale or color image\n";
    return;
  }
  std::ofstream out(filename, std::ios::binary | std::ios::trunc);
  if (!out) {
    std::cerr << "Can not open file: " << filename << '\n';
    return;
  }
  out.imbue(std::locale::classic());
  out << "P6\n" << img.nx() << ' ' << img.ny() << "\n255\n";
  const std::size_t count = static_cast<std::size_t>(img.nx()) * static_cast<std::size_t>(img.ny());
  const std::size_t step = planes == 3 ? count : 0;  // from one component's plane to the next
  auto buffer = withMemory([count] { return std::vector<unsigned char>(count * 3); });
  for (std::size_t i = 0; i < count; ++i) {
    for (std::size_t c = 0; c < 3; ++c) buffer[3 * i + c] = img.pixels()[i + c * step];
  }
  out.write(reinterpret_cast<const char*>(buffer.data()),
            static_cast<std::streamsize>(buffer.size()));
  out.close();
  if (!out) std::cerr << "Can not write file: " << filename << '\n';
}

}  // namespace orva::image_io
