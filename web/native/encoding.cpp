#include "web/native/encoding.h"

#include <algorithm>
#include <cstdint>
#include <optional>
#include <stdexcept>
#include <utility>
#include <vector>

#include "formats/contours.h"
#include "formats/file_error.h"
#include "formats/overlay.h"
#include "formats/png_encoder.h"
#include "formats/result_table.h"
#include "orva/detect/measure.h"

namespace orva::web {
namespace {

using formats::Detections;
using formats::TableFormat;

TableFormat tableFormatOf(const std::string& name) {
  if (name == "csv") return TableFormat::kCsv;
  if (name == "json") return TableFormat::kJson;
  if (name == "geojson" || name == "geojson.gz") return TableFormat::kGeoJson;
  if (name == "roi") return TableFormat::kRoi;
  if (name == "napari") return TableFormat::kNapari;
  throw std::invalid_argument("no format " + name);
}

std::string tableOf(const Detections& found, const std::string& format) {
  return formats::encodeTable({found}, tableFormatOf(format), "." + format);
}

// As formats::encodeLabels() writes them to a PNG file.
std::string labelsPng(const image<int>& labels) {
  constexpr int kMaxSample = 65535;
  const int* const begin = labels.pixels();
  const int* const end = begin + labels.npix();
  if (std::any_of(begin, end, [](int v) { return v > kMaxSample; })) {
    throw formats::FileError(
        "the image has more than 65535 objects, the labels that a PNG file holds");
  }
  const std::vector<std::uint16_t> samples(begin, end);
  return formats::encodePng(samples.data(), labels.nx(), labels.ny());
}

detect::FindResult foundIn(const Json& request) {
  detect::FindResult found;
  static_cast<detect::Settings&>(found.used) = settingsIn(request.at("settings"));
  found.objects = objectsIn(request.at("objects"));
  return found;
}

std::string encodedFind(const Json& request, const Image& img, const std::string& format) {
  const detect::FindResult found = foundIn(request);
  if (format == "overlay") return formats::overlayAsPng(img, found.objects);
  return tableOf(formats::detectionsOf(factsIn(request.at("facts"), img),
                                       findSettingsIn(request.at("options")), found),
                 format);
}

std::string encodedSegment(const Json& request, const Image& img, const std::string& format) {
  const image<int> labels = labelsIn(request.at("labels"));
  if (format == "overlay") return formats::outlinesAsPng(img, labels);
  if (format == "labels") return labelsPng(labels);
  const auto other = request.contains("measured") ? imageIn(request.at("measured")) : nullptr;
  const Json& options = request.at("options");
  auto contours = formats::drawsContours(tableFormatOf(format)) ? formats::contoursOf(labels)
                                                                : std::vector<formats::Contour>();
  return tableOf(formats::detectionsOf(factsIn(request.at("facts"), img), findSettingsIn(options),
                                       segmentSettingsIn(options), foundIn(request),
                                       detect::measureObjects(labels, other ? *other : img),
                                       std::move(contours)),
                 format);
}

std::string encodedVote(const Json& request, const Image& img, const std::string& format) {
  const voting::VoteSettings settings = voteSettingsIn(request.at("options"));
  const Json& used = request.at("settings");
  voting::VoteResult result{{used.at("coneWidth").get<int>(), used.at("sigma").get<float>(),
                             used.at("gradient").get<float>()},
                            {}};
  for (const Json& c : request.at("centers")) {
    result.centers.push_back(
        {c.at("x").get<int>(), c.at("y").get<int>(), c.at("weight").get<float>()});
  }
  if (format == "overlay") return formats::overlayAsPng(img, result.centers, settings.maxRadius);
  return tableOf(formats::detectionsOf(factsIn(request.at("facts"), img), settings, result),
                 format);
}

}  // namespace

std::string encoded(const Json& request) {
  const auto img = imageIn(request.at("image"));
  const auto kind = request.at("kind").get<std::string>();
  const auto format = request.at("format").get<std::string>();
  if (kind == "find") return encodedFind(request, *img, format);
  if (kind == "segment") return encodedSegment(request, *img, format);
  if (kind == "vote") return encodedVote(request, *img, format);
  throw std::invalid_argument("no result " + kind);
}

}  // namespace orva::web
