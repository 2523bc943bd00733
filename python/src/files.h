// What the functions that read files share.
#ifndef ORVA_PYTHON_FILES_H
#define ORVA_PYTHON_FILES_H

#include <optional>
#include <string>

#include "formats/plane_choice.h"
#include "orva/image/image.h"
#include "python/src/arrays.h"

namespace orva_python {

// The pixels of a grey image of any type as an array of a shape.
py::array arrayOf(const orva::Image& img, const Shape& shape);

// `slices` and `eachTime` are what is asked for without a number: "max", "mean", "all" or "".
orva::formats::PlaneChoice planeChoice(const std::optional<std::string>& channel,
                                       const std::optional<int>& z, const std::string& slices,
                                       const std::optional<int>& t, bool eachTime);

}  // namespace orva_python

#endif
