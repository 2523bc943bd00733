// Reference implementations of the thresholds and of the selection of regions.
#ifndef ORVA_TESTS_SUPPORT_REFERENCE_SELECTION_H
#define ORVA_TESTS_SUPPORT_REFERENCE_SELECTION_H

#include "orva/image/image.h"

namespace orva::reference {

image<unsigned char> threshold(const Image& img, float t);
// Of an image that is not null.
float computeThreshold(const Image& img, float scale);

// Silent.
void selectRegions(image<unsigned char>& mask, const Image& brightness, float minMean, int minSize);
void selectRegionsBySize(image<unsigned char>& mask, int minSize, int maxSize);

}  // namespace orva::reference

#endif
