// NumPy arrays as images of the library, and back.
#ifndef ORVA_PYTHON_ARRAYS_H
#define ORVA_PYTHON_ARRAYS_H

#include <pybind11/numpy.h>
#include <pybind11/pybind11.h>

#include <memory>
#include <stdexcept>
#include <utility>
#include <vector>

#include "orva/image/image.h"
#include "python/src/library_call.h"

namespace orva_python {

namespace py = pybind11;

using Bytes = orva::image<unsigned char>;
using Labels = orva::image<short>;
using Floats = orva::image<float>;
using Shape = std::vector<py::ssize_t>;

Shape shapeOf(const py::array& array);

// The array's pixels in an image of their type, with the sizes (t, c, z, y, x), of which the first
// may be missing. They are copied, so that nothing which other threads do to the array shows. A
// truth value becomes 0 or 255. Throws py::type_error for other pixel types and py::value_error for
// other numbers of axes: the callers in Python say more about both.
std::unique_ptr<orva::Image> toImage(const py::array& array);

// The same where only one type will do.
template <class T>
orva::image<T> toImageOf(const py::array& array) {
  const std::unique_ptr<orva::Image> img = toImage(array);
  if (const auto* typed = dynamic_cast<const orva::image<T>*>(img.get())) return *typed;
  throw py::type_error("the array has another pixel type");
}

bool holdsTruth(const py::array& array);

// An array of the given shape over the pixels of `img`, which no other image may share.
template <class T>
py::array toArray(orva::image<T> img, const Shape& shape, const py::dtype& type) {
  py::ssize_t count = 1;
  for (const py::ssize_t size : shape) count *= size;
  if (count != img.npix()) throw std::runtime_error("the result has another size than the array");
  auto owner = std::make_unique<orva::image<T>>(std::move(img));
  const py::capsule base(owner.get(), [](void* p) { delete static_cast<orva::image<T>*>(p); });
  T* pixels = owner.release()->pixels();
  return {type, shape, pixels, base};
}

template <class T>
py::array toArray(orva::image<T> img, const Shape& shape) {
  return toArray(std::move(img), shape, py::dtype::of<T>());
}

// A mask of 0 and 255 as truth values.
py::array toTruth(const Bytes& mask, const Shape& shape);

// One function per subject, which adds its functions to the module.
void addCallSettings(py::module_& module);
void addObjects(py::module_& module);
void addSegmentation(py::module_& module);
void addVoting(py::module_& module);
void addFilters(py::module_& module);
void addRegions(py::module_& module);
void addMasks(py::module_& module);
void addFiles(py::module_& module);
void addBatch(py::module_& module);

}  // namespace orva_python

#endif
