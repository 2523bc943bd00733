#include "orva/image_io/image_io.h"
#include "orva/util/ascii.h"
#include "orva/util/fnp.h"

namespace orva::image_io {

Image* readImage(const std::string& filename) {
  const std::string extension = fnp::extension(filename);
  if (equalIgnoringCase(extension, "pgm")) return readPGM(filename);
  if (equalIgnoringCase(extension, "iht")) return readIHT(filename);
  if (equalIgnoringCase(extension, "ics")) return readICS(filename);
  return nullptr;
}

void writeImage(const std::string& filename, const Image& img) {
  const std::string extension = fnp::extension(fnp::clean(filename));
  if (equalIgnoringCase(extension, "iht")) {
    writeIHT(filename, img);
  } else if (extension == "ics") {  // intended: in small letters only, unlike in readImage
    writeICS(filename, img);
  }
}

}  // namespace orva::image_io
