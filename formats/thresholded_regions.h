// The regions of bright pixels in an image and their measurements.
#ifndef ORVA_FORMATS_THRESHOLDED_REGIONS_H
#define ORVA_FORMATS_THRESHOLDED_REGIONS_H

#include <optional>
#include <vector>

#include "formats/detections.h"
#include "orva/bip/bip.h"
#include "orva/image/image.h"

namespace orva::formats {

struct RegionSettings {
  std::optional<float> threshold;  // regions are made of pixels of at least this brightness
  float scale = 5.0F;              // of the blobs from which a missing threshold is computed
  int minSize = 1;                 // smaller regions are left out, in pixels
  std::optional<int> maxSize;      // larger ones
  bool fill = false;               // whether holes are filled first
};

struct ThresholdedRegions {
  float threshold;
  std::vector<RegionFeature> features;  // of label 0, 1, ...
  image<short> labels;                  // -1 outside
};

// Pixels that touch along the axes belong to one region. Throws FileError, with a text to follow
// the file's name, for more than 32768 regions and where no threshold can be computed.
ThresholdedRegions regionsOf(const Image& img, const RegionSettings& settings);

// Rows of the bounding box, the centroid and the radius of the ball of as many pixels, both rounded
// down, the number of pixels, and the mean and variance of the brightness.
Detections detectionsOf(const ImageFacts& facts, const ThresholdedRegions& regions);

}  // namespace orva::formats

#endif
