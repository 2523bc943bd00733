#include "orva/bip/bip.h"
#include "orva/bip/silent.h"
#include "python/src/arrays.h"

namespace orva_python {
namespace {

// What change(mask) leaves, in the array's own type.
template <class Change>
py::array changed(const py::array& array, const Change& change) {
  auto mask = toImageOf<unsigned char>(array);
  unlocked([&] { change(mask); });
  return holdsTruth(array) ? toTruth(mask, shapeOf(array)) : toArray(mask, shapeOf(array));
}

py::array erodeMask(const py::array& array) {
  return changed(array, [](Bytes& mask) { orva::bip::erode(mask); });
}

py::array erodeLabels(const py::array& array) {
  auto labels = toImageOf<short>(array);
  unlocked([&] { orva::bip::erode(labels); });
  return toArray(labels, shapeOf(array));
}

py::array dilate(const py::array& array) {
  return changed(array, [](Bytes& mask) { orva::bip::dilate(mask); });
}

py::array fillHoles(const py::array& array) {
  return changed(array, [](Bytes& mask) { orva::bip::silent::removeInternalStructures(mask); });
}

py::array edge(const py::array& array) {
  const auto img = toImage(array);
  return toTruth(unlocked([&] { return orva::bip::edge(*img); }), shapeOf(array));
}

}  // namespace

void addMasks(py::module_& module) {
  module.def("erode_mask", erodeMask);
  module.def("erode_labels", erodeLabels);
  module.def("dilate", dilate);
  module.def("fill_holes", fillHoles);
  module.def("edge", edge);
}

}  // namespace orva_python
