// The boundaries of labelled regions as polygons along the edges of pixels.
#ifndef ORVA_FORMATS_CONTOURS_H
#define ORVA_FORMATS_CONTOURS_H

#include <vector>

#include "orva/image/image.h"

namespace orva::formats {

// A corner of pixels: pixel (x, y) covers x to x + 1 and y to y + 1.
struct Corner {
  int x;
  int y;

  bool operator==(const Corner&) const = default;
};

// The corners at which a closed line turns, the first not repeated. No corner occurs twice.
using Ring = std::vector<Corner>;

// Pixels that touch along edges. The sum of x0 y1 - x1 y0 over the sides is positive for the outer
// ring and negative for holes; rings may share single corners.
struct Polygon {
  Ring outer;
  std::vector<Ring> holes;
};

struct Contour {
  int label;
  std::vector<Polygon> polygons;  // several where the region is not connected along edges
};

// The contours of the labels above 0 in plane 0, by label; the polygons of a label in the order of
// their first pixels. Memory: about 5 bytes per pixel, and up to 8 per pixel of the largest region.
// Cost: proportional to the pixels.
std::vector<Contour> contoursOf(const orva::image<int>& labels);

}  // namespace orva::formats

#endif
