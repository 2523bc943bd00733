// Drawn objects with noise, and how found objects compare with them.
#ifndef ORVA_TESTS_DETECT_SCENES_H
#define ORVA_TESTS_DETECT_SCENES_H

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <limits>
#include <random>
#include <vector>

#include "orva/detect/detect.h"
#include "orva/image/image.h"

namespace orva::test {

// An ellipse; pixel centers are at whole numbers.
struct Ellipse {
  double x;
  double y;
  double a;            // half-axis along x, before the turn
  double b;            // half-axis along y
  double angle = 0.0;  // in radians
  double grey = 100.0;

  bool contains(double px, double py) const {
    const double dx = px - x;
    const double dy = py - y;
    const double u = (dx * std::cos(angle) + dy * std::sin(angle)) / a;
    const double v = (dy * std::cos(angle) - dx * std::sin(angle)) / b;
    return u * u + v * v <= 1;
  }
};

// The ellipses' grey levels added to `background`, each pixel the mean of 8 x 8 points.
inline image<float> drawn(int nx, int ny, const std::vector<Ellipse>& ellipses,
                          double background = 50.0) {
  image<float> img(nx, ny, 1, 1, 1);
  std::fill_n(img.pixels(), img.npix(), static_cast<float>(background));
  constexpr int kPoints = 8;
  for (const Ellipse& e : ellipses) {
    const double reach = std::max(e.a, e.b) + 1;
    for (int y = std::max(0, static_cast<int>(e.y - reach)); y < ny && y <= e.y + reach; ++y) {
      for (int x = std::max(0, static_cast<int>(e.x - reach)); x < nx && x <= e.x + reach; ++x) {
        int inside = 0;
        for (int k = 0; k < kPoints * kPoints; ++k) {
          const double px = x + (k % kPoints + 0.5) / kPoints - 0.5;
          const double py = y + (k / kPoints + 0.5) / kPoints - 0.5;
          inside += e.contains(px, py) ? 1 : 0;
        }
        img.pixels()[y * nx + x] += static_cast<float>(e.grey * inside / (kPoints * kPoints));
      }
    }
  }
  return img;
}

inline Ellipse disc(double x, double y, double radius, double grey = 100.0) {
  return {x, y, radius, radius, 0.0, grey};
}

// A sum of twelve uniform numbers: nearly normal, and the same with every standard library.
inline double normal(std::mt19937& random) {
  double sum = -6;
  for (int i = 0; i < 12; ++i) sum += static_cast<double>(random()) / 4294967296.0;
  return sum;
}

inline void addNoise(image<float>& img, double deviation, unsigned seed) {
  std::mt19937 random(seed);
  for (int i = 0; i < img.npix(); ++i) {
    img.pixels()[i] += static_cast<float>(deviation * normal(random));
  }
}

// The object nearest to a place; null where there is none.
inline const detect::Object* nearest(const std::vector<detect::Object>& objects, double x,
                                     double y) {
  const detect::Object* best = nullptr;
  double distance = std::numeric_limits<double>::infinity();
  for (const detect::Object& o : objects) {
    const double d = std::hypot(o.x - x, o.y - y);
    if (d < distance) {
      distance = d;
      best = &o;
    }
  }
  return best;
}

inline std::vector<detect::Object> found(const Image& img) {
  return detect::findObjects(img, {}).objects;
}

// Discs on a grid with random offsets and radii, none touching another or the border.
inline std::vector<Ellipse> discGrid(int nx, int ny, double smallest, double largest,
                                     unsigned seed) {
  std::mt19937 random(seed);
  const auto uniform = [&](double low, double high) {
    return low + (high - low) * static_cast<double>(random()) / 4294967296.0;
  };
  std::vector<Ellipse> discs;
  const double cell = 2 * largest + 12;
  for (double y = cell / 2; y + cell / 2 <= ny; y += cell) {
    for (double x = cell / 2; x + cell / 2 <= nx; x += cell) {
      const double r = uniform(smallest, largest);
      const double play = cell / 2 - r - 3;
      discs.push_back(disc(x + uniform(-play, play) * 0.9, y + uniform(-play, play) * 0.9, r,
                           uniform(60, 140)));
    }
  }
  return discs;
}

}  // namespace orva::test

#endif
