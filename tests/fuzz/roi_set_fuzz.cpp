// ROI sets: what is written of any results is read back as they are, and the reader that shows it
// stands any bytes.
#include <minizip/unzip.h>

#include <array>
#include <cmath>
#include <cstdint>
#include <string>
#include <utility>
#include <vector>

#include "formats/contours.h"
#include "formats/detections.h"
#include "formats/roi_set.h"
#include "tests/formats/roi_reader.h"
#include "tests/fuzz/fuzz_target.h"

namespace orva::test {
namespace {

using formats::Detections;

// The files of an archive in their order.
std::vector<std::pair<std::string, std::string>> unzipped(const std::string& bytes) {
  // The reader takes no archive without files.
  if (bytes == "PK\5\6" + std::string(18, '\0')) return {};
  const ContentFile file(bytes);
  const unzFile archive = unzOpen(file.name().c_str());
  require(archive != nullptr, "a ZIP archive");
  std::vector<std::pair<std::string, std::string>> files;
  unz_global_info all{};
  require(unzGetGlobalInfo(archive, &all) == UNZ_OK, "an archive with its number of files");
  for (uLong i = 0; i < all.number_entry; ++i) {
    require(i == 0 || unzGoToNextFile(archive) == UNZ_OK, "a next file");
    unz_file_info facts{};
    std::array<char, 256> name{};
    require(unzGetCurrentFileInfo(archive, &facts, name.data(), name.size(), nullptr, 0, nullptr,
                                  0) == UNZ_OK,
            "a file with a name");
    std::string content(facts.uncompressed_size, '\0');
    require(
        unzOpenCurrentFile(archive) == UNZ_OK &&
            unzReadCurrentFile(archive, content.data(), static_cast<unsigned>(content.size())) ==
                static_cast<int>(content.size()) &&
            unzCloseCurrentFile(archive) == UNZ_OK,
        "a file with the content of its check sum");
    files.emplace_back(name.data(), content);
  }
  unzClose(archive);
  return files;
}

formats::StackPosition positionIn(Input& in) {
  const auto number = [&] {
    const int v = in.between(0, 20);
    return v == 0 ? std::optional<int>() : v * in.between(1, 250);
  };
  formats::StackPosition p{number(), number(), number()};
  p.isInHyperstack = (p.c ? 1 : 0) + (p.z ? 1 : 0) + (p.t ? 1 : 0) > 1 || in.between(0, 1) == 1;
  return p;
}

// A place in an image of up to 65536 pixels in each direction.
float coordinate(Input& in) { return static_cast<float>(in.take<std::uint16_t>()); }

Detections resultsIn(Input& in) {
  Detections d;
  d.facts.position = positionIn(in);
  d.columns = {{"x", formats::Column::Kind::kFloat}};
  d.shape = static_cast<Detections::Shape>(in.between(0, 2));
  if (d.shape == Detections::Shape::kContours) {
    image<int> labels(in.between(1, 20), in.between(1, 20), 1, 1, 1);
    for (int i = 0; i < labels.npix(); ++i) labels.pixels()[i] = in.between(0, 3);
    d.contours = formats::contoursOf(labels);
    d.places.resize(d.contours.size());
  } else {
    for (int n = in.between(0, 40); n > 0; --n) {
      const float x = coordinate(in);
      const float y = coordinate(in);
      d.places.push_back({x, y});
      if (d.shape == Detections::Shape::kPoints) continue;
      // Ovals have boxes of 16-bit numbers.
      constexpr float kSteps = 4;
      d.places.back() = {x / kSteps, y / kSteps, (1 + coordinate(in)) / kSteps};
    }
  }
  d.values.resize(d.places.size());
  return d;
}

using Rings = std::vector<std::vector<Roi::Point>>;

std::vector<Roi::Point> pointsOf(const formats::Ring& ring) {
  std::vector<Roi::Point> points;
  for (const formats::Corner& c : ring) {
    points.push_back({static_cast<float>(c.x), static_cast<float>(c.y)});
  }
  return points;
}

Rings ringsOf(const formats::Contour& contour) {
  Rings rings;
  for (const formats::Polygon& polygon : contour.polygons) {
    rings.push_back(pointsOf(polygon.outer));
    for (const formats::Ring& hole : polygon.holes) rings.push_back(pointsOf(hole));
  }
  return rings;
}

void requirePosition(const Roi& roi, const formats::StackPosition& p) {
  std::array<int, 3> numbers{};
  int one = 0;
  for (const auto& [i, v] : {std::pair(0U, p.c), std::pair(1U, p.z), std::pair(2U, p.t)}) {
    if (!v) continue;
    numbers[i] = one = *v + 1;
  }
  require(roi.position == (p.isInHyperstack ? 0 : one), "the position along one axis");
  require(roi.channelSliceTime == (p.isInHyperstack ? numbers : std::array<int, 3>{}),
          "the position along several axes");
}

void requireShape(const Roi& roi, const Detections& d, std::size_t row) {
  if (d.shape == Detections::Shape::kCircles) {
    const Detections::Place& p = d.places[row];
    require(roi.kind == Roi::kOval && roi.floatBox, "an oval between pixels");
    const std::array<double, 4> expected{p.x + 0.5 - p.radius, p.y + 0.5 - p.radius, 2 * p.radius,
                                         2 * p.radius};
    for (std::size_t i = 0; i < expected.size(); ++i) {
      require((*roi.floatBox)[i] == static_cast<float>(expected[i]), "the box of an oval");
    }
    return;
  }
  const Rings expected = ringsOf(d.contours[row]);
  const Rings found = roi.rings.empty() ? Rings{roi.points} : roi.rings;
  require((roi.kind == Roi::kTraced) == (expected.size() == 1), "one line is traced");
  require(found == expected, "the lines of a region");
}

void requireReadBack(const Detections& d) {
  const auto files = unzipped(formats::roiSetOf({d}));
  const bool arePoints = d.shape == Detections::Shape::kPoints;
  require(files.size() == (arePoints ? std::min<std::size_t>(d.rows(), 1) : d.rows()),
          "a file per row, or one of points");
  for (std::size_t row = 0; row < files.size(); ++row) {
    const auto& [name, content] = files[row];
    const std::optional<Roi> roi = readRoi(content);
    require(roi.has_value(), "an ROI");
    require(name == roi->name + ".roi", "a file named as its ROI");
    require(roi->name == (arePoints ? "1-" + std::to_string(d.rows()) : std::to_string(row + 1)),
            "the number of a row as its name");
    requirePosition(*roi, d.facts.position);
    if (!arePoints) {
      requireShape(*roi, d, row);
      continue;
    }
    require(roi->kind == Roi::kPoint && roi->points.size() == d.rows(), "a point per row");
    for (std::size_t i = 0; i < d.rows(); ++i) {
      require(roi->points[i] ==
                  Roi::Point{static_cast<float>(d.places[i].x), static_cast<float>(d.places[i].y)},
              "the place of a point");
    }
  }
}

}  // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  Input in(data, size);
  if (in.between(0, 1) == 0) {
    readRoi(std::string("Iout").append(in.rest()));
    readRoi(in.rest());
  } else {
    requireReadBack(resultsIn(in));
  }
  return 0;
}

}  // namespace orva::test
