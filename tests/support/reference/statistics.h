// Reference implementations of the statistics of the brightest pixels and of the zero crossings.
#ifndef ORVA_TESTS_SUPPORT_REFERENCE_STATISTICS_H
#define ORVA_TESTS_SUPPORT_REFERENCE_STATISTICS_H

#include <vector>

#include "orva/image/image.h"

namespace reference {

// For numbers and shares in range.
float topByPixelNumber(const orva::Image& img, int numpix);
float topByPercentage(const orva::Image& img, float p);
float meanOfTopByPercentage(const orva::Image& img, float p);
float meanOfTopByPercentage(const std::vector<float>& values, float p);

std::vector<orva::Point> findZeros(const orva::Image& img);
std::vector<orva::Point> findZeros(const orva::Image& a, const orva::Image& b);

}  // namespace reference

#endif
