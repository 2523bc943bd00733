// The best closed outline around a place.
#ifndef ORVA_DETECT_OUTLINE_H
#define ORVA_DETECT_OUTLINE_H

#include <array>
#include <optional>

#include "orva/detect/rays.h"
#include "orva/detect/scale_levels.h"

namespace orva::detect {

// Where the outline crosses one ray, and what the ray shows.
struct RayEdge {
  float radius;       // of the crossing, between samples
  int step;           // index of the sampled radius
  bool isVisible;     // whether the crossing is inside the image
  float edge;         // gradient against the ray at the crossing (along it for dark objects)
  float strongest;    // the largest along the ray
  float ascent;       // return to the object's own brightness before the crossing, 1 = a whole edge
  float alignment;    // cosine between gradient and ray at the crossing
  Gradient gradient;  // there
};

// A star-shaped outline around (x, y), in pixels of its level.
struct Outline {
  float x;
  float y;
  std::array<RayEdge, kRays> rays;
  float value;  // mean over the rays of what the search maximizes
};

// The outline around (x, y) that maximizes the sum of edge strengths less the returns to the
// object's brightness on the way and the changes of radius between neighbouring rays. None where
// fewer than 10 rays have samples in the image, the edges are of the other polarity, or no path
// could have a value of 0.4.
//
// Dynamic programming over two turns of the rays; the second half of the first and the first half
// of the second make the outline, so that it closes. Cost: about kRays * kRadii * 20 operations.
std::optional<Outline> bestOutline(const ScaleLevel& level, Polarity polarity, float x, float y,
                                   Band band);

}  // namespace orva::detect

#endif
