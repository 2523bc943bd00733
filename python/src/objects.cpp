#include "python/src/objects.h"

#include <pybind11/stl.h>

#include <optional>
#include <string>
#include <tuple>
#include <vector>

#include "formats/detections.h"
#include "orva/detect/detect.h"
#include "python/src/arrays.h"
#include "python/src/tables.h"

namespace orva_python {
namespace {

using orva::detect::Object;
using orva::detect::Polarity;
using orva::detect::Settings;
using orva::detect::SettingsEstimate;

Guess guessOf(const Settings& s) {
  return {s.radius, orva::formats::nameOf(s.polarity), s.confidence};
}

Settings guessedSettings(const Guess& guess) {
  const auto& [radius, polarity, confidence] = guess;
  return {radius, polarityOf(polarity), confidence};
}

py::tuple findObjects(const py::array& array, std::optional<float> radius,
                      std::optional<float> minRadius, std::optional<float> maxRadius,
                      const std::optional<std::string>& polarity, float minScore) {
  const auto img = toImage(array);
  const auto settings = findSettingsOf(radius, minRadius, maxRadius, polarity, minScore);
  const auto result = unlocked([&] { return orva::detect::findObjects(*img, settings); });
  const ObjectTable rows(static_cast<py::ssize_t>(result.objects.size()), result.objects.data());
  return py::make_tuple(rows, estimateOf(result.used));
}

Estimate estimateSettings(const py::array& array) {
  const auto img = toImage(array);
  return estimateOf(unlocked([&] { return orva::detect::estimateSettings(*img); }));
}

Estimate combinedEstimate(const std::vector<Estimate>& images) {
  std::vector<SettingsEstimate> estimates;
  estimates.reserve(images.size());
  for (const auto& [best, runnerUp] : images) {
    estimates.push_back({guessedSettings(best), guessedSettings(runnerUp)});
  }
  return estimateOf(orva::detect::combinedEstimate(estimates));
}

}  // namespace

Estimate estimateOf(const SettingsEstimate& e) { return {guessOf(e), guessOf(e.runnerUp)}; }

Polarity polarityOf(const std::string& name) {
  return name == "dark" ? Polarity::Dark : Polarity::Bright;
}

orva::formats::Detections detectionsIn(const ObjectTable& table,
                                       const orva::formats::ImageFacts& facts) {
  orva::detect::FindResult result;
  result.objects.assign(table.data(), table.data() + table.size());
  return orva::formats::detectionsOf(facts, {}, result);
}

orva::detect::FindSettings findSettingsOf(std::optional<float> radius,
                                          std::optional<float> minRadius,
                                          std::optional<float> maxRadius,
                                          const std::optional<std::string>& polarity,
                                          float minScore) {
  orva::detect::FindSettings settings{radius, minRadius, maxRadius, {}, minScore};
  if (polarity) settings.polarity = polarityOf(*polarity);
  return settings;
}

void addObjects(py::module_& module) {
  PYBIND11_NUMPY_DTYPE(Object, x, y, radius, score, coverage);
  module.attr("OBJECT") = py::dtype::of<Object>();
  module.attr("RADIUS_RANGE") = orva::detect::kRadiusRange;
  module.def("find_objects", findObjects);
  module.def("estimate_settings", estimateSettings);
  module.def("combined_estimate", combinedEstimate);
}

}  // namespace orva_python
