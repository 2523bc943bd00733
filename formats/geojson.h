// Shapes of detections as GeoJSON (RFC 7946) with the members that QuPath reads.
#ifndef ORVA_FORMATS_GEOJSON_H
#define ORVA_FORMATS_GEOJSON_H

#include <string>
#include <vector>

#include "formats/detections.h"
#include "formats/text.h"

namespace orva::formats {

// A FeatureCollection of one feature per row: a Point, a Polygon around a circle, or a Polygon or
// MultiPolygon with holes. Its properties are "objectType": "detection" and the numbers of the row
// as "measurements", without those that are not finite. Coordinates count from the corner of the
// first pixel, whose center is at 0.5. In a file with several channels, slices or times the
// geometry has a "plane".
std::string geoJsonOf(const std::vector<Detections>& images);

// The same, handed on in pieces of a few features.
void writeGeoJson(const std::vector<Detections>& images, const Append& append);

}  // namespace orva::formats

#endif
