#include "formats/detections.h"

#include <cmath>
#include <nlohmann/json.hpp>
#include <utility>

#include "formats/result_table.h"
#include "formats/text.h"

namespace orva::formats {
namespace {

using Json = nlohmann::ordered_json;
using orva::voting::CircularVoting;
using Kind = Column::Kind;

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

double asDouble(Kind kind, float v) { return parsedDecimal(cellText(kind, v)); }
// A double that prints as shortly as the float does.
double asJson(float v) { return asDouble(Kind::kFloat, v); }
double asRoundedJson(float v) { return asDouble(Kind::kThousandths, v); }

Json settingsJson(const detect::FindSettings& s, const detect::Settings& used,
                  const ImageFacts& facts) {
  Json settings{{"radius", s.radius ? asJson(*s.radius) : asRoundedJson(used.radius)}};
  if (facts.pixelSize) {
    settings["radius_um"] =
        asJson(static_cast<float>(s.radius.value_or(used.radius) * *facts.pixelSize));
  }
  settings["polarity"] = formats::nameOf(used.polarity);
  settings["min_score"] = asJson(s.minScore);
  if (s.minRadius) settings["min_radius"] = asJson(*s.minRadius);
  if (s.maxRadius) settings["max_radius"] = asJson(*s.maxRadius);
  Json estimated = Json::array();
  if (!s.radius) estimated.push_back("radius");
  if (!s.polarity) estimated.push_back("polarity");
  settings["estimated"] = estimated;
  settings["confidence"] = asRoundedJson(used.confidence);
  return settings;
}

// A measurement that is a length, a position or an area.
struct Size {
  const char* name;
  const char* inMicrometres;
  int power;
};

constexpr Size kSizes[] = {
    {"area", "area_um2", 2},
    {"perimeter", "perimeter_um", 1},
    {"major_axis_length", "major_axis_length_um", 1},
    {"minor_axis_length", "minor_axis_length_um", 1},
    {"equivalent_diameter_area", "equivalent_diameter_area_um", 1},
    {"centroid-0", "centroid-0_um", 1},
    {"centroid-1", "centroid-1_um", 1},
};

}  // namespace

const char* nameOf(detect::Polarity polarity) {
  return polarity == detect::Polarity::Bright ? "bright" : "dark";
}

Detections detectionsOf(const ImageFacts& facts, const VoteSettings& s, const VoteResult& result) {
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

  Detections d;
  d.facts = facts;
  d.settings = settings.dump();
  d.what = "centers";
  d.columns = {{"x", Kind::kWhole}, {"y", Kind::kWhole}, {"weight", Kind::kFloat}};
  const std::optional<double>& size = facts.pixelSize;
  if (size) {
    for (const char* name : {"x_um", "y_um"}) d.columns.push_back({name, Kind::kFloat});
  }
  d.shape = Detections::Shape::kPoints;
  for (const Center& c : result.centers) {
    d.values.insert(d.values.end(),
                    {static_cast<double>(c.x), static_cast<double>(c.y), double{c.weight}});
    if (size) d.values.insert(d.values.end(), {c.x * *size, c.y * *size});
    d.places.push_back({static_cast<double>(c.x), static_cast<double>(c.y)});
  }
  return d;
}

Detections detectionsOf(const ImageFacts& facts, const detect::FindSettings& settings,
                        const detect::FindResult& result) {
  Detections d;
  d.facts = facts;
  d.settings = settingsJson(settings, result.used, facts).dump();
  d.what = "objects";
  d.columns = {{"x", Kind::kThousandths},
               {"y", Kind::kThousandths},
               {"radius", Kind::kThousandths},
               {"score", Kind::kThousandths},
               {"coverage", Kind::kThousandths, false}};
  const std::optional<double>& size = facts.pixelSize;
  if (size) {
    for (const char* name : {"x_um", "y_um", "radius_um"})
      d.columns.push_back({name, Kind::kFloat});
  }
  d.shape = Detections::Shape::kCircles;
  for (const detect::Object& o : result.objects) {
    for (const float v : {o.x, o.y, o.radius, o.score, o.coverage}) d.values.push_back(v);
    if (size) d.values.insert(d.values.end(), {o.x * *size, o.y * *size, o.radius * *size});
    d.places.push_back({o.x, o.y, o.radius});
  }
  return d;
}

Detections detectionsOf(const ImageFacts& facts, const detect::FindSettings& settings,
                        const detect::SegmentSettings& regionSettings,
                        const detect::FindResult& result,
                        const std::vector<detect::ObjectMeasures>& regions,
                        std::vector<Contour> contours) {
  Json used = settingsJson(settings, result.used, facts);
  used["min_area"] = asJson(regionSettings.minArea);
  if (std::isfinite(regionSettings.maxArea)) used["max_area"] = asJson(regionSettings.maxArea);
  used["exclude_border"] = regionSettings.excludeBorder;
  if (facts.measured) used["measure"] = *facts.measured;
  if (facts.measuredChannel) used["measure_channel"] = *facts.measuredChannel;

  Detections d;
  d.facts = facts;
  d.settings = used.dump(-1, ' ', false, Json::error_handler_t::replace);
  d.what = "objects";
  for (const detect::MeasureColumn& column : detect::measureColumns()) {
    d.columns.push_back({column.name, Kind::kDouble});
  }
  d.columns.push_back({"score", Kind::kThousandths});
  d.columns.push_back({"touches_border", Kind::kFlag});
  // The columns in micrometres with the places of those in pixels.
  std::vector<std::pair<std::size_t, double>> calibrated;
  if (facts.pixelSize) {
    for (const Size& size : kSizes) {
      std::size_t column = 0;
      while (d.columns[column].name != size.name) ++column;
      calibrated.emplace_back(column, std::pow(*facts.pixelSize, size.power));
      d.columns.push_back({size.inMicrometres, Kind::kDouble});
    }
  }
  d.shape = Detections::Shape::kContours;
  for (std::size_t i = 0; i < regions.size(); ++i) {
    const detect::ObjectMeasures& region = regions[i];
    const std::size_t row = d.values.size();
    for (const detect::MeasureColumn& column : detect::measureColumns()) {
      d.values.push_back(column.of(region));
    }
    d.values.push_back(result.objects[i].score);
    d.values.push_back(region.touchesBorder ? 1 : 0);
    for (const auto& [column, factor] : calibrated) {
      d.values.push_back(d.values[row + column] * factor);
    }
    d.places.push_back({region.centroidColumn, region.centroidRow});
  }
  d.contours = std::move(contours);
  return d;
}

}  // namespace orva::formats
