// Objects as they pass between Python and the library.
#ifndef ORVA_PYTHON_OBJECTS_H
#define ORVA_PYTHON_OBJECTS_H

#include <optional>
#include <string>
#include <tuple>

#include "orva/detect/detect.h"
#include "python/src/arrays.h"

namespace orva_python {

// Structured arrays of the fields x, y, radius, score and coverage.
using ObjectTable = py::array_t<orva::detect::Object, py::array::c_style>;

using Guess = std::tuple<float, std::string, float>;  // radius, polarity, confidence
using Estimate = std::tuple<Guess, Guess>;            // the better one first

Estimate estimateOf(const orva::detect::SettingsEstimate& estimate);

// "bright" or "dark".
orva::detect::Polarity polarityOf(const std::string& name);

// Radii are in pixels; what is left open is estimated.
orva::detect::FindSettings findSettingsOf(std::optional<float> radius,
                                          std::optional<float> minRadius,
                                          std::optional<float> maxRadius,
                                          const std::optional<std::string>& polarity,
                                          float minScore);

}  // namespace orva_python

#endif
