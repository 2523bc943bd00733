// Images without the cost of zeroing their pixels, for results that are written in full. For the
// library's own sources; not installed.
#ifndef ORVA_IMAGE_UNINITIALIZED_IMAGE_H
#define ORVA_IMAGE_UNINITIALIZED_IMAGE_H

#include "orva/image/image.h"

namespace orva {

// As image<T>(x, y, z, c, t), with uninitialized pixels.
template <class T>
image<T> uninitializedImage(int x, int y, int z, int c, int t) {
  return image<T>(typename image<T>::Uninitialized{}, x, y, z, c, t);
}

}  // namespace orva

#endif
