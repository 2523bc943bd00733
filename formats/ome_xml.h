// OME-XML, the description of the axes in OME-TIFF files.
#ifndef ORVA_FORMATS_OME_XML_H
#define ORVA_FORMATS_OME_XML_H

#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "formats/image_axes.h"

namespace orva::formats {

// Whether the description of a TIFF file's first page is OME-XML.
bool isOmeXml(std::string_view description);

// The names of the images that the OME-XML of a file describes, in their order; "" for one without.
// Throws FileError for text that is not well-formed or too long.
std::vector<std::string> omeImages(std::string_view xml);

// The axes that the OME-XML of a file gives for its image `series`, counted from 0. Entities beyond
// the predefined ones are not expanded, and nothing outside the text is read. A text that is not
// UTF-8 counts as Latin-1; the names are printableUtf8().
//
// The file has `pages` pages; samplesOf(page) is the number of samples that a page interleaves: 1
// for grey, 3 or 4 for colour.
//
// Throws FileError for text that is not well-formed or too long, sizes that are missing, out of
// range or do not fit the pages, a set of several files, an image behind the first of several that
// does not name its pages, and where `series` is left open and there are several images, with a
// list of them.
ImageAxes omeAxes(std::string_view xml, std::optional<int> series, int pages,
                  const std::function<int(int page)>& samplesOf);

// The OME-XML of a file whose pages are the planes of `axes` with channels varying fastest, then
// slices. `type` is OME's name of the pixel type; a page has `samples` samples per pixel.
std::string omeXml(const ImageAxes& axes, int nx, int ny, const char* type, int samples);

}  // namespace orva::formats

#endif
