// Images that their maker fills, for the library's own sources; not installed.
#ifndef ORVA_IMAGE_UNSET_IMAGE_H
#define ORVA_IMAGE_UNSET_IMAGE_H

#include "orva/image/image.h"

namespace orva {

// As image<T>(x, y, z, c, t), but the pixels hold no values yet.
template <class T>
image<T> unsetImage(int x, int y, int z, int c, int t) {
  return image<T>(typename image<T>::Unset{}, x, y, z, c, t);
}

}  // namespace orva

#endif
