#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <iostream>
#include <limits>
#include <memory>
#include <string>

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

int fittedToInt(std::int64_t number) {
  return static_cast<int>(std::min<std::int64_t>(number, std::numeric_limits<int>::max()));
}

PixelBlock get_image(const std::string& filename, int& width, int& height) {
  const File in(std::fopen(filename.c_str(), "r"));
  if (!in) fail("Can't input image " + filename + ".");
  if (std::getc(in.get()) != 'P' || std::getc(in.get()) != '5') {
    fail("Image " + filename + " does not have binary PGM header.");
  }
  const PnmHeader header = readPnmHeader(in.get());          // the maximum grey value is not used
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

image<unsigned char>* readPGM(const std::string& filename) {
  int width = 0;
  int height = 0;
  const PixelBlock block = get_image(filename, width, height);
  auto* img = new image<unsigned char>(width, height, 1, 1, 1);
  std::copy_n(block.get(), img->npix(), img->pixels());
  return img;
}

}  // namespace orva::image_io
