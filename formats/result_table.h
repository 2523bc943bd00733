// What is found in one image as text: a CSV table or a JSON document.
#ifndef ORVA_FORMATS_RESULT_TABLE_H
#define ORVA_FORMATS_RESULT_TABLE_H

#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "formats/vote.h"
#include "orva/detect/detect.h"
#include "orva/detect/measure.h"
#include "orva/detect/segment.h"

namespace orva::formats {

enum class TableFormat { kCsv, kJson };

// A header line "x,y,weight", then one row per center.
std::string centersAsCsv(const std::vector<Center>& centers);

// A header line "x,y,radius,score", then one row per object, rounded to thousandths.
std::string objectsAsCsv(const std::vector<detect::Object>& objects);

// The image that a JSON document describes.
struct ImageFacts {
  std::string file;
  int frame;  // page of the file, the first of a projection
  int width;
  int height;
  // For one of several images of the file.
  std::optional<int> t{};
  std::optional<int> z{};
};

// Tables of several images of a file in one format as one: CSV tables with the columns t and z as
// far as the images have them, JSON documents in an array.
std::string joinedTables(const std::vector<std::pair<ImageFacts, std::string>>& tables,
                         TableFormat format);

std::string centersAsJson(const ImageFacts& facts, const VoteSettings& settings,
                          const VoteResult& result);

// The settings say what was told or estimated; objects are rounded as in the CSV table.
std::string objectsAsJson(const ImageFacts& facts, const detect::FindSettings& settings,
                          const detect::FindResult& result);

// A header line, then one row per region: its measurements in the order and with the names of
// detect::measureColumns(), the score of the object in the same place of `objects`, and whether it
// touches the border ("true" or "false").
std::string regionsAsCsv(const std::vector<detect::ObjectMeasures>& regions,
                         const std::vector<detect::Object>& objects);

// The same with the settings; `result` has the objects of the regions.
std::string regionsAsJson(const ImageFacts& facts, const detect::FindSettings& settings,
                          const detect::SegmentSettings& regionSettings,
                          const detect::FindResult& result,
                          const std::vector<detect::ObjectMeasures>& regions);

// "bright" or "dark".
const char* nameOf(detect::Polarity polarity);

}  // namespace orva::formats

#endif
