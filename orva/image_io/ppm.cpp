#include <cstddef>
#include <fstream>
#include <iostream>
#include <string>
#include <vector>

#include "orva/image/bad_alloc.h"
#include "orva/image_io/encode.h"
#include "orva/image_io/image_io.h"

namespace orva::image_io {

bool isPpmImage(const image<unsigned char>& img) {
  return img.nframes() == 1 || img.nframes() == 3;
}

void encodePpm(std::ostream& out, const image<unsigned char>& img) {
  // Digits of the "C" locale, whatever the stream's is.
  out << "P6\n" + std::to_string(img.nx()) + ' ' + std::to_string(img.ny()) + "\n255\n";
  const std::size_t count = static_cast<std::size_t>(img.nx()) * static_cast<std::size_t>(img.ny());
  const std::size_t step =
      img.nframes() == 3 ? count : 0;  // from one component's plane to the next
  std::vector<unsigned char> buffer(count * 3);
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
  exitOnBadAlloc([&] { encodePpm(out, img); });
  out.close();
  if (!out) std::cerr << "Can not write file: " << filename << '\n';
}

}  // namespace orva::image_io
