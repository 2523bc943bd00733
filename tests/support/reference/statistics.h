// Reference implementations of the statistics of the brightest pixels and of the zero crossings.
#ifndef ORVA_TESTS_SUPPORT_REFERENCE_STATISTICS_H
#define ORVA_TESTS_SUPPORT_REFERENCE_STATISTICS_H

#include <vector>

#include "orva/image/image.h"

namespace orva::reference {

// For numbers and shares in range.
float topByPixelNumber(const Image& img, int numpix);
float topByPercentage(const Image& img, float p);
float meanOfTopByPercentage(const Image& img, float p);
float meanOfTopByPercentage(const std::vector<float>& values, float p);

std::vector<Point> findZeros(const Image& img);
std::vector<Point> findZeros(const Image& a, const Image& b);

}  // namespace orva::reference

#endif
