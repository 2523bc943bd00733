// The operations that JavaScript calls.
#ifndef ORVA_WEB_NATIVE_OPERATIONS_H
#define ORVA_WEB_NATIVE_OPERATIONS_H

#include <string>
#include <vector>

#include "orva/detect/detect.h"
#include "web/native/request.h"

namespace orva::web {

// The parts of a result; those that an operation does not have are empty.
struct Answer {
  Json json;
  std::vector<detect::Object> objects;
  std::vector<double> numbers;  // row by row
  std::vector<int> labels;      // of all pixels
  std::string bytes;            // of a file
};

// Performs the operation that `request` names: "estimate", "find", "segment", "measure",
// "measureLabels", "vote" or "encode". Throws what the operations of the library throw.
Answer perform(const Json& request);

}  // namespace orva::web

#endif
