#include "web/native/request.h"

#include <array>
#include <cstdint>
#include <cstring>
#include <optional>
#include <stdexcept>
#include <string_view>
#include <utility>

#include "formats/raster.h"

namespace orva::web {
namespace {

using formats::ColourModel;
using formats::SampleType;

template <class T>
const T* pointerIn(const Json& json) {
  // NOLINTNEXTLINE(performance-no-int-to-ptr): JavaScript knows addresses as numbers only.
  return reinterpret_cast<const T*>(json.at("data").get<std::uintptr_t>());
}

SampleType sampleTypeOf(std::string_view name) {
  constexpr std::array<std::pair<std::string_view, SampleType>, 7> kTypes{
      {{"uint8", SampleType::kUint8},
       {"int8", SampleType::kInt8},
       {"uint16", SampleType::kUint16},
       {"int16", SampleType::kInt16},
       {"uint32", SampleType::kUint32},
       {"int32", SampleType::kInt32},
       {"float32", SampleType::kFloat32}}};
  for (const auto& [typeName, type] : kTypes) {
    if (typeName == name) return type;
  }
  throw std::invalid_argument("no pixel type " + std::string(name));
}

// Of an option that may be missing or null.
template <class T>
void set(T& to, const Json& options, const char* name) {
  const auto found = options.find(name);
  if (found != options.end() && !found->is_null()) to = found->get<T>();
}
template <class T>
void set(std::optional<T>& to, const Json& options, const char* name) {
  const auto found = options.find(name);
  if (found != options.end() && !found->is_null()) to = found->get<T>();
}

detect::Polarity polarityOf(const std::string& name) {
  return name == "dark" ? detect::Polarity::Dark : detect::Polarity::Bright;
}

std::optional<detect::Polarity> polarityIn(const Json& options) {
  std::optional<std::string> name;
  set(name, options, "polarity");
  return name ? std::optional(polarityOf(*name)) : std::nullopt;
}

}  // namespace

std::unique_ptr<Image> imageIn(const Json& json) {
  const auto channels = json.at("channels").get<std::size_t>();
  formats::Raster raster(json.at("width").get<std::size_t>(), json.at("height").get<std::size_t>(),
                         channels, channels < 3 ? ColourModel::kGrey : ColourModel::kRgb,
                         sampleTypeOf(json.at("type").get<std::string>()));
  std::memcpy(raster.row(0), pointerIn<char>(json), raster.height() * raster.rowBytes());
  return raster.toImage(formats::ColourUse::kLuminance);
}

image<int> labelsIn(const Json& json) {
  image<int> labels(json.at("width").get<int>(), json.at("height").get<int>(), 1, 1, 1);
  std::memcpy(labels.pixels(), pointerIn<char>(json),
              static_cast<std::size_t>(labels.npix()) * sizeof(int));
  return labels;
}

std::vector<detect::Object> objectsIn(const Json& json) {
  const auto* from = pointerIn<detect::Object>(json);
  return {from, from + json.at("count").get<std::size_t>()};
}

detect::FindSettings findSettingsIn(const Json& options) {
  detect::FindSettings s;
  set(s.radius, options, "radius");
  set(s.minRadius, options, "minRadius");
  set(s.maxRadius, options, "maxRadius");
  set(s.minScore, options, "minScore");
  s.polarity = polarityIn(options);
  return s;
}

detect::SegmentSettings segmentSettingsIn(const Json& options) {
  detect::SegmentSettings s;
  set(s.minArea, options, "minArea");
  set(s.maxArea, options, "maxArea");
  set(s.excludeBorder, options, "excludeBorder");
  s.polarity = polarityIn(options);
  return s;
}

voting::VoteSettings voteSettingsIn(const Json& options) {
  voting::VoteSettings s;
  std::string polarity = "bright";
  set(polarity, options, "polarity");
  s.polarity = polarity == "bright" ? voting::CircularVoting::Bright
               : polarity == "dark" ? voting::CircularVoting::Dark
                                    : voting::CircularVoting::Both;
  set(s.minRadius, options, "minRadius");
  set(s.maxRadius, options, "maxRadius");
  set(s.coneWidth, options, "coneWidth");
  set(s.sigma, options, "sigma");
  set(s.gradient, options, "gradient");
  set(s.relativeGradient, options, "relativeGradient");
  set(s.threshold, options, "threshold");
  set(s.relativeThreshold, options, "relativeThreshold");
  set(s.edges, options, "edges");
  set(s.power, options, "power");
  return s;
}

formats::RegionSettings regionSettingsIn(const Json& options) {
  formats::RegionSettings s;
  set(s.threshold, options, "threshold");
  set(s.scale, options, "auto");
  set(s.minSize, options, "minSize");
  set(s.maxSize, options, "maxSize");
  set(s.fill, options, "fill");
  return s;
}

detect::Settings settingsIn(const Json& json) {
  return {json.at("radius").get<float>(), polarityOf(json.at("polarity").get<std::string>()),
          json.at("confidence").get<float>()};
}

Json jsonOf(const detect::Settings& s) {
  return {{"radius", s.radius},
          {"polarity", formats::nameOf(s.polarity)},
          {"confidence", s.confidence}};
}

Json jsonOf(const detect::SettingsEstimate& estimate) {
  Json json = jsonOf(static_cast<const detect::Settings&>(estimate));
  json["runnerUp"] = jsonOf(estimate.runnerUp);
  return json;
}

formats::ImageFacts factsIn(const Json& json, const Image& img) {
  formats::ImageFacts facts{"image", 0, img.nx(), img.ny()};
  set(facts.file, json, "file");
  set(facts.frame, json, "frame");
  set(facts.position.c, json, "c");
  set(facts.position.z, json, "z");
  set(facts.position.t, json, "t");
  const auto& at = facts.position;
  facts.position.isInHyperstack = at.c.has_value() + at.z.has_value() + at.t.has_value() > 1;
  set(facts.position.isInHyperstack, json, "hyperstack");
  set(facts.pixelSize, json, "pixelSize");
  return facts;
}

}  // namespace orva::web
