// Shapes of detections as ImageJ's ROI sets.
#ifndef ORVA_FORMATS_ROI_SET_H
#define ORVA_FORMATS_ROI_SET_H

#include <string>
#include <vector>

#include "formats/detections.h"

namespace orva::formats {

// A ZIP archive of .roi files: one multi-point ROI per image, an oval per circle, or per contour a
// traced ROI, a composite one where it has holes or several parts. The names are the numbers of the
// rows, counted from 1 over all images, those of points "FIRST-LAST". An ROI has a position where
// the file has several channels, slices or times. Throws FileError if the archive cannot be made.
std::string roiSetOf(const std::vector<Detections>& images);

}  // namespace orva::formats

#endif
