// What is found in one image: the rows of a table, and where they are on the image.
#ifndef ORVA_FORMATS_DETECTIONS_H
#define ORVA_FORMATS_DETECTIONS_H

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

#include "formats/contours.h"
#include "formats/image_axes.h"
#include "formats/vote.h"
#include "orva/detect/detect.h"
#include "orva/detect/measure.h"
#include "orva/detect/segment.h"

namespace orva::formats {

// The image that results describe.
struct ImageFacts {
  std::string file;
  int frame;  // page of the file, the first of a projection
  int width;
  int height;
  // For one of several images of the file.
  std::optional<int> t{};
  std::optional<int> z{};
  StackPosition position{};
  std::string projection{};  // "max" or "mean" of several slices
  int level = 0;
  // Micrometres per pixel, of an image with square pixels of known size.
  std::optional<double> pixelSize{};
  // The file and the channel whose brightness is measured, where these are others.
  std::optional<std::string> measured{};
  std::optional<std::string> measuredChannel{};
};

// A column of a table; its values are doubles in memory.
struct Column {
  enum class Kind {
    kWhole,        // a whole number
    kFloat,        // a float, as the shortest decimal that reads back as it
    kThousandths,  // a float, rounded to thousandths
    kDouble,       // a double, as the shortest decimal; whole numbers without decimals
    kFlag,         // 0 or 1: false or true
  };

  std::string name;
  Kind kind;
  bool isInCsv = true;
};

struct Detections {
  ImageFacts facts;
  std::string settings;   // a JSON object of what was told or estimated
  const char* what = "";  // what the rows are: "centers" or "objects"
  std::vector<Column> columns;
  std::vector<double> values;  // row by row

  // How the rows are drawn: as points, as circles or as contours.
  enum class Shape { kPoints, kCircles, kContours } shape = Shape::kPoints;
  // The center of each row, pixel centers being at whole numbers, and the radius of its circle.
  struct Place {
    double x;
    double y;
    double radius = 0;
  };
  std::vector<Place> places;
  std::vector<Contour> contours;  // of each row, for kContours

  std::size_t rows() const { return values.size() / columns.size(); }
  double value(std::size_t row, std::size_t column) const {
    return values[row * columns.size() + column];
  }
};

// Rows of x, y and weight; where the size of a pixel is known, x_um and y_um, too.
Detections detectionsOf(const ImageFacts& facts, const VoteSettings& settings,
                        const VoteResult& result);

// Rows of x, y, radius, score and, outside CSV tables, coverage; where the size of a pixel is
// known, x_um, y_um and radius_um, too.
Detections detectionsOf(const ImageFacts& facts, const detect::FindSettings& settings,
                        const detect::FindResult& result);

// Rows of the measurements in the order and with the names of detect::measureColumns(), the score
// of the object in the same place of `result`, and whether the region touches the border; where the
// size of a pixel is known, the areas, lengths and centroids in micrometres, too. `contours` may be
// empty where no shapes are needed.
Detections detectionsOf(const ImageFacts& facts, const detect::FindSettings& settings,
                        const detect::SegmentSettings& regionSettings,
                        const detect::FindResult& result,
                        const std::vector<detect::ObjectMeasures>& regions,
                        std::vector<Contour> contours);

// "bright" or "dark".
const char* nameOf(detect::Polarity polarity);

}  // namespace orva::formats

#endif
