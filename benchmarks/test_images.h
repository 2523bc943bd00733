// The images that all benchmarks work on, the same in every run.
#ifndef ORVA_BENCHMARKS_TEST_IMAGES_H
#define ORVA_BENCHMARKS_TEST_IMAGES_H

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <random>

#include "orva/bip/bip.h"
#include "orva/image/image.h"

namespace orva_benchmark {

using Bytes = orva::image<unsigned char>;
using Shorts = orva::image<short>;
using Floats = orva::image<float>;

// Like a field of nuclei: bright discs with soft edges on a dark background, with noise. Each cell
// of a square grid holds one disc with a radius of 0.24 to 0.36 times the cell's side; incomplete
// cells at the border are empty.
inline Bytes discs(int nx, int ny, int nz, int cell) {
  Bytes img(nx, ny, nz, 1, 1);
  std::mt19937 random(1);
  unsigned char* out = img.pixels();
  for (int z = 0; z < nz; ++z) {
    for (int y = 0; y < ny; ++y) {
      for (int x = 0; x < nx; ++x) {
        const int column = x / cell;
        const int row = y / cell;
        const bool complete = (column + 1) * cell <= nx && (row + 1) * cell <= ny;
        const double size = 0.24 + 0.02 * ((column * 7 + row * 5) % 7);
        const double radius = complete ? size * cell : -1;
        const double distance = std::hypot(x % cell - cell / 2, y % cell - cell / 2);
        const double level = 200 * std::clamp(radius - distance + 0.5, 0.0, 1.0);
        *out++ = static_cast<unsigned char>(20 + level + static_cast<double>(random() % 16));
      }
    }
  }
  return img;
}

inline Bytes discs(int side, int cell = 40) { return discs(side, side, 1, cell); }

// 64 planes of 256 x 256.
inline Bytes discStack() { return discs(256, 256, 64, 40); }

inline Bytes maskOf(const Bytes& img) {
  Bytes mask = img.duplicate();
  std::for_each(mask.pixels(), mask.pixels() + mask.npix(),
                [](unsigned char& v) { v = v > 128 ? 255 : 0; });
  return mask;
}

// The discs as a mask of 0 and 255.
inline Bytes discMask(int side) { return maskOf(discs(side)); }

// A spiral of object pixels, one pixel wide, with gaps of one pixel: nearly the longest path that
// a mask of this size can hold.
inline Bytes spiral(int side) {
  Bytes mask(side, side, 1, 1, 1);
  const auto at = [&](int x, int y) -> unsigned char& {
    return mask.pixels()[static_cast<std::ptrdiff_t>(y) * side + x];
  };
  const auto free = [&](int x, int y) {
    return x >= 1 && y >= 1 && x < side - 1 && y < side - 1 && at(x, y) == 0;
  };
  const auto open = [&](int x, int y, int dx, int dy) {
    return free(x + dx, y + dy) && at(x + 2 * dx, y + 2 * dy) == 0;
  };
  int x = 1;
  int y = 1;
  int dx = 1;
  int dy = 0;
  at(x, y) = 255;
  while (true) {
    if (!open(x, y, dx, dy)) {
      const int oldDx = dx;
      dx = -dy;
      dy = oldDx;
      if (!open(x, y, dx, dy)) return mask;
    }
    x += dx;
    y += dy;
    at(x, y) = 255;
  }
}

inline Floats floats(const orva::Image& img) { return orva::toFloatImage(img); }

inline Shorts labelsOf(const Bytes& mask) { return orva::bip::regions(mask); }

}  // namespace orva_benchmark

#endif
