#include <algorithm>

#include "orva/image/image.h"

namespace orva {

Roi::Roi(int xmin, int ymin, int xmax, int ymax) { set(xmin, ymin, xmax, ymax); }

Roi::Roi(const std::vector<Point>& points) {
  if (points.empty()) return;
  const Point first = points.front();
  set(first.x, first.y, first.x, first.y);
  for (const Point& p : points) {
    set(std::min<int>(xmin_, p.x), std::min<int>(ymin_, p.y), std::max<int>(xmax_, p.x),
        std::max<int>(ymax_, p.y));
  }
}

void Roi::set(int xmin, int ymin, int xmax, int ymax) {
  xmin_ = xmin;
  ymin_ = ymin;
  xmax_ = xmax;
  ymax_ = ymax;
}

Image* Roi::getSubImage(const Image& img) const {
  return img.roi(Point3D(xmin_, ymin_, 0), Point3D(xmax_, ymax_, 0));
}

Image* Roi::getSubImage(const Image& img, const Roi& r) { return r.getSubImage(img); }

Image* Roi::getSubImage(const Image& img, int xmin, int ymin, int xmax, int ymax) {
  return Roi(xmin, ymin, xmax, ymax).getSubImage(img);
}

}  // namespace orva
