#include "python/src/arrays.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>

namespace orva_python {
namespace {

constexpr std::size_t kMaxAxes = 5;

// Of an axis counted from the last one, x; 1 where there is none.
int sizeOf(const py::array& array, std::size_t fromLast) {
  const auto axes = static_cast<std::size_t>(array.ndim());
  if (fromLast >= axes) return 1;
  const py::ssize_t size = array.shape(static_cast<py::ssize_t>(axes - 1 - fromLast));
  if (size > INT32_MAX) throw py::value_error("the array is too large");
  return static_cast<int>(size);
}

template <class T>
std::unique_ptr<orva::Image> copied(const py::array& array) {
  std::int64_t pixels = array.size();
  if (pixels < 1 || pixels > INT32_MAX) throw py::value_error("the array is empty or too large");
  auto img = std::make_unique<orva::image<T>>(sizeOf(array, 0), sizeOf(array, 1), sizeOf(array, 2),
                                              sizeOf(array, 3), sizeOf(array, 4));
  // NumPy copies from any memory layout.
  const py::capsule notOwned(img->pixels(), [](void*) {});
  const py::array to(py::dtype::of<T>(), shapeOf(array), img->pixels(), notOwned);
  if (py::detail::npy_api::get().PyArray_CopyInto_(to.ptr(), array.ptr()) < 0) {
    throw py::error_already_set();
  }
  return img;
}

std::unique_ptr<orva::Image> copiedTruth(const py::array& array) {
  std::unique_ptr<orva::Image> img = copied<unsigned char>(array);
  auto* pixels = static_cast<unsigned char*>(img->data());
  std::transform(pixels, pixels + img->npix(), pixels,
                 [](unsigned char v) { return static_cast<unsigned char>(v != 0 ? 255 : 0); });
  return img;
}

}  // namespace

Shape shapeOf(const py::array& array) { return {array.shape(), array.shape() + array.ndim()}; }

bool holdsTruth(const py::array& array) { return array.dtype().kind() == 'b'; }

std::unique_ptr<orva::Image> toImage(const py::array& array) {
  const auto axes = static_cast<std::size_t>(array.ndim());
  if (axes < 2 || axes > kMaxAxes) throw py::value_error("the array has not 2 to 5 axes");
  const py::dtype type = array.dtype();
  if (holdsTruth(array)) return copiedTruth(array);
  if (type.equal(py::dtype::of<unsigned char>())) return copied<unsigned char>(array);
  if (type.equal(py::dtype::of<short>())) return copied<short>(array);
  if (type.equal(py::dtype::of<int>())) return copied<int>(array);
  if (type.equal(py::dtype::of<unsigned int>())) return copied<unsigned int>(array);
  if (type.equal(py::dtype::of<float>())) return copied<float>(array);
  throw py::type_error("the array has a pixel type that images do not have");
}

py::array toTruth(const Bytes& mask, const Shape& shape) {
  std::transform(mask.pixels(), mask.pixels() + mask.npix(), mask.pixels(),
                 [](unsigned char v) { return static_cast<unsigned char>(v != 0 ? 1 : 0); });
  return toArray(mask, shape, py::dtype::of<bool>());
}

}  // namespace orva_python
