#include <pybind11/stl.h>

#include <cstddef>
#include <limits>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "formats/detections.h"
#include "orva/detect/measure.h"
#include "orva/detect/segment.h"
#include "python/src/arrays.h"
#include "python/src/objects.h"
#include "python/src/tables.h"

namespace orva_python {
namespace {

using orva::detect::Object;
using orva::detect::ObjectMeasures;

// The rows of labels whose scores are known, or of any labels.
std::vector<Region> measured(const orva::image<int>& labels, const orva::Image& brightness,
                             const std::vector<float>* scores) {
  std::vector<Region> rows;
  for (const ObjectMeasures& m : orva::detect::measureObjects(labels, brightness)) {
    const float score = scores != nullptr ? (*scores)[static_cast<std::size_t>(m.label - 1)]
                                          : std::numeric_limits<float>::quiet_NaN();
    rows.push_back({m, score, m.touchesBorder});
  }
  return rows;
}

py::array tableOf(const std::vector<Region>& rows) {
  return py::array_t<Region>(static_cast<py::ssize_t>(rows.size()), rows.data());
}

py::tuple segment(const py::array& array, const std::optional<py::array>& measure,
                  const ObjectTable& objects, const std::optional<std::string>& polarity,
                  float minArea, float maxArea, bool excludeBorder) {
  const auto img = toImage(array);
  const auto other = measure ? toImage(*measure) : nullptr;
  const std::vector<Object> given(objects.data(), objects.data() + objects.size());
  orva::detect::SegmentSettings settings{{}, minArea, maxArea, excludeBorder};
  if (polarity) settings.polarity = polarityOf(*polarity);
  std::vector<Region> rows;
  auto labels = unlocked([&] {
    auto regions = orva::detect::segmentObjects(*img, given, settings);
    std::vector<float> scores;
    for (const std::size_t k : regions.kept) scores.push_back(given[k].score);
    rows = measured(regions.labels, other ? *other : *img, &scores);
    return std::move(regions.labels);
  });
  return py::make_tuple(toArray(std::move(labels), shapeOf(array)), tableOf(rows));
}

py::array measureLabels(const py::array& array, const py::array& brightness) {
  const auto labels = toImageOf<int>(array);
  const auto img = toImage(brightness);
  return tableOf(unlocked([&] { return measured(labels, *img, nullptr); }));
}

}  // namespace

orva::formats::Detections detectionsIn(const RegionTable& table,
                                       const orva::formats::ImageFacts& facts) {
  std::vector<ObjectMeasures> measures;
  orva::detect::FindResult result;
  for (const Region* row = table.data(); row != table.data() + table.size(); ++row) {
    measures.push_back(row->measures);
    measures.back().touchesBorder = row->touchesBorder;
    result.objects.push_back({0, 0, 0, row->score, 0});
  }
  return orva::formats::detectionsOf(facts, {}, {}, result, measures, {});
}

void addSegmentation(py::module_& module) {
  PYBIND11_NUMPY_DTYPE_EX(
      Region, measures.label, "label", measures.centroidRow, "centroid-0", measures.centroidColumn,
      "centroid-1", measures.area, "area", measures.equivalentDiameterArea,
      "equivalent_diameter_area", measures.perimeter, "perimeter", measures.eccentricity,
      "eccentricity", measures.majorAxisLength, "major_axis_length", measures.minorAxisLength,
      "minor_axis_length", measures.orientation, "orientation", measures.solidity, "solidity",
      measures.meanIntensity, "mean_intensity", measures.minIntensity, "min_intensity",
      measures.maxIntensity, "max_intensity", measures.intensityStd, "intensity_std",
      measures.minRow, "bbox-0", measures.minColumn, "bbox-1", measures.endRow, "bbox-2",
      measures.endColumn, "bbox-3", score, "score", touchesBorder, "touches_border");
  module.attr("REGION_COLUMNS") = py::dtype::of<Region>().attr("names");
  module.def("segment", segment);
  module.def("measure_labels", measureLabels);
}

}  // namespace orva_python
