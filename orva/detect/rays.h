// The rays of an outline: their directions and the radii at which they are sampled.
#ifndef ORVA_DETECT_RAYS_H
#define ORVA_DETECT_RAYS_H

#include <array>

#include "orva/detect/seeds.h"

namespace orva::detect {

inline constexpr int kRays = 32;
inline constexpr int kRadii = 30;
inline constexpr float kRadiusRatio = 1.085F;  // of a radius to the one before

struct Direction {
  float x;
  float y;
};

// Unit vectors, ray 0 along x, each turned from the one before by an eighth of a right angle
// towards y.
inline constexpr std::array<Direction, kRays> kDirections = [] {
  constexpr std::array<float, 9> kCosines{1.0F,         0.980785280F, 0.923879533F,
                                          0.831469612F, 0.707106781F, 0.555570233F,
                                          0.382683432F, 0.195090322F, 0.0F};
  std::array<Direction, kRays> d{};
  for (std::size_t i = 0; i < 8; ++i) {
    const float c = kCosines[i];
    const float s = kCosines[8 - i];
    d[i] = {c, s};
    d[i + 8] = {-s, c};
    d[i + 16] = {-c, -s};
    d[i + 24] = {s, -c};
  }
  return d;
}();

// The sampled radii of a band in pixels of its level: 1.5 to 16, or 2.5 to 26.6.
constexpr std::array<float, kRadii> radiiOf(Band band) {
  std::array<float, kRadii> radii{};
  float r = band == Band::Small ? 1.5F : 2.5F;
  for (float& v : radii) {
    v = r;
    r *= kRadiusRatio;
  }
  return radii;
}

}  // namespace orva::detect

#endif
