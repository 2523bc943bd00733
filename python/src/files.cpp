#include "python/src/files.h"

#include <pybind11/stl.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstring>
#include <mutex>
#include <optional>
#include <string>
#include <type_traits>
#include <utility>
#include <variant>
#include <vector>

#include "formats/chosen_images.h"
#include "formats/colour_planes.h"
#include "formats/file_error.h"
#include "formats/image_file.h"
#include "formats/image_source.h"
#include "formats/image_writer.h"
#include "formats/output_file.h"
#include "formats/plane_choice.h"
#include "python/src/arrays.h"

namespace orva_python {
namespace {

namespace formats = orva::formats;

template <class T>
py::array typedArrayOf(const orva::Image& img, const Shape& shape) {
  return toArray(dynamic_cast<const orva::image<T>&>(img), shape);
}

}  // namespace

py::array arrayOf(const orva::Image& img, const Shape& shape) {
  switch (img.format()) {
    case orva::BYTE:
      return typedArrayOf<unsigned char>(img, shape);
    case orva::SHORT:
      return typedArrayOf<short>(img, shape);
    case orva::INT:
      return typedArrayOf<int>(img, shape);
    case orva::UINT:
      return typedArrayOf<unsigned int>(img, shape);
    default:
      return typedArrayOf<float>(img, shape);
  }
}

formats::PlaneChoice planeChoice(const std::optional<std::string>& channel,
                                 const std::optional<int>& z, const std::string& slices,
                                 const std::optional<int>& t, bool eachTime) {
  formats::PlaneChoice choice;
  choice.channel = channel;
  choice.z = z;
  if (slices == "max") choice.projection = formats::Projection::kMax;
  if (slices == "mean") choice.projection = formats::Projection::kMean;
  choice.eachSlice = slices == "all";
  choice.t = t;
  choice.eachTime = eachTime;
  return choice;
}

namespace {

// What a file says of its pixels beside them.
struct Notes {
  std::vector<std::string> axes{};
  formats::PixelSize pixelSize{};
  std::vector<std::string> channelNames{""};
  bool isUnsigned16 = false;
};

// The pixels, the names of the axes, the sizes of a pixel along x, y and z, the names of channels,
// and whether the file has unsigned 16-bit samples, which the array holds in wider ones.
py::tuple describedResult(const py::array& pixels, const Notes& notes, bool isUnsigned16) {
  const formats::PixelSize& size = notes.pixelSize;
  return py::make_tuple(pixels, py::tuple(py::cast(notes.axes)),
                        py::make_tuple(size.x, size.y, size.z),
                        py::tuple(py::cast(notes.channelNames)), isUnsigned16);
}

py::tuple resultOf(const orva::Image& img, Shape shape, Notes notes) {
  shape.insert(shape.end(), {img.ny(), img.nx()});
  notes.axes.insert(notes.axes.end(), {"y", "x"});
  return describedResult(arrayOf(img, shape), notes,
                         notes.isUnsigned16 && img.format() == orva::INT);
}

py::tuple readFrame(const std::string& path, int frame) {
  Notes notes;
  const auto img = unlocked([&] {
    formats::FileChoice choice;
    choice.frame = frame;
    const formats::ChosenImages images(path, choice);
    auto pixels = images.read(0);
    notes.pixelSize = images.axesOf(*pixels).pixelSize;
    notes.isUnsigned16 = pixels->format() == orva::INT && images.isUnsigned16();
    return pixels;
  });
  return resultOf(*img, {}, notes);
}

// What is kept of a file, slices varying fastest, as in an array.
formats::KeptPlanes keptOf(const formats::ImageSource& source, const formats::PlaneChoice& choice) {
  formats::KeptPlanes planes = formats::keepPlanes(source.axes(), choice);
  std::stable_sort(planes.images.begin(), planes.images.end(), [](const auto& p, const auto& q) {
    return std::pair(p.t, p.c) < std::pair(q.t, q.c);
  });
  return planes;
}

// The sizes of the axes before y and x, and the notes on planes of nx by ny pixels.
Shape fileShape(const formats::ImageSource& source, const formats::KeptPlanes& planes, int nx,
                int ny, Notes& notes) {
  Shape shape;
  const formats::ImageAxes& kept = planes.kept;
  const auto add = [&](int count, const char* name) {
    if (count == 1) return;
    shape.push_back(count);
    notes.axes.emplace_back(name);
  };
  add(kept.nt, "t");
  add(kept.nc, "c");
  add(kept.nz, kept.areKnown || planes.axes.areKnown ? "z" : "page");
  notes.channelNames = kept.channelNames;
  notes.pixelSize = source.pixelSizeOf(nx, ny);
  notes.pixelSize.z = kept.pixelSize.z;
  return shape;
}

py::tuple read(const std::string& path, const std::optional<int>& series,
               const formats::PlaneChoice& choice, int level) {
  Notes notes;
  Shape shape;
  const auto img = unlocked([&] {
    const formats::ImageSource source(path, series);
    const formats::KeptPlanes planes = keptOf(source, choice);
    formats::PlaneStack stack;
    for (const formats::PlanarImage& image : planes.images) {
      stack.add(formats::readPlanar(source, planes.axes, image, level));
    }
    std::unique_ptr<orva::Image> pixels = stack.take();
    shape = fileShape(source, planes, pixels->nx(), pixels->ny(), notes);
    notes.isUnsigned16 = source.isUnsigned16();
    return pixels;
  });
  return resultOf(*img, shape, notes);
}

using Colour =
    std::variant<formats::ColourPlanes<std::uint8_t>, formats::ColourPlanes<std::uint16_t>>;

// None yet, of the samples of a raster. Throws FileError for one that is not such colour.
Colour colourLike(const formats::Raster* raster) {
  if (raster != nullptr && formats::ColourPlanes<std::uint8_t>::holds(*raster)) {
    return formats::ColourPlanes<std::uint8_t>();
  }
  if (raster != nullptr && formats::ColourPlanes<std::uint16_t>::holds(*raster)) {
    return formats::ColourPlanes<std::uint16_t>();
  }
  throw formats::FileError("holds no colour of 8 or 16 bits; read it without channel_axis");
}

Colour colourOfFrame(const std::string& path, int frame, Notes& notes) {
  const auto raster = formats::readFrameRaster(path, frame);
  Colour colour = colourLike(raster ? &*raster : nullptr);
  std::visit([&](auto& planes) { planes.add(*raster); }, colour);
  formats::FileChoice choice;
  choice.frame = frame;
  const auto nx = static_cast<int>(raster->width());
  const auto ny = static_cast<int>(raster->height());
  notes.pixelSize = formats::ChosenImages(path, choice).axesOf(nx, ny).pixelSize;
  return colour;
}

Colour colourOfPlanes(const formats::ImageSource& source, const formats::PlaneChoice& choice,
                      int level, Shape& shape, Notes& notes) {
  const formats::KeptPlanes planes = keptOf(source, choice);
  const formats::PlanarImage& first = planes.images.front();
  if (!first.z) throw formats::FileError("is in colour, which has no maximum or mean over slices");
  const int page = formats::requiredPage(planes.axes, {first.c, *first.z, first.t});
  Colour colour = colourLike(source.readRaster(page, level).get());
  std::visit(
      [&](auto& all) {
        using Value = typename std::decay_t<decltype(all)>::Value;
        all = formats::colourPlanes<Value>(source, planes, level);
        shape = fileShape(source, planes, all.nx, all.ny, notes);
      },
      colour);
  return colour;
}

// As read() or, for a frame, readFrame(), with red, green and blue along a last axis "rgb".
py::tuple readColour(const std::string& path, const std::optional<int>& frame,
                     const std::optional<int>& series, const formats::PlaneChoice& choice,
                     int level) {
  Notes notes;
  Shape shape;
  const Colour colour = unlocked([&] {
    if (frame) return colourOfFrame(path, *frame, notes);
    return colourOfPlanes(formats::ImageSource(path, series), choice, level, shape, notes);
  });
  const py::array array = std::visit(
      [&](const auto& planes) -> py::array {
        shape.insert(shape.end(), {planes.ny, planes.nx, 3});
        py::array_t<typename std::decay_t<decltype(planes)>::Value> result(shape);
        std::memcpy(result.mutable_data(), planes.pixels.data(),
                    static_cast<std::size_t>(result.nbytes()));
        return result;
      },
      colour);
  notes.axes.insert(notes.axes.end(), {"y", "x", "rgb"});
  return describedResult(array, notes, false);
}

// One file after the other, for the list of temporary files has no lock.
template <class Write>
void writeOneByOne(const Write& write) {
  static std::mutex one;
  unlocked([&] {
    const std::lock_guard lock(one);
    write();
  });
}

using PixelSizes = std::array<std::optional<double>, 3>;  // x, y, z

// Of `planes` planes, whose meaning is unknown if a size is 0.
formats::ImageAxes axesOf(const std::array<int, 3>& sizes, int planes, const PixelSizes& pixelSize,
                          const std::vector<std::string>& channelNames) {
  formats::ImageAxes axes;
  axes.areKnown = sizes[0] > 0 || planes == 1;
  axes.nc = std::max(1, sizes[0]);
  axes.nz = sizes[0] > 0 ? sizes[1] : planes;
  axes.nt = std::max(1, sizes[2]);
  axes.pixelSize = {pixelSize[0], pixelSize[1], pixelSize[2]};
  axes.channelNames = channelNames;
  return axes;
}

// Planes with channels varying fastest; `sizes` counts channels, slices and times, 0 where their
// meaning is unknown.
void write(const std::string& path, const py::array& array, bool stretch, bool isUnsigned16,
           const std::array<int, 3>& sizes, const PixelSizes& pixelSize,
           const std::vector<std::string>& channelNames) {
  const auto img = toImage(array);
  writeOneByOne([&] {
    formats::writeImageFile(
        path, *img, stretch ? formats::Fit::kStretched : formats::Fit::kExactly,
        {axesOf(sizes, img->nframes(), pixelSize, channelNames), isUnsigned16, true});
  });
}

// Planes (n, y, x, 3) of bytes or unsigned 16-bit samples.
void writeColour(const std::string& path, const py::array& array, const std::array<int, 3>& sizes,
                 const PixelSizes& pixelSize) {
  const auto n = static_cast<int>(array.shape(0));
  const auto ny = static_cast<int>(array.shape(1));
  const auto nx = static_cast<int>(array.shape(2));
  const auto count = static_cast<std::size_t>(array.size());
  const formats::ImageAxes axes = axesOf(sizes, n, pixelSize, {});
  if (array.itemsize() == 1) {
    orva::image<orva::GenericRgb<unsigned char>> img(nx, ny, n, 1, 1);
    std::memcpy(static_cast<void*>(img.pixels()), array.data(), count);
    writeOneByOne([&] {
      formats::writeImageFile(path, img, formats::Fit::kExactly, {axes, false});
    });
    return;
  }
  std::vector<orva::GenericRgb<std::uint16_t>> pixels(count / 3);
  std::memcpy(static_cast<void*>(pixels.data()), array.data(), count * sizeof(std::uint16_t));
  writeOneByOne([&] { formats::writeFiles(formats::encodeColour16(path, pixels, nx, ny, axes)); });
}

}  // namespace

void addFiles(py::module_& module) {
  module.def("read_frame", readFrame);
  module.def("read",
             [](const std::string& path, const std::optional<int>& series,
                const std::optional<std::string>& channel, const std::optional<int>& z,
                const std::string& slices, const std::optional<int>& t, bool eachTime, int level) {
               return read(path, series, planeChoice(channel, z, slices, t, eachTime), level);
             });
  module.def(
      "read_colour",
      [](const std::string& path, const std::optional<int>& frame, const std::optional<int>& series,
         const std::optional<std::string>& channel, const std::optional<int>& z,
         const std::string& slices, const std::optional<int>& t, bool eachTime, int level) {
        return readColour(path, frame, series, planeChoice(channel, z, slices, t, eachTime), level);
      });
  module.def("square_pixel_size", [](std::optional<double> x, std::optional<double> y) {
    return formats::squarePixelSize({x, y, {}});
  });
  module.def("write", write);
  module.def("write_colour", writeColour);
  module.def("holds_colour", formats::holdsColour);
  module.def("holds_colour_16", formats::holdsColour16);
  module.def("is_writable", formats::isWritable);
  module.def("writable_extensions", formats::writableExtensions);
}

}  // namespace orva_python
