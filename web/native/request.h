// What JavaScript asks for, read from its description in JSON. Pixels and lists of numbers are in
// the memory of the module, at addresses that the description gives.
#ifndef ORVA_WEB_NATIVE_REQUEST_H
#define ORVA_WEB_NATIVE_REQUEST_H

#include <cstddef>
#include <memory>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "formats/detections.h"
#include "formats/thresholded_regions.h"
#include "orva/detect/detect.h"
#include "orva/detect/segment.h"
#include "orva/image/image.h"
#include "orva/voting/find_centers.h"

namespace orva::web {

using Json = nlohmann::json;

// {"data": address, "width", "height", "type": the type of the array, "channels": 1, or 3 or 4 for
// red, green and blue}. An image as the command reads it from a file.
std::unique_ptr<Image> imageIn(const Json& json);

// Labels, {"data": address, "width", "height"}.
image<int> labelsIn(const Json& json);

// {"data": address, "count"}.
std::vector<detect::Object> objectsIn(const Json& json);

// Options by their names in JavaScript; null and missing ones keep their defaults.
detect::FindSettings findSettingsIn(const Json& options);
detect::SegmentSettings segmentSettingsIn(const Json& options);
voting::VoteSettings voteSettingsIn(const Json& options);
formats::RegionSettings regionSettingsIn(const Json& options);

// {"radius", "polarity", "confidence"}.
detect::Settings settingsIn(const Json& json);
Json jsonOf(const detect::Settings& settings);
// The same with the "runnerUp".
Json jsonOf(const detect::SettingsEstimate& estimate);

// {"file", "frame", "c", "z", "t", "hyperstack", "pixelSize"} for an image of this size.
formats::ImageFacts factsIn(const Json& json, const Image& img);

}  // namespace orva::web

#endif
