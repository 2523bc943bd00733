// Discs of any radius, found by place.
#ifndef ORVA_DETECT_OCTAVE_GRIDS_H
#define ORVA_DETECT_OCTAVE_GRIDS_H

#include <cmath>
#include <cstddef>
#include <map>
#include <utility>
#include <vector>

namespace orva::detect {

// Indices of discs by the square of the plane that their center lies in. There is a grid for each
// range of radii from one power of two to the next, whose squares are as wide as these radii.
class OctaveGrids {
 public:
  void add(float x, float y, float radius, std::size_t index) {
    const int octave = octaveOf(radius);
    grids_[octave][square(x, y, octave)].push_back(index);
  }

  // Calls `use` with the index of each candidate whose center may lie within
  // `a` + `b` * its radius of (x, y), until it returns true. Returns whether it did.
  template <class Use>
  bool anyNear(float x, float y, float a, float b, Use&& use) const {
    for (const auto& [octave, squares] : grids_) {
      const float reach = a + b * std::ldexp(1.0F, octave);
      const auto [x0, y0] = square(x - reach, y - reach, octave);
      const auto [x1, y1] = square(x + reach, y + reach, octave);
      for (auto s = squares.lower_bound({x0, y0}); s != squares.end() && s->first.first <= x1;) {
        const auto [i, j] = s->first;
        if (j < y0) {
          s = squares.lower_bound({i, y0});
        } else if (j > y1) {
          s = squares.lower_bound({i + 1, y0});
        } else {
          for (const std::size_t k : s->second) {
            if (use(k)) return true;
          }
          ++s;
        }
      }
    }
    return false;
  }

 private:
  using Square = std::pair<int, int>;
  static int octaveOf(float radius) {
    int exponent = 0;
    std::frexp(radius, &exponent);  // radius < 2^exponent
    return exponent;
  }
  static Square square(float x, float y, int octave) {
    const float side = std::ldexp(1.0F, octave);
    return {static_cast<int>(std::floor(x / side)), static_cast<int>(std::floor(y / side))};
  }
  std::map<int, std::map<Square, std::vector<std::size_t>>> grids_;
};

}  // namespace orva::detect

#endif
