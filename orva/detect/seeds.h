// Places that edges surround.
#ifndef ORVA_DETECT_SEEDS_H
#define ORVA_DETECT_SEEDS_H

#include <vector>

#include "orva/detect/detect.h"
#include "orva/detect/scale_levels.h"

namespace orva::detect {

// The range of radii that a seed stands for, in pixels of its level.
enum class Band {
  Small,  // 2 to 6; at full size only
  Usual   // 6 to 12
};

// A place that edges surround.
struct Seed {
  int x;
  int y;
  Band band;
  float votes;
};

// A pixel of an edge.
struct EdgePixel {
  int x;
  int y;
  float dx;  // unit vector along the gradient
  float dy;
  float weight;  // 0 to 2: magnitude relative to the level's typical edge, levelling off
};

// The pixels whose gradient stands out of the noise and is a maximum along its own direction.
std::vector<EdgePixel> edgePixels(const ScaleLevel& level);

// The local maxima of the votes that `edges` cast along their gradients (against them for dark
// objects), in raster order.
std::vector<Seed> seeds(const ScaleLevel& level, const std::vector<EdgePixel>& edges,
                        Polarity polarity, Band band);

}  // namespace orva::detect

#endif
