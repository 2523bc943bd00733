// The picture of a result: the grey image with coloured marks.
#ifndef ORVA_FORMATS_OVERLAY_H
#define ORVA_FORMATS_OVERLAY_H

#include <string>
#include <vector>

#include "formats/vote.h"
#include "orva/detect/detect.h"
#include "orva/image/image.h"

namespace orva::formats {

// A PNG file of the first frame of `img`, stretched to the whole grey range, with orange crosses on
// a black rim, their arms a quarter of `radius` long but readable in any case.
std::string overlayAsPng(const orva::Image& img, const std::vector<Center>& centers, int radius);

// The same with an orange circle of its radius around each object. Values that are not finite, or
// far beyond those of nearly all pixels (hot pixels, dust), do not count for the range of a grey
// image: they become black or white.
std::string overlayAsPng(const orva::Image& img, const std::vector<detect::Object>& objects);

// As the picture with circles, with an outline of each label above 0, one pixel wide: its pixels
// with one of their four neighbours outside the label or the image. The colour is one of six, by
// the label.
std::string outlinesAsPng(const orva::Image& img, const orva::image<int>& labels);

}  // namespace orva::formats

#endif
