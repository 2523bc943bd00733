// The picture of a result: the grey image with a coloured cross at each centre.
#ifndef ORVA_APPS_OVERLAY_H
#define ORVA_APPS_OVERLAY_H

#include <string>
#include <vector>

#include "apps/vote.h"
#include "orva/image/image.h"

namespace orva_app {

// A PNG file of the first frame of `img`, stretched to the whole grey range, with orange crosses on
// a black rim, their arms a quarter of `radius` long but readable in any case.
std::string overlayAsPng(const orva::Image& img, const std::vector<Center>& centers, int radius);

}  // namespace orva_app

#endif
