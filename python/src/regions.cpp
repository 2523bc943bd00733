#include <pybind11/stl.h>

#include <algorithm>
#include <optional>
#include <vector>

#include "formats/silence.h"
#include "orva/bip/bip.h"
#include "python/src/arrays.h"

namespace orva_python {
namespace {

using orva::RegionFeature;
using orva::formats::Silence;

// Labels run out: the library leaves the pixels of further regions without one.
void requireAllLabelled(const Bytes& img, int value, const Labels& labels) {
  for (int i = 0; i < labels.npix(); ++i) {
    if (labels.pixels()[i] < 0 && (value < 0 || img.pixels()[i] == value)) {
      throw py::value_error("there are more than 32768 regions");
    }
  }
}

py::tuple label(const py::array& array, int value, int reach, int connectivity) {
  const auto img = toImageOf<unsigned char>(array);
  int n = 0;
  const Labels labels = unlocked([&] {
    const Silence silence;
    Labels result =
        orva::bip::regions(img, n, value, reach, static_cast<orva::NeighborhoodType>(connectivity));
    requireAllLabelled(img, value, result);
    return result;
  });
  return py::make_tuple(toArray(labels, shapeOf(array)), n);
}

template <class T>
py::array column(const std::vector<RegionFeature>& features, T RegionFeature::*field) {
  py::array_t<T> values(static_cast<py::ssize_t>(features.size()));
  std::transform(features.begin(), features.end(), values.mutable_data(),
                 [field](const RegionFeature& f) { return f.*field; });
  return values;
}

py::dict measure(const py::array& array, const std::optional<py::array>& brightness) {
  const auto labels = toImageOf<short>(array);
  const auto img = brightness ? toImage(*brightness) : nullptr;
  const auto features = unlocked([&] {
    return img ? orva::bip::regionFeatures(labels, *img) : orva::bip::regionFeatures(labels);
  });
  py::dict table;
  table["xmin"] = column(features, &RegionFeature::xmin);
  table["xmax"] = column(features, &RegionFeature::xmax);
  table["ymin"] = column(features, &RegionFeature::ymin);
  table["ymax"] = column(features, &RegionFeature::ymax);
  table["zmin"] = column(features, &RegionFeature::zmin);
  table["zmax"] = column(features, &RegionFeature::zmax);
  table["cx"] = column(features, &RegionFeature::cx);
  table["cy"] = column(features, &RegionFeature::cy);
  table["cz"] = column(features, &RegionFeature::cz);
  table["radius"] = column(features, &RegionFeature::radius);
  table["npix"] = column(features, &RegionFeature::npix);
  if (img) {
    table["mean"] = column(features, &RegionFeature::mean);
    table["var"] = column(features, &RegionFeature::var);
  }
  return table;
}

py::array chamfer(const py::array& array) {
  const auto img = toImage(array);
  return toArray(unlocked([&] { return orva::bip::fchamfer(*img); }), shapeOf(array));
}

py::array propagate(const py::array& array, float maxDistance) {
  auto labels = toImageOf<short>(array);
  unlocked([&] { orva::bip::propagate(labels, maxDistance); });
  return toArray(labels, shapeOf(array));
}

// Of labels, or of the regions of a mask.
py::array convexHull(const py::array& array, int precision) {
  const auto img = toImage(array);
  return toArray(unlocked([&] {
                   const Silence silence;  // it tells the number of regions
                   if (const auto* given = dynamic_cast<const Labels*>(img.get())) {
                     Labels labels = *given;
                     orva::bip::convexHull(labels, precision);
                     return labels;
                   }
                   const auto& mask = dynamic_cast<const Bytes&>(*img);
                   int n = 0;
                   Labels labels = orva::bip::regions(mask, n, 255, 1, orva::NEIGHBORHOOD_4);
                   requireAllLabelled(mask, 255, labels);
                   orva::bip::convexHull(labels, precision);
                   return labels;
                 }),
                 shapeOf(array));
}

}  // namespace

void addRegions(py::module_& module) {
  module.def("label", label);
  module.def("measure", measure);
  module.def("chamfer", chamfer);
  module.def("propagate", propagate);
  module.def("convex_hull", convexHull);
}

}  // namespace orva_python
