// The image at full size, a half, a quarter, ..., with its gradients and noise.
#ifndef ORVA_DETECT_SCALE_LEVELS_H
#define ORVA_DETECT_SCALE_LEVELS_H

#include <vector>

#include "orva/image/image.h"

namespace orva::detect {

// A vector of the gradient.
struct Gradient {
  float x;
  float y;
};

// One size of the image. A position x at this size is (x + 0.5) * factor - 0.5 in the image.
struct ScaleLevel {
  int nx = 0;
  int ny = 0;
  float factor = 1.0F;              // pixels of the image to one of this level, along an axis
  std::vector<float> pixels;        // grey levels, 0 to 255
  std::vector<Gradient> gradients;  // Gaussian derivatives at a sigma of kGradientSigma
  float noise = 0.0F;               // standard deviation of the noise in `pixels`
  float gradientNoise = 0.0F;       // of either component of `gradients`
  float meanGradient = 0.0F;        // mean magnitude

  // From a position at this size to one in the image, and back.
  float toImage(float v) const { return (v + 0.5F) * factor - 0.5F; }
  float fromImage(float v) const { return (v + 0.5F) / factor - 0.5F; }
};

inline constexpr float kGradientSigma = 1.0F;
inline constexpr int kMinLevelSide = 16;  // smaller sizes are not searched

// Plane 0 of `img` with its range stretched to 0 .. 255, and its reductions, down to a shorter side
// of kMinLevelSide. None for an image without contrast.
std::vector<ScaleLevel> scaleLevels(const Image& img);

}  // namespace orva::detect

#endif
