#include <pybind11/stl.h>

#include <optional>
#include <string>

#include "formats/vote.h"
#include "python/src/arrays.h"
#include "python/src/tables.h"

namespace orva_python {
namespace {

using orva::formats::VoteSettings;
using orva::voting::CircularVoting;

VoteSettings settingsOf(const std::string& polarity, int minRadius, int maxRadius,
                        std::optional<int> coneWidth, std::optional<float> sigma,
                        std::optional<float> gradient, float relativeGradient,
                        std::optional<float> threshold, float relativeThreshold, bool edges,
                        float power) {
  const auto type = polarity == "bright" ? CircularVoting::Bright
                    : polarity == "dark" ? CircularVoting::Dark
                                         : CircularVoting::Both;
  return {type,      minRadius,         maxRadius, coneWidth, sigma, gradient, relativeGradient,
          threshold, relativeThreshold, edges,     power};
}

py::array findCenters(const py::array& array, const VoteSettings& settings) {
  const auto img = toImage(array);
  const auto result = unlocked([&] { return orva::formats::vote(*img, settings); });
  CenterTable rows(static_cast<py::ssize_t>(result.centers.size()));
  CenterRow* row = rows.mutable_data();
  for (const orva::formats::Center& c : result.centers) *row++ = {c.x, c.y, c.weight};
  return rows;
}

py::array voteField(const py::array& array, const VoteSettings& settings) {
  const auto img = toImage(array);
  const auto field = unlocked([&] { return orva::formats::voteField(*img, settings); });
  return toArray(field, shapeOf(array));
}

}  // namespace

orva::formats::Detections detectionsIn(const CenterTable& table,
                                       const orva::formats::ImageFacts& facts) {
  orva::formats::VoteResult result;
  for (const CenterRow* row = table.data(); row != table.data() + table.size(); ++row) {
    result.centers.push_back({row->x, row->y, row->weight});
  }
  return orva::formats::detectionsOf(facts, VoteSettings(), result);
}

void addVoting(py::module_& module) {
  PYBIND11_NUMPY_DTYPE(CenterRow, x, y, weight);
  py::class_<VoteSettings>(module, "VoteSettings")
      .def(py::init(&settingsOf), py::kw_only(), py::arg("polarity"), py::arg("min_radius"),
           py::arg("max_radius"), py::arg("cone_width"), py::arg("sigma"), py::arg("gradient"),
           py::arg("relative_gradient"), py::arg("threshold"), py::arg("relative_threshold"),
           py::arg("edges"), py::arg("power"));
  module.def("find_centers", findCenters);
  module.def("vote_field", voteField);
  module.def("vote_margin", &orva::voting::voteMargin);
}

}  // namespace orva_python
