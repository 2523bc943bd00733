#include <pybind11/stl.h>

#include <array>

#include "orva/bip/bip.h"
#include "orva/scalespace/scalespace.h"
#include "python/src/arrays.h"

namespace orva_python {
namespace {

namespace scalespace = orva::scalespace;

using Sigmas = std::array<float, 3>;  // along x, y and the frames
using Orders = std::array<int, 3>;

// What filter(image) makes of the array, in its shape.
template <class Filter>
py::array filtered(const py::array& array, const Filter& filter) {
  const auto img = toImage(array);
  return toArray(unlocked([&] { return filter(*img); }), shapeOf(array));
}

py::array gaussian(const py::array& array, const Sigmas& s, const Orders& o) {
  return filtered(array, [&](const orva::Image& img) {
    return scalespace::gaussian(img, s[0], s[1], s[2], o[0], o[1], o[2]);
  });
}

py::array smooth(const py::array& array, const Sigmas& s) {
  return filtered(
      array, [&](const orva::Image& img) { return scalespace::smooth(img, s[0], s[1], s[2]); });
}

py::array gradient(const py::array& array, float sigma, float ratio) {
  return filtered(array,
                  [&](const orva::Image& img) { return scalespace::gradient(img, sigma, ratio); });
}

py::array laplacian(const py::array& array, float sigma) {
  return filtered(array, [&](const orva::Image& img) { return scalespace::laplacian(img, sigma); });
}

py::array features(const py::array& array, float sigma, int type, float ratio) {
  const auto img = toImage(array);
  const Bytes mask = unlocked([&] {
    return scalespace::features(*img, sigma, static_cast<orva::FeatureType>(type), ratio);
  });
  return toTruth(mask, shapeOf(array));
}

py::array threshold(const py::array& array, float level) {
  const auto img = toImage(array);
  const Bytes mask = unlocked([&] { return orva::bip::threshold(*img, level); });
  return toTruth(mask, shapeOf(array));
}

float computeThreshold(const py::array& array, float scale) {
  const auto img = toImage(array);
  return unlocked([&] { return orva::bip::computeThreshold(*img, scale); });
}

}  // namespace

void addFilters(py::module_& module) {
  module.def("gaussian", gaussian);
  module.def("smooth", smooth);
  module.def("gradient", gradient);
  module.def("laplacian", laplacian);
  module.def("features", features);
  module.def("threshold", threshold);
  module.def("compute_threshold", computeThreshold);
}

}  // namespace orva_python
