// Decodes pages of TIFF files.
#ifndef ORVA_FORMATS_TIFF_PAGE_H
#define ORVA_FORMATS_TIFF_PAGE_H

#include "formats/raster.h"
#include "formats/tiff_handle.h"

namespace orva::formats {

// The page that the file stands at. Throws FileError for a damaged page, for one of a kind that is
// not read, and for one of which a part would be left out.
Raster readPage(const TiffHandle& in);

}  // namespace orva::formats

#endif
