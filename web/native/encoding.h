// Results as the files that the command writes.
#ifndef ORVA_WEB_NATIVE_ENCODING_H
#define ORVA_WEB_NATIVE_ENCODING_H

#include <string>

#include "web/native/request.h"

namespace orva::web {

// The bytes of the file that `request` describes: the "kind" of result, "find", "segment", "vote"
// or "measure"; the "format", a table's or "overlay" or "labels"; and the image, the settings and
// the numbers of the result. Throws FileError for what a format cannot hold.
std::string encoded(const Json& request);

}  // namespace orva::web

#endif
