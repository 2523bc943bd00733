#include <pybind11/stl.h>

#include <mutex>
#include <optional>
#include <string>

#include "formats/image_file.h"
#include "formats/image_writer.h"
#include "python/src/arrays.h"

namespace orva_python {
namespace {

// A plane has two axes, a stack three.
template <class T>
py::array arrayOf(const orva::Image& img) {
  Shape shape{img.ny(), img.nx()};
  if (img.nframes() > 1) shape.insert(shape.begin(), img.nframes());
  return toArray(dynamic_cast<const orva::image<T>&>(img), shape);
}

py::array read(const std::string& path, std::optional<int> frame) {
  const auto img = unlocked([&] {
    return orva::formats::readImageFile(path, frame, orva::formats::ColourUse::kLuminance);
  });
  switch (img->format()) {
    case orva::BYTE:
      return arrayOf<unsigned char>(*img);
    case orva::SHORT:
      return arrayOf<short>(*img);
    case orva::INT:
      return arrayOf<int>(*img);
    case orva::UINT:
      return arrayOf<unsigned int>(*img);
    default:
      return arrayOf<float>(*img);
  }
}

// One file after the other, for the list of temporary files has no lock.
void write(const std::string& path, const py::array& array, bool stretch) {
  static std::mutex one;
  const auto img = toImage(array);
  unlocked([&] {
    const std::lock_guard lock(one);
    orva::formats::writeImageFile(
        path, *img, stretch ? orva::formats::Fit::kStretched : orva::formats::Fit::kExactly);
  });
}

}  // namespace

void addFiles(py::module_& module) {
  module.def("read", read);
  module.def("write", write);
  module.def("is_writable", orva::formats::isWritable);
  module.def("writable_extensions", orva::formats::writableExtensions);
}

}  // namespace orva_python
