// Lengths and areas as options give them: in pixels, or with a metric unit.
#ifndef ORVA_FORMATS_SIZE_TEXT_H
#define ORVA_FORMATS_SIZE_TEXT_H

#include <optional>
#include <string>

namespace orva::formats {

struct Size {
  double value;  // in pixels or, if isMetric, in micrometres; of an area in squares of them
  bool isMetric;
  int dimension = 1;  // 2 for an area

  // In pixels of this many micrometres. Throws FileError where a metric size needs a pixel size
  // that is not known.
  float inPixels(const std::optional<double>& pixelSize) const;
};

// A number of at least 0, alone or with a unit such as "um" or "nm"; of an area "um2". None for
// other texts.
std::optional<Size> lengthIn(const std::string& text);
std::optional<Size> areaIn(const std::string& text);

}  // namespace orva::formats

#endif
