#include <pybind11/stl.h>

#include <cstddef>
#include <limits>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "formats/detections.h"
#include "formats/image_writer.h"
#include "formats/result_table.h"
#include "orva/detect/measure.h"
#include "orva/detect/segment.h"
#include "python/src/arrays.h"
#include "python/src/objects.h"

namespace orva_python {
namespace {

using orva::detect::Object;
using orva::detect::ObjectMeasures;

// A row of the table of regions.
struct Region {
  ObjectMeasures measures;
  float score;         // not a number where there is none
  bool touchesBorder;  // that of the measures, for the last column
};

using RegionTable = py::array_t<Region, py::array::c_style>;

// The rows of labels, of which label k is the region of objects[k - 1].
std::vector<Region> measured(const orva::image<int>& labels, const orva::Image& brightness,
                             const std::vector<Object>& objects) {
  std::vector<Region> rows;
  for (const ObjectMeasures& m : orva::detect::measureObjects(labels, brightness)) {
    rows.push_back({m, objects[static_cast<std::size_t>(m.label - 1)].score, m.touchesBorder});
  }
  return rows;
}

py::array tableOf(const std::vector<Region>& rows) {
  return py::array_t<Region>(static_cast<py::ssize_t>(rows.size()), rows.data());
}

py::tuple segmentObjects(const py::array& array, const std::optional<py::array>& measure,
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
    std::vector<Object> kept;
    for (const std::size_t k : regions.kept) kept.push_back(given[k]);
    rows = measured(regions.labels, other ? *other : *img, kept);
    return std::move(regions.labels);
  });
  return py::make_tuple(toArray(std::move(labels), shapeOf(array)), tableOf(rows));
}

py::tuple segmentImage(const py::array& array, const std::optional<py::array>& measure,
                       std::optional<float> radius, std::optional<float> minRadius,
                       std::optional<float> maxRadius, const std::optional<std::string>& polarity,
                       float minScore, float minArea, float maxArea, bool excludeBorder) {
  const auto img = toImage(array);
  const auto other = measure ? toImage(*measure) : nullptr;
  const auto sought = findSettingsOf(radius, minRadius, maxRadius, polarity, minScore);
  std::vector<Region> rows;
  auto regions = unlocked([&] {
    auto segmented =
        orva::detect::segmentImage(*img, sought, {{}, minArea, maxArea, excludeBorder});
    rows = measured(segmented.labels, other ? *other : *img, segmented.objects);
    return segmented;
  });
  return py::make_tuple(toArray(std::move(regions.labels), shapeOf(array)), tableOf(rows),
                        estimateOf(regions.used));
}

py::array measureLabels(const py::array& array, const py::array& brightness) {
  const auto labels = toImageOf<int>(array);
  const auto img = toImage(brightness);
  return tableOf(unlocked([&] {
    std::vector<Region> rows;
    for (const ObjectMeasures& m : orva::detect::measureObjects(labels, *img)) {
      rows.push_back({m, std::numeric_limits<float>::quiet_NaN(), m.touchesBorder});
    }
    return rows;
  }));
}

// A table as the command writes it.
std::string asCsv(const RegionTable& table) {
  std::vector<ObjectMeasures> measures;
  orva::detect::FindResult result;
  for (const Region* row = table.data(); row != table.data() + table.size(); ++row) {
    measures.push_back(row->measures);
    measures.back().touchesBorder = row->touchesBorder;
    result.objects.push_back({0, 0, 0, row->score, 0});
  }
  return orva::formats::csvOf({orva::formats::detectionsOf({}, {}, {}, result, measures, {})});
}

// The TIFF file of labels.
py::bytes asTiff(const py::array& array) {
  const auto labels = toImageOf<int>(array);
  return unlocked([&] { return orva::formats::encodeLabels("labels.tif", labels); });
}

}  // namespace

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
  module.def("segment_objects", segmentObjects);
  module.def("segment_image", segmentImage);
  module.def("measure_labels", measureLabels);
  module.def("regions_as_csv", asCsv);
  module.def("labels_as_tiff", asTiff);
}

}  // namespace orva_python
