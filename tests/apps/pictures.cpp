#include "tests/apps/pictures.h"

#include <algorithm>
#include <cmath>

namespace orva::test {

Picture discs(int width, int height, const std::vector<Disc>& objects, double background) {
  Picture result{width, height, 1, {}};
  for (int y = 0; y < height; ++y) {
    for (int x = 0; x < width; ++x) {
      double value = background;
      for (const Disc& d : objects) {
        const double inside = d.radius + 1.0 - std::hypot(x - d.x, y - d.y);
        value += (d.level - background) * std::clamp(inside / 2.0, 0.0, 1.0);
      }
      result.values.push_back(std::round(value));
    }
  }
  return result;
}

const std::vector<Disc> kTwoDiscs{{18.0, 21.0, 7.0}, {45.0, 29.0, 6.0}};

Picture twoDiscs() { return discs(66, 50, kTwoDiscs); }

Picture scaled(Picture picture, double factor, double shift) {
  for (double& v : picture.values) v = factor * v + shift;
  return picture;
}

std::string pgm(const Picture& grey) {
  std::string text =
      "P5\n" + std::to_string(grey.width) + ' ' + std::to_string(grey.height) + "\n255\n";
  for (const double v : grey.values) text += static_cast<char>(static_cast<unsigned char>(v));
  return text;
}

}  // namespace orva::test
