// What is found in one image as text: a CSV table or a JSON document.
#ifndef ORVA_FORMATS_RESULT_TABLE_H
#define ORVA_FORMATS_RESULT_TABLE_H

#include <string>
#include <vector>

#include "formats/vote.h"
#include "orva/detect/detect.h"

namespace orva::formats {

enum class TableFormat { kCsv, kJson };

// A header line "x,y,weight", then one row per center.
std::string centersAsCsv(const std::vector<Center>& centers);

// A header line "x,y,radius,score", then one row per object, rounded to thousandths.
std::string objectsAsCsv(const std::vector<detect::Object>& objects);

// The image that a JSON document describes.
struct ImageFacts {
  std::string file;
  int frame;
  int width;
  int height;
};

std::string centersAsJson(const ImageFacts& facts, const VoteSettings& settings,
                          const VoteResult& result);

// The settings say what was told or estimated; objects are rounded as in the CSV table.
std::string objectsAsJson(const ImageFacts& facts, const detect::FindSettings& settings,
                          const detect::FindResult& result);

// "bright" or "dark".
const char* nameOf(detect::Polarity polarity);

}  // namespace orva::formats

#endif
