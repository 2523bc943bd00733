// The centers of one image as text: a CSV table or a JSON document.
#ifndef ORVA_FORMATS_CENTERS_TABLE_H
#define ORVA_FORMATS_CENTERS_TABLE_H

#include <string>
#include <vector>

#include "formats/vote.h"

namespace orva::formats {

enum class TableFormat { kCsv, kJson };

// A header line "x,y,weight", then one row per center.
std::string centersAsCsv(const std::vector<Center>& centers);

// The image that a JSON document describes.
struct ImageFacts {
  std::string file;
  int frame;
  int width;
  int height;
};

std::string centersAsJson(const ImageFacts& facts, const VoteSettings& settings,
                          const VoteResult& result);

}  // namespace orva::formats

#endif
