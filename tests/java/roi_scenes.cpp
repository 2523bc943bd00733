// Writes an ROI set to standard output, of shapes that the command finds in no sample image.
#include <iostream>
#include <string>

#include "formats/roi_set.h"
#include "tests/formats/detections_scene.h"

int main(int argc, char** argv) {
  const std::string scene = argc > 1 ? argv[1] : "";
  orva::formats::Detections shapes = orva::test::contoursScene();
  if (scene == "many" || scene == "wide") {
    shapes = orva::test::pointsScene();
    if (scene == "many") shapes.places.resize(70000, {5, 6});
    if (scene == "wide") shapes.places[0] = {40000, 7};
    shapes.values.resize(shapes.places.size() * shapes.columns.size());
  } else if (scene != "holes") {
    return 2;
  }
  std::cout << orva::formats::roiSetOf({shapes}) << std::flush;
  return std::cout ? 0 : 1;
}
