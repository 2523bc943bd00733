#include "formats/geojson.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <numbers>
#include <string_view>
#include <utility>

#include "formats/result_table.h"
#include "formats/text.h"

namespace orva::formats {
namespace {

constexpr double kHalf = 0.5;  // from the center of a pixel to its edge
constexpr double kPi = std::numbers::pi;

using Point = std::pair<double, double>;

// A closed ring.
template <class PointAt>
void appendRing(std::string& text, std::size_t n, PointAt pointAt) {
  text += '[';
  for (std::size_t i = 0; i <= n; ++i) {
    const auto [x, y] = pointAt(i % n);
    text += (i == 0 ? "[" : ",[") + trimmedDecimal(x) + ',' + trimmedDecimal(y) + ']';
  }
  text += ']';
}

// Vertices so that the sides of the polygon stay within a tenth of a pixel of the circle, in
// quarters, so that it has the box of the circle.
std::size_t verticesOf(double radius) {
  constexpr double kTolerance = 0.1;
  constexpr std::size_t kMin = 16;
  constexpr std::size_t kMax = 512;
  if (!(radius > kTolerance)) return kMin;
  const double quarter = std::ceil(kPi / 4 / std::acos(1 - kTolerance / radius));
  return std::clamp(4 * static_cast<std::size_t>(quarter), kMin, kMax);
}

// Positive by the sum of x0 y1 - x1 y0, as in RFC 7946.
void appendCircle(std::string& text, const Detections::Place& p) {
  const std::size_t n = verticesOf(p.radius);
  text += '[';
  appendRing(text, n, [&](std::size_t i) -> Point {
    // The four points on the axes are exact.
    constexpr std::array<std::array<double, 2>, 4> kAxes{{{1, 0}, {0, 1}, {-1, 0}, {0, -1}}};
    const double angle = 2 * kPi * static_cast<double>(i) / static_cast<double>(n);
    const std::array<double, 2> unit =
        i % (n / 4) == 0 ? kAxes[i / (n / 4)] : std::array{std::cos(angle), std::sin(angle)};
    return {p.x + kHalf + p.radius * unit[0], p.y + kHalf + p.radius * unit[1]};
  });
  text += ']';
}

void appendPolygon(std::string& text, const Polygon& polygon) {
  const auto append = [&](const Ring& ring) {
    appendRing(text, ring.size(), [&](std::size_t i) -> Point {
      return {static_cast<double>(ring[i].x), static_cast<double>(ring[i].y)};
    });
  };
  text += '[';
  append(polygon.outer);
  for (const Ring& hole : polygon.holes) {
    text += ',';
    append(hole);
  }
  text += ']';
}

void appendGeometry(std::string& text, const Detections& d, std::size_t row) {
  if (d.shape == Detections::Shape::kContours) {
    const std::vector<Polygon>& polygons = d.contours[row].polygons;
    if (polygons.size() == 1) {
      text += R"("type":"Polygon","coordinates":)";
      appendPolygon(text, polygons.front());
      return;
    }
    text += R"("type":"MultiPolygon","coordinates":[)";
    for (const Polygon& polygon : polygons) {
      if (&polygon != &polygons.front()) text += ',';
      appendPolygon(text, polygon);
    }
    text += ']';
    return;
  }
  const Detections::Place& p = d.places[row];
  if (d.shape == Detections::Shape::kPoints) {
    text += R"("type":"Point","coordinates":[)" + trimmedDecimal(p.x + kHalf) + ',' +
            trimmedDecimal(p.y + kHalf) + ']';
    return;
  }
  text += R"("type":"Polygon","coordinates":)";
  appendCircle(text, p);
  text += R"(,"isEllipse":true)";  // QuPath makes an ellipse of the box
}

// The plane of an image in a file of several; no channel is -1.
std::string planeOf(const StackPosition& p) {
  if (!p.c && !p.z && !p.t) return "";
  return R"(,"plane":{"c":)" + std::to_string(p.c.value_or(-1)) + R"(,"z":)" +
         std::to_string(p.z.value_or(0)) + R"(,"t":)" + std::to_string(p.t.value_or(0)) + '}';
}

void appendMeasurements(std::string& text, const Detections& d, std::size_t row) {
  bool isFirst = true;
  for (std::size_t k = 0; k < d.columns.size(); ++k) {
    const double v = d.value(row, k);
    if (!std::isfinite(v)) continue;
    if (!isFirst) text += ',';
    isFirst = false;
    const Column::Kind kind = d.columns[k].kind;
    text += '"' + d.columns[k].name +
            "\":" + cellText(kind == Column::Kind::kFlag ? Column::Kind::kWhole : kind, v);
  }
}

}  // namespace

void writeGeoJson(const std::vector<Detections>& images, const Append& append) {
  constexpr std::size_t kPiece = 65536;  // characters
  std::string text = R"({"type":"FeatureCollection","features":[)";
  bool isFirst = true;
  for (const Detections& d : images) {
    const std::string plane = planeOf(d.facts.position);
    for (std::size_t row = 0; row < d.rows(); ++row) {
      text += isFirst ? "\n" : ",\n";
      isFirst = false;
      text += R"({"type":"Feature","geometry":{)";
      appendGeometry(text, d, row);
      text += plane + R"(},"properties":{"objectType":"detection","measurements":{)";
      appendMeasurements(text, d, row);
      text += "}}}";
      if (text.size() < kPiece) continue;
      append(text);
      text.clear();
    }
  }
  append(text + "\n]}\n");
}

std::string geoJsonOf(const std::vector<Detections>& images) {
  std::string text;
  writeGeoJson(images, [&](std::string_view piece) { text += piece; });
  return text;
}

}  // namespace orva::formats
