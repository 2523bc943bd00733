// Shape of the part of an outline that lies inside the image.
#ifndef ORVA_DETECT_POLYGON_H
#define ORVA_DETECT_POLYGON_H

#include "orva/detect/outline.h"

namespace orva::detect {

// Measures of a polygon; lengths in pixels of its level.
struct PolygonShape {
  double area;
  double x;  // centroid, relative to the outline's place
  double y;
  double radius;     // of the disc of the same area
  double axisRatio;  // minor to major axis of the ellipse of the same second moments
  double solidity;   // area as a share of the convex hull's
  double roundness;  // 4 pi area / perimeter^2
};

// The shape of `outline` with its corners moved into the image; an area of 0 when none is left.
PolygonShape shapeOf(const ScaleLevel& level, const Outline& outline);

}  // namespace orva::detect

#endif
