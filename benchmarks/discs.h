// The picture that all benchmarks work on: soft bright discs on a dark ground, with some noise.
#ifndef ORVA_BENCHMARKS_DISCS_H
#define ORVA_BENCHMARKS_DISCS_H

#include <algorithm>
#include <cmath>
#include <random>

#include "orva/image/image.h"

namespace orva_benchmark {

// A square image of `side` pixels with a disc of radius 12 in every cell of 40 pixels.
inline orva::image<unsigned char> discs(int side) {
  constexpr int kCell = 40;
  constexpr double kRadius = 12;
  orva::image<unsigned char> img(side, side, 1, 1, 1);
  std::mt19937 random(1);
  for (int y = 0; y < side; ++y) {
    for (int x = 0; x < side; ++x) {
      const double distance = std::hypot(x % kCell - kCell / 2, y % kCell - kCell / 2);
      const double level = 200 * std::clamp(kRadius - distance + 0.5, 0.0, 1.0);
      const double noise = static_cast<double>(random() % 16);
      img.pixels()[x + y * side] = static_cast<unsigned char>(20 + level + noise);
    }
  }
  return img;
}

// The discs as a mask of 0 and 255.
inline orva::image<unsigned char> discMask(int side) {
  const orva::image<unsigned char> mask = discs(side);
  std::for_each(mask.pixels(), mask.pixels() + mask.npix(),
                [](unsigned char& v) { v = v > 128 ? 255 : 0; });
  return mask;
}

}  // namespace orva_benchmark

#endif
