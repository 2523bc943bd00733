// What a batch needs of files: names, the images of a file, and tables as the command writes them.
#include <pybind11/stl.h>

#include <cstddef>
#include <memory>
#include <optional>
#include <string>
#include <tuple>
#include <utility>
#include <vector>

#include "formats/chosen_images.h"
#include "formats/image_axes.h"
#include "formats/image_list.h"
#include "formats/image_writer.h"
#include "formats/result_table.h"
#include "formats/size_text.h"
#include "python/src/arrays.h"
#include "python/src/files.h"
#include "python/src/tables.h"

namespace orva_python {
namespace {

namespace formats = orva::formats;
using formats::ChosenImages;
using formats::Detections;

std::vector<py::bytes> imagesNamed(const std::string& name) {
  std::vector<py::bytes> names;
  for (const std::string& image : formats::imagesNamed(name)) names.emplace_back(image);
  return names;
}

std::unique_ptr<ChosenImages> open(const std::string& path, std::optional<int> frame,
                                   const std::optional<int>& series,
                                   const std::optional<std::string>& channel,
                                   const std::optional<int>& z, const std::string& slices,
                                   const std::optional<int>& t, bool eachTime, int level) {
  return unlocked([&] {
    return std::make_unique<ChosenImages>(
        path,
        formats::FileChoice{planeChoice(channel, z, slices, t, eachTime), frame, series, level});
  });
}

// The pixels and the width and height of one in micrometres: `pixelSize`, if given, in the full
// size of the image.
py::tuple read(const ChosenImages& images, std::size_t i, std::optional<double> pixelSize) {
  const auto img = unlocked([&] { return images.read(i); });
  formats::PixelSize size = images.axesOf(*img).pixelSize;
  if (pixelSize) size.x = size.y = *pixelSize * images.reductionOf(*img);
  return py::make_tuple(arrayOf(*img, {img->ny(), img->nx()}), size.x, size.y);
}

std::optional<formats::Size> sizeIn(const std::string& text, bool isArea) {
  return isArea ? formats::areaIn(text) : formats::lengthIn(text);
}

// A table of one image of a file with its t and z, and the width and height of a pixel.
template <class Table>
using Part = std::tuple<Table, std::optional<int>, std::optional<int>, std::optional<double>,
                        std::optional<double>>;

// One table of all.
template <class Table>
std::string asCsv(const std::vector<Part<Table>>& parts) {
  std::vector<Detections> images;
  for (const auto& [table, t, z, x, y] : parts) {
    formats::ImageFacts facts{};
    facts.t = t;
    facts.z = z;
    facts.pixelSize = formats::squarePixelSize({x, y, {}});
    images.push_back(detectionsIn(table, facts));
  }
  return formats::csvOf(images);
}

// The TIFF file of labels.
py::bytes asTiff(const py::array& array, std::optional<double> x, std::optional<double> y) {
  const auto labels = toImageOf<int>(array);
  return unlocked([&] { return formats::encodeLabels("labels.tif", labels, {x, y, {}}); });
}

}  // namespace

void addBatch(py::module_& module) {
  py::class_<ChosenImages>(module, "ChosenImages")
      .def(py::init(&open))
      .def("__len__", &ChosenImages::count)
      .def("note", &ChosenImages::note)
      .def("place",
           [](const ChosenImages& images, std::size_t i) {
             const ChosenImages::Place place = images.placeOf(i);
             return py::make_tuple(place.t, place.z, formats::endingOf(place),
                                   formats::fragmentOf(place));
           })
      .def("read", read);
  module.def("images_named", imagesNamed);
  // A length or an area, in pixels or micrometres, and whether it is in these; None for other
  // texts.
  module.def("size_in", [](const std::string& text, bool isArea) {
    const auto size = sizeIn(text, isArea);
    return size ? std::optional(std::pair(size->value, size->isMetric)) : std::nullopt;
  });
  // Of a text that size_in() takes.
  module.def("size_in_pixels",
             [](const std::string& text, bool isArea, const std::optional<double>& pixelSize) {
               return sizeIn(text, isArea).value().inPixels(pixelSize);
             });
  module.def("objects_as_csv", asCsv<ObjectTable>);
  module.def("regions_as_csv", asCsv<RegionTable>);
  module.def("centers_as_csv", asCsv<CenterTable>);
  module.def("labels_as_tiff", asTiff);
}

}  // namespace orva_python
