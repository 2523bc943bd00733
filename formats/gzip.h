// Compression of whole files.
#ifndef ORVA_FORMATS_GZIP_H
#define ORVA_FORMATS_GZIP_H

#include <string>

namespace orva::formats {

// The text as a gzip file without a name and a time.
std::string gzipped(const std::string& text);

}  // namespace orva::formats

#endif
