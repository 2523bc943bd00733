#include "formats/centers_table.h"

#include <charconv>
#include <nlohmann/json.hpp>

#include "formats/text.h"

namespace orva::formats {
namespace {

using orva::voting::CircularVoting;

const char* nameOf(CircularVoting::RegionType polarity) {
  switch (polarity) {
    case CircularVoting::Bright:
      return "bright";
    case CircularVoting::Dark:
      return "dark";
    default:
      return "both";
  }
}

// A double that prints as shortly as the float does.
double asJson(float v) {
  const std::string text = shortestDecimal(v);
  double value = 0;
  std::from_chars(text.data(), text.data() + text.size(), value);
  return value;
}

}  // namespace

std::string centersAsCsv(const std::vector<Center>& centers) {
  std::string text = "x,y,weight\n";
  for (const Center& c : centers) {
    text +=
        std::to_string(c.x) + ',' + std::to_string(c.y) + ',' + shortestDecimal(c.weight) + '\n';
  }
  return text;
}

std::string centersAsJson(const ImageFacts& facts, const VoteSettings& s,
                          const VoteResult& result) {
  using Json = nlohmann::ordered_json;
  Json settings{{"polarity", nameOf(s.polarity)},     {"min_radius", s.minRadius},
                {"max_radius", s.maxRadius},          {"cone_width", result.used.coneWidth},
                {"sigma", asJson(result.used.sigma)}, {"gradient", asJson(result.used.gradient)}};
  if (!s.gradient) settings["relative_gradient"] = asJson(s.relativeGradient);
  if (s.threshold) {
    settings["threshold"] = asJson(*s.threshold);
  } else {
    settings["relative_threshold"] = asJson(s.relativeThreshold);
  }
  settings["edges"] = s.edges;
  settings["power"] = asJson(s.power);

  Json centers = Json::array();
  for (const Center& c : result.centers) {
    centers.push_back({{"x", c.x}, {"y", c.y}, {"weight", asJson(c.weight)}});
  }
  const Json document{{"image", facts.file},    {"frame", facts.frame}, {"width", facts.width},
                      {"height", facts.height}, {"settings", settings}, {"centers", centers}};
  return document.dump(2, ' ', false, Json::error_handler_t::replace) + '\n';
}

}  // namespace orva::formats
