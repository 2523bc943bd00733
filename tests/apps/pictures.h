// Pictures for the command's tests, and the bytes of a PGM file.
#ifndef ORVA_TESTS_APPS_PICTURES_H
#define ORVA_TESTS_APPS_PICTURES_H

#include <string>
#include <vector>

#include "orva/image/image.h"

namespace orva::test {

// Samples row by row; those of a pixel are adjacent.
struct Picture {
  int width;
  int height;
  int samples;
  std::vector<double> values;

  double at(int x, int y) const {
    return values[static_cast<std::size_t>(x) +
                  static_cast<std::size_t>(y) * static_cast<std::size_t>(width)];
  }
};

struct Disc {
  double x;
  double y;
  double radius;
  double level = 220.0;
};

// Grey discs on a background, in integers, with edges two pixels wide.
Picture discs(int width, int height, const std::vector<Disc>& objects, double background = 20.0);

// Two bright discs without any symmetry, and their positions. --max-radius 10 finds both.
extern const std::vector<Disc> kTwoDiscs;
Picture twoDiscs();

// Every value v becomes factor * v + shift.
Picture scaled(Picture picture, double factor, double shift = 0.0);

// Pixels of the samples that `samplesOf(value)` lists for each grey value.
template <class Function>
Picture spread(const Picture& grey, const Function& samplesOf) {
  Picture result{grey.width, grey.height, 0, {}};
  for (const double v : grey.values) {
    const std::vector<double> pixel = samplesOf(v);
    result.samples = static_cast<int>(pixel.size());
    result.values.insert(result.values.end(), pixel.begin(), pixel.end());
  }
  return result;
}

// A binary 8-bit PGM file.
std::string pgm(const Picture& grey);

template <class Pixel>
image<Pixel> imageOf(const Picture& grey) {
  image<Pixel> img(grey.width, grey.height, 1, 1, 1);
  for (int i = 0; i < img.npix(); ++i) {
    img.pixels()[i] = static_cast<Pixel>(grey.values[static_cast<std::size_t>(i)]);
  }
  return img;
}

}  // namespace orva::test

#endif
