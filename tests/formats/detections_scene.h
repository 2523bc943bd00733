// Results of images for the tests of the formats that write them.
#ifndef ORVA_TESTS_FORMATS_DETECTIONS_SCENE_H
#define ORVA_TESTS_FORMATS_DETECTIONS_SCENE_H

#include <limits>
#include <utility>
#include <vector>

#include "formats/detections.h"

namespace orva::test {

using formats::Detections;

inline Detections pointsScene(formats::ImageFacts facts = {"a.tif", 0, 40, 30}) {
  voting::VoteResult result;
  result.centers = {{12, 7, 5.0F}, {3, 20, 0.125F}};
  return formats::detectionsOf(facts, voting::VoteSettings(), result);
}

inline Detections circlesScene(formats::ImageFacts facts = {"a.tif", 0, 40, 30}) {
  detect::FindResult result;
  result.used.radius = 6.0F;
  result.used.confidence = 0.75F;
  result.objects = {{10.0F, 20.25F, 6.0F, 0.9F, 1.0F}, {30.5F, 4.0F, 3.0F, 0.5F, 0.75F}};
  return formats::detectionsOf(facts, detect::FindSettings(), result);
}

// A ring in which a hole is, and two pixels that touch diagonally, the second label. The first has
// no mean.
inline Detections contoursScene(formats::ImageFacts facts = {"a.tif", 0, 6, 4}) {
  image<int> labels(6, 4, 1, 1, 1);
  const std::vector<int> pixels{1, 1, 1, 0, 0, 0,  //
                                1, 0, 1, 0, 2, 0,  //
                                1, 1, 1, 0, 0, 2,  //
                                0, 0, 0, 0, 0, 0};
  image<float> grey(6, 4, 1, 1, 1);
  for (std::size_t i = 0; i < pixels.size(); ++i) {
    labels.pixels()[i] = pixels[i];
    grey.pixels()[i] = static_cast<float>(i);
  }
  grey.pixels()[0] = std::numeric_limits<float>::quiet_NaN();
  detect::FindResult result;
  result.objects = {{1.0F, 1.0F, 1.5F, 0.9F, 1.0F}, {4.5F, 1.5F, 1.0F, 0.5F, 1.0F}};
  return formats::detectionsOf(facts, detect::FindSettings(), detect::SegmentSettings(), result,
                               detect::measureObjects(labels, grey), formats::contoursOf(labels));
}

}  // namespace orva::test

#endif
