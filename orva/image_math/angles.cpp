#include <cmath>

#include "orva/image_math/image_math.h"

namespace orva::image_math {

float norm(float a, float b) { return std::sqrt(norm2(a, b)); }

float norm2(float a, float b) { return a * a + b * b; }

float angle(float y, float x) {
  if (y == 0.0F && x == 0.0F) return 0.0F;
  return static_cast<float>(static_cast<double>(std::atan2(y, x)) * 57.2958);
}

unsigned char direction(float degrees) {
  if (degrees < 0.0F) {
    if (degrees >= -22.5F) return 0;
    if (degrees >= -67.5F) return 7;
    if (degrees >= -112.5F) return 6;
    if (degrees >= -157.5F) return 5;
    if (degrees >= -180.0F) return 4;
    return 5;  // intended: below -180 is not the sector of 180
  }
  if (degrees <= 22.5F) return 0;
  if (degrees <= 67.5F) return 1;
  if (degrees <= 112.5F) return 2;
  if (degrees <= 157.5F) return 3;
  return 4;
}

unsigned char direction(float y, float x) { return direction(angle(y, x)); }

}  // namespace orva::image_math
