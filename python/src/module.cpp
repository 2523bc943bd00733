#include <filesystem>

#include "apps/file_error.h"
#include "apps/silence.h"
#include "python/src/arrays.h"

// The functions take what the callers in Python have checked, without options left open.
PYBIND11_MODULE(_orva, module) {
  orva_app::Silence::prepare();
  module.doc() = "The compiled part of orva.";
  module.attr("__version__") = ORVA_VERSION;
  pybind11::register_exception<orva_app::FileError>(module, "FileError");
  // pybind11 wants the pointer by value. NOLINTNEXTLINE(performance-unnecessary-value-param)
  pybind11::register_exception_translator([](std::exception_ptr error) {
    try {
      if (error) std::rethrow_exception(error);
    } catch (const std::filesystem::filesystem_error& e) {
      PyErr_SetString(PyExc_OSError, e.what());
    }
  });
  orva_python::addVoting(module);
  orva_python::addFilters(module);
  orva_python::addRegions(module);
  orva_python::addMasks(module);
  orva_python::addFiles(module);
}
