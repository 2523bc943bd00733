#include <exception>
#include <filesystem>

#include "formats/file_error.h"
#include "python/src/arrays.h"

namespace {

// A message may name files by bytes that are no UTF-8.
void setError(PyObject* type, const char* message) {
  const auto text =
      pybind11::reinterpret_steal<pybind11::object>(PyUnicode_DecodeFSDefault(message));
  if (text) PyErr_SetObject(type, text.ptr());
}

}  // namespace

// The functions take what the callers in Python have checked, without options left open.
PYBIND11_MODULE(_orva, module) {
  module.doc() = "The compiled part of orva.";
  module.attr("__version__") = ORVA_VERSION;
  static const pybind11::exception<orva::formats::FileError> fileError(module, "FileError");
  // pybind11 takes the pointer by value. NOLINTNEXTLINE(performance-unnecessary-value-param)
  pybind11::register_exception_translator([](std::exception_ptr error) {
    try {
      if (error) std::rethrow_exception(error);
    } catch (const orva::formats::FileError& e) {
      setError(fileError.ptr(), e.what());
    } catch (const std::filesystem::filesystem_error& e) {
      setError(PyExc_OSError, e.what());
    }
  });
  orva_python::addCallSettings(module);
  orva_python::addObjects(module);
  orva_python::addSegmentation(module);
  orva_python::addVoting(module);
  orva_python::addFilters(module);
  orva_python::addRegions(module);
  orva_python::addMasks(module);
  orva_python::addFiles(module);
  orva_python::addBatch(module);
}
