// Objects as they pass between Python and the library.
#ifndef ORVA_PYTHON_OBJECTS_H
#define ORVA_PYTHON_OBJECTS_H

#include <string>

#include "orva/detect/detect.h"
#include "python/src/arrays.h"

namespace orva_python {

// Structured arrays of the fields x, y, radius, score and coverage.
using ObjectTable = py::array_t<orva::detect::Object, py::array::c_style>;

// "bright" or "dark".
orva::detect::Polarity polarityOf(const std::string& name);

}  // namespace orva_python

#endif
