// What is found in the images of a file as the bytes of a table or of a file of shapes.
#ifndef ORVA_FORMATS_RESULT_TABLE_H
#define ORVA_FORMATS_RESULT_TABLE_H

#include <string>
#include <vector>

#include "formats/detections.h"

namespace orva::formats {

enum class TableFormat { kCsv, kJson, kGeoJson, kRoi, kNapari };

// The format that the name of a file means: JSON for .json, GeoJSON for .geojson, an ROI set for
// .zip, CSV for any other; with .gz behind it the same.
TableFormat formatOf(const std::string& path);

// The extension of files of a format, ".csv" for example.
const char* extensionOf(TableFormat format);

// Whether a format draws contours.
bool drawsContours(TableFormat format);

// The results of the images of a file, at least one, with the same columns. What goes to a file
// whose name `path` ends in .gz is compressed. Throws FileError for an ROI set that cannot be made.
std::string encodeTable(const std::vector<Detections>& images, TableFormat format,
                        const std::string& path = "");

// A header line, then one row per detection, with the columns t and z at the end as far as the
// images have them.
std::string csvOf(const std::vector<Detections>& images);

// A document per image; several in an array.
std::string jsonOf(const std::vector<Detections>& images);

// The points that napari reads: index, then the axes t and z as far as the images have them, y and
// x, named axis-0, axis-1, ...
std::string napariPointsOf(const std::vector<Detections>& images);

// The value of a cell as text, "true" or "false" for flags.
std::string cellText(Column::Kind kind, double value);

}  // namespace orva::formats

#endif
