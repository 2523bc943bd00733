/// @file
/// Both point types.
#ifndef ORVA_IMAGE_POINTS_H
#define ORVA_IMAGE_POINTS_H

#include "orva/image/point.h"    // IWYU pragma: export
#include "orva/image/point3d.h"  // IWYU pragma: export

#endif
