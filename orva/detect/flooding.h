// Label images grown from markers.
#ifndef ORVA_DETECT_FLOODING_H
#define ORVA_DETECT_FLOODING_H

#include <array>
#include <vector>

#include "orva/detect/rays.h"
#include "orva/image/image.h"

namespace orva::detect {

// Which pixels an object may take.
struct Basin {
  float x;  // center, inside the image; the marker is the pixel that it lies on
  float y;
  std::array<float, kRays> radii;  // of the outline around the center
  float threshold;                 // minimum value of pixels outside the core
};

inline constexpr float kCoreShare = 0.5F;    // of the outline's radius: pixels of any value
inline constexpr float kReachShare = 1.45F;  // of it: no pixels farther from the center, ...
inline constexpr float kReachPixels = 1.0F;  // ... unless they are within this of the outline

// The distance of pixel (x, y) from the basin's center as a share of the outline's radius in its
// direction, or a negative number where the basin must not take it.
float floodLevel(const Basin& basin, int x, int y, float value);

// Label k for the pixels of basin k - 1, 0 elsewhere. Each basin starts with its marker (the first
// basin of those that share one). Then, again and again, of all pixels that a basin may take and
// that have one of its pixels among their four neighbours, the one of the lowest level is taken. Of
// equal levels the first pixel in raster order is taken, of equal pixels the first basin.
image<int> flooded(const image<float>& values, const std::vector<Basin>& basins);

// Adds the background that one label alone encloses to it. Background is 8-connected; no label is
// negative.
void fillHoles(image<int>& labels);

}  // namespace orva::detect

#endif
