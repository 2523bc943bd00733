#include <pybind11/stl.h>

#include <algorithm>
#include <optional>
#include <vector>

#include "orva/bip/bip.h"
#include "orva/bip/silent.h"
#include "python/src/arrays.h"

namespace orva_python {
namespace {

using orva::RegionFeature;

orva::bip::silent::Regions labelled(const Bytes& img, int value, int reach, int connectivity) {
  auto result = orva::bip::silent::regions(img, value, reach,
                                           static_cast<orva::NeighborhoodType>(connectivity));
  if (!result.areAllLabelled) throw py::value_error("there are more than 32768 regions");
  return result;
}

py::tuple label(const py::array& array, int value, int reach, int connectivity) {
  const auto img = toImageOf<unsigned char>(array);
  const auto result = unlocked([&] { return labelled(img, value, reach, connectivity); });
  return py::make_tuple(toArray(result.labels, shapeOf(array)), result.n);
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
  const auto hulls = unlocked([&] {
    const auto* given = dynamic_cast<const Labels*>(img.get());
    Labels labels =
        given != nullptr ? *given : labelled(dynamic_cast<const Bytes&>(*img), 255, 1, 4).labels;
    orva::bip::silent::convexHull(labels, precision);
    return labels;
  });
  return toArray(hulls, shapeOf(array));
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
