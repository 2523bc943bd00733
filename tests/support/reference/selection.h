// Reference implementations of the thresholds and of the selection of regions.
#ifndef ORVA_TESTS_SUPPORT_REFERENCE_SELECTION_H
#define ORVA_TESTS_SUPPORT_REFERENCE_SELECTION_H

#include "orva/image/image.h"

namespace reference {

orva::image<unsigned char> threshold(const orva::Image& img, float t);
// Of an image that is not null.
float computeThreshold(const orva::Image& img, float scale);

// Silent.
void selectRegions(orva::image<unsigned char>& mask, const orva::Image& brightness, float minMean,
                   int minSize);
void selectRegionsBySize(orva::image<unsigned char>& mask, int minSize, int maxSize);

}  // namespace reference

#endif
