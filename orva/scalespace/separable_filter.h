// Separable filters of images: one kernel per axis. For the library's own sources; not installed.
#ifndef ORVA_SCALESPACE_SEPARABLE_FILTER_H
#define ORVA_SCALESPACE_SEPARABLE_FILTER_H

#include "orva/image/image.h"
#include "orva/scalespace/convolution.h"

namespace orva::scalespace {

// The kernels along x, y and the frames. That of an axis of length 1 is not read.
struct AxisKernels {
  const Kernel* x;
  const Kernel* y;
  const Kernel* z;
};

// An image with uninitialized pixels for the result of filterAxes(); null where `source` has no
// float form.
image<float> resultFor(const Image& source);

// Filters along x, then y, then the frames into `result`, which comes from resultFor(). An axis of
// length 1 is skipped.
void filterAxes(const Image& source, Border border, const AxisKernels& kernels,
                image<float>& result);

}  // namespace orva::scalespace

#endif
