#include "formats/result_table.h"

#include <charconv>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <nlohmann/json.hpp>
#include <utility>

#include "formats/text.h"

namespace orva::formats {
namespace {

using Json = nlohmann::ordered_json;
using orva::voting::CircularVoting;

constexpr double kExactlyWhole = 9007199254740992;  // below it every whole number is a double

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

double parsed(const std::string& text) {
  double value = 0;
  std::from_chars(text.data(), text.data() + text.size(), value);
  return value;
}

// A double that prints as shortly as the float does.
double asJson(float v) { return parsed(shortestDecimal(v)); }

// Lengths and scores in thousandths, which is finer than any of them is known.
std::string rounded(float v) { return fixed(v, 3); }

double asRoundedJson(float v) { return parsed(rounded(v)); }

std::string documentOf(const ImageFacts& facts, const Json& settings, const char* what,
                       const Json& found) {
  Json document{{"image", facts.file}, {"frame", facts.frame}};
  if (facts.t) document["t"] = *facts.t;
  if (facts.z) document["z"] = *facts.z;
  document["width"] = facts.width;
  document["height"] = facts.height;
  document["settings"] = settings;
  document[what] = found;
  return document.dump(2, ' ', false, Json::error_handler_t::replace) + '\n';
}

Json asJson(const detect::FindSettings& s, const detect::Settings& used) {
  Json settings{{"radius", s.radius ? asJson(*s.radius) : asRoundedJson(used.radius)},
                {"polarity", formats::nameOf(used.polarity)},
                {"min_score", asJson(s.minScore)}};
  if (s.minRadius) settings["min_radius"] = asJson(*s.minRadius);
  if (s.maxRadius) settings["max_radius"] = asJson(*s.maxRadius);
  Json estimated = Json::array();
  if (!s.radius) estimated.push_back("radius");
  if (!s.polarity) estimated.push_back("polarity");
  settings["estimated"] = estimated;
  settings["confidence"] = asRoundedJson(used.confidence);
  return settings;
}

// A whole number without decimals; null for what is no number.
Json asNumber(double v) {
  if (!std::isfinite(v)) return nullptr;
  if (v == std::trunc(v) && std::fabs(v) < kExactlyWhole) return static_cast<std::int64_t>(v);
  return v;
}

}  // namespace

std::string joinedTables(const std::vector<std::pair<ImageFacts, std::string>>& tables,
                         TableFormat format) {
  std::string text = format == TableFormat::kJson ? "[\n" : "";
  for (const auto& [facts, table] : tables) {
    const bool isFirst = &facts == &tables.front().first;
    if (format == TableFormat::kJson) {
      text += (isFirst ? "" : ",\n") + table.substr(0, table.size() - 1);  // without the newline
      continue;
    }
    const auto columns = [&f = facts](const std::string& t, const std::string& z) {
      return (f.t ? ',' + t : "") + (f.z ? ',' + z : "") + '\n';
    };
    const std::string header = columns("t", "z");
    const std::string place =
        columns(std::to_string(facts.t.value_or(0)), std::to_string(facts.z.value_or(0)));
    for (std::size_t at = 0; at < table.size();) {
      const std::size_t end = table.find('\n', at);
      if (at > 0 || isFirst) text += table.substr(at, end - at) + (at == 0 ? header : place);
      at = end + 1;
    }
  }
  return format == TableFormat::kJson ? text + "\n]\n" : text;
}

const char* nameOf(detect::Polarity polarity) {
  return polarity == detect::Polarity::Bright ? "bright" : "dark";
}

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
  return documentOf(facts, settings, "centers", centers);
}

std::string objectsAsCsv(const std::vector<detect::Object>& objects) {
  std::string text = "x,y,radius,score\n";
  for (const detect::Object& o : objects) {
    text +=
        rounded(o.x) + ',' + rounded(o.y) + ',' + rounded(o.radius) + ',' + rounded(o.score) + '\n';
  }
  return text;
}

std::string objectsAsJson(const ImageFacts& facts, const detect::FindSettings& settings,
                          const detect::FindResult& result) {
  Json objects = Json::array();
  for (const detect::Object& o : result.objects) {
    objects.push_back({{"x", asRoundedJson(o.x)},
                       {"y", asRoundedJson(o.y)},
                       {"radius", asRoundedJson(o.radius)},
                       {"score", asRoundedJson(o.score)},
                       {"coverage", asRoundedJson(o.coverage)}});
  }
  return documentOf(facts, asJson(settings, result.used), "objects", objects);
}

std::string regionsAsCsv(const std::vector<detect::ObjectMeasures>& regions,
                         const std::vector<detect::Object>& objects) {
  std::string text;
  for (const detect::MeasureColumn& column : detect::measureColumns()) {
    text += column.name;
    text += ',';
  }
  text += "score,touches_border\n";
  for (std::size_t i = 0; i < regions.size(); ++i) {
    for (const detect::MeasureColumn& column : detect::measureColumns()) {
      text += shortestDecimal(column.of(regions[i])) + ',';
    }
    text += rounded(objects[i].score) + (regions[i].touchesBorder ? ",true\n" : ",false\n");
  }
  return text;
}

std::string regionsAsJson(const ImageFacts& facts, const detect::FindSettings& settings,
                          const detect::SegmentSettings& regionSettings,
                          const detect::FindResult& result,
                          const std::vector<detect::ObjectMeasures>& regions) {
  Json used = asJson(settings, result.used);
  used["min_area"] = asJson(regionSettings.minArea);
  if (std::isfinite(regionSettings.maxArea)) used["max_area"] = asJson(regionSettings.maxArea);
  used["exclude_border"] = regionSettings.excludeBorder;
  Json objects = Json::array();
  for (std::size_t i = 0; i < regions.size(); ++i) {
    Json object;
    for (const detect::MeasureColumn& column : detect::measureColumns()) {
      object[column.name] = asNumber(column.of(regions[i]));
    }
    object["score"] = asRoundedJson(result.objects[i].score);
    object["touches_border"] = regions[i].touchesBorder;
    objects.push_back(std::move(object));
  }
  return documentOf(facts, used, "objects", objects);
}

}  // namespace orva::formats
