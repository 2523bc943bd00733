// Results of filters in the pixel type of the image that they come from.
#ifndef ORVA_FORMATS_KEPT_TYPE_H
#define ORVA_FORMATS_KEPT_TYPE_H

#include <memory>

#include "orva/image/image.h"

namespace orva::formats {

// `values` rounded to the nearest whole numbers (halves away from 0), in the pixel type of `like`;
// itself, with its pixels shared, for a `like` in floats or in colour. Throws FileError for values
// that this type does not hold, or with `isUnsigned16` unsigned 16 bits.
std::unique_ptr<orva::Image> inTypeOf(const orva::Image& like, const orva::image<float>& values,
                                      bool isUnsigned16);

}  // namespace orva::formats

#endif
