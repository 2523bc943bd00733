#include "formats/result_table.h"

#include <cmath>
#include <cstddef>
#include <cstdint>
#include <nlohmann/json.hpp>
#include <optional>

#include "formats/geojson.h"
#include "formats/gzip.h"
#include "formats/roi_set.h"
#include "formats/text.h"

namespace orva::formats {
namespace {

using Json = nlohmann::ordered_json;
using Kind = Column::Kind;

constexpr double kExactlyWhole = 9007199254740992;  // below it every whole number is a double

Json jsonValue(Kind kind, double v) {
  switch (kind) {
    case Kind::kFlag:
      return v != 0;
    case Kind::kWhole:
      return static_cast<std::int64_t>(v);
    case Kind::kDouble:
      if (!std::isfinite(v)) return nullptr;
      if (v == std::trunc(v) && std::fabs(v) < kExactlyWhole) return static_cast<std::int64_t>(v);
      return v;
    default:
      return parsedDecimal(cellText(kind, v));
  }
}

std::string documentOf(const Detections& d) {
  Json document{{"image", d.facts.file}, {"frame", d.facts.frame}};
  const auto& position = d.facts.position;
  if (const auto t = d.facts.t ? d.facts.t : position.t) document["t"] = *t;
  if (const auto z = d.facts.z ? d.facts.z : position.z) document["z"] = *z;
  if (position.c) document["channel"] = *position.c;
  if (!d.facts.projection.empty()) document["projection"] = d.facts.projection;
  if (d.facts.level > 0) document["level"] = d.facts.level;
  document["width"] = d.facts.width;
  document["height"] = d.facts.height;
  if (d.facts.pixelSize) document["pixel_size_um"] = *d.facts.pixelSize;
  document["settings"] = Json::parse(d.settings);
  Json rows = Json::array();
  for (std::size_t row = 0; row < d.rows(); ++row) {
    Json object;
    for (std::size_t k = 0; k < d.columns.size(); ++k) {
      object[d.columns[k].name] = jsonValue(d.columns[k].kind, d.value(row, k));
    }
    rows.push_back(std::move(object));
  }
  document[d.what] = std::move(rows);
  return document.dump(2, ' ', false, Json::error_handler_t::replace);
}

// ",VALUE" for what the images have.
std::string optionalCell(const std::optional<int>& v) {
  return v ? ',' + std::to_string(*v) : std::string();
}

}  // namespace

TableFormat formatOf(const std::string& path) {
  const std::string extension = extensionOf(path);
  if (extension == ".gz") return formatOf(path.substr(0, path.size() - extension.size()));
  if (extension == ".json") return TableFormat::kJson;
  if (extension == ".geojson") return TableFormat::kGeoJson;
  return extension == ".zip" ? TableFormat::kRoi : TableFormat::kCsv;
}

const char* extensionOf(TableFormat format) {
  switch (format) {
    case TableFormat::kJson:
      return ".json";
    case TableFormat::kGeoJson:
      return ".geojson";
    case TableFormat::kRoi:
      return ".zip";
    default:
      return ".csv";
  }
}

bool drawsContours(TableFormat format) {
  return format == TableFormat::kGeoJson || format == TableFormat::kRoi;
}

std::string encodeTable(const std::vector<Detections>& images, TableFormat format,
                        const std::string& path) {
  if (extensionOf(path) == ".gz") return gzipped(encodeTable(images, format, ""));
  switch (format) {
    case TableFormat::kJson:
      return jsonOf(images);
    case TableFormat::kGeoJson:
      return geoJsonOf(images);
    case TableFormat::kRoi:
      return roiSetOf(images);
    case TableFormat::kNapari:
      return napariPointsOf(images);
    default:
      return csvOf(images);
  }
}

std::string csvOf(const std::vector<Detections>& images) {
  std::string text;
  for (const Detections& d : images) {
    const auto addRow = [&](auto cell, const std::string& end) {
      bool isFirst = true;
      for (std::size_t k = 0; k < d.columns.size(); ++k) {
        if (!d.columns[k].isInCsv) continue;
        if (!isFirst) text += ',';
        text += cell(k);
        isFirst = false;
      }
      text += end;
    };
    if (&d == &images.front()) {
      addRow([&](std::size_t k) { return d.columns[k].name; },
             std::string(d.facts.t ? ",t" : "") + (d.facts.z ? ",z" : "") + '\n');
    }
    const std::string end = optionalCell(d.facts.t) + optionalCell(d.facts.z) + '\n';
    for (std::size_t row = 0; row < d.rows(); ++row) {
      addRow([&](std::size_t k) { return cellText(d.columns[k].kind, d.value(row, k)); }, end);
    }
  }
  return text;
}

std::string jsonOf(const std::vector<Detections>& images) {
  if (images.size() == 1) return documentOf(images.front()) + '\n';
  std::string text = "[\n";
  for (const Detections& d : images) {
    if (&d != &images.front()) text += ",\n";
    text += documentOf(d);
  }
  return text + "\n]\n";
}

std::string napariPointsOf(const std::vector<Detections>& images) {
  const ImageFacts& facts = images.front().facts;
  const int axes = 2 + (facts.t ? 1 : 0) + (facts.z ? 1 : 0);
  std::string text = "index";
  for (int k = 0; k < axes; ++k) text += ",axis-" + std::to_string(k);
  text += '\n';
  std::size_t index = 0;
  for (const Detections& d : images) {
    const std::string place = optionalCell(d.facts.t) + optionalCell(d.facts.z);
    for (const Detections::Place& p : d.places) {
      text += std::to_string(index++) + place + ',' + trimmedDecimal(p.y) + ',' +
              trimmedDecimal(p.x) + '\n';
    }
  }
  return text;
}

std::string cellText(Kind kind, double value) {
  switch (kind) {
    case Kind::kWhole:
      return std::to_string(static_cast<std::int64_t>(value));
    case Kind::kFloat:
      return shortestDecimal(static_cast<float>(value));
    case Kind::kThousandths:
      return fixed(static_cast<float>(value), 3);
    case Kind::kFlag:
      return value != 0 ? "true" : "false";
    default:
      return shortestDecimal(value);
  }
}

}  // namespace orva::formats
