#include "formats/roi_set.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <utility>

#include "formats/zip_archive.h"

namespace orva::formats {
namespace {

constexpr double kHalfPixel = 0.5;  // from the center of a pixel to its edge

// Kinds of ROIs and options in the file.
enum : std::uint8_t { kRectangle = 1, kOval = 2, kTraced = 8, kPoint = 10 };
constexpr std::uint16_t kSubPixel = 128;
constexpr int kMaxShort = std::numeric_limits<std::int16_t>::max();
constexpr std::size_t kMaxCount = 65535;  // of coordinates in a field of 16 bits

// Big-endian numbers.
class Bytes {
 public:
  void add8(unsigned v) { bytes_ += static_cast<char>(v & 0xffU); }
  void add16(unsigned v) {
    add8(v >> 8U);
    add8(v);
  }
  void add32(std::uint32_t v) {
    add16(v >> 16U);
    add16(v);
  }
  void add16(int v) { add16(static_cast<unsigned>(v)); }
  void add32(int v) { add32(static_cast<std::uint32_t>(v)); }
  void addFloat(double v) { add32(std::bit_cast<std::uint32_t>(static_cast<float>(v))); }
  void addText(const char* text) { bytes_ += text; }
  void addZeros(std::size_t n) { bytes_.append(n, '\0'); }
  std::size_t size() const { return bytes_.size(); }
  std::string take() { return std::move(bytes_); }

 private:
  std::string bytes_;
};

// Pixels that an ROI covers, ends behind the last.
struct Box {
  int left = std::numeric_limits<int>::max();
  int top = std::numeric_limits<int>::max();
  int right = std::numeric_limits<int>::min();
  int bottom = std::numeric_limits<int>::min();

  void include(int x, int y) {
    left = std::min(left, x);
    top = std::min(top, y);
    right = std::max(right, x);
    bottom = std::max(bottom, y);
  }
  bool fitsShorts() const { return right <= kMaxShort && bottom <= kMaxShort; }
};

// An ROI file: a header of 64 bytes, coordinates, a second header of 64 bytes and the name.
struct RoiFile {
  std::uint8_t kind = kRectangle;
  Box box;
  std::size_t count = 0;           // of coordinates
  std::vector<float> subPixelBox;  // left, top, width and height, or none
  std::size_t shapeLength = 0;     // of a composite ROI
  std::uint16_t options = 0;
  Bytes coordinates;
};

// The position in a stack, counted from 1, 0 for all. A hyperstack has a number per axis.
struct RoiPosition {
  explicit RoiPosition(const StackPosition& p) {
    const auto oneOf = [](const std::optional<int>& v) { return v ? *v + 1 : 0; };
    c = oneOf(p.c);
    z = oneOf(p.z);
    t = oneOf(p.t);
    isInHyperstack = p.isInHyperstack;
  }
  int c;
  int z;
  int t;
  bool isInHyperstack;
};

std::string encode(RoiFile roi, const RoiPosition& position, const std::string& name) {
  constexpr int kVersion = 227;
  constexpr std::size_t kHeader = 64;
  Bytes bytes;
  bytes.addText("Iout");
  bytes.add16(kVersion);
  bytes.add8(roi.kind);
  bytes.add8(0U);
  for (const int v : {roi.box.top, roi.box.left, roi.box.bottom, roi.box.right}) bytes.add16(v);
  const bool isLong = roi.count > kMaxCount;
  bytes.add16(isLong ? 0U : static_cast<unsigned>(roi.count));
  if (isLong) {
    bytes.add32(static_cast<std::uint32_t>(roi.count));
  } else {
    for (const float v : roi.subPixelBox) bytes.addFloat(v);
  }
  bytes.addZeros(36 - bytes.size());
  bytes.add32(static_cast<std::uint32_t>(roi.shapeLength));
  bytes.addZeros(50 - bytes.size());
  bytes.add16(static_cast<unsigned>(roi.options));
  bytes.addZeros(56 - bytes.size());
  bytes.add32(position.isInHyperstack ? 0 : position.c + position.z + position.t);
  const std::string coordinates = roi.coordinates.take();
  const std::size_t second = kHeader + coordinates.size();
  bytes.add32(static_cast<std::uint32_t>(second));
  std::string file = bytes.take() + coordinates;

  Bytes more;
  more.add32(0U);
  for (const int v : {position.c, position.z, position.t}) {
    more.add32(position.isInHyperstack ? v : 0);
  }
  more.add32(static_cast<std::uint32_t>(second + kHeader));
  more.add32(static_cast<std::uint32_t>(name.size()));
  more.addZeros(kHeader - more.size());
  for (const char c : name) more.add16(static_cast<unsigned>(c));
  return file + more.take();
}

// Coordinates as ImageJ stores lists of points: relative to the box, and as floats where they do
// not fit.
void addPoints(RoiFile& roi, const std::vector<Corner>& points) {
  for (const Corner& p : points) roi.box.include(p.x, p.y);
  roi.count = points.size();
  for (const Corner& p : points) roi.coordinates.add16(p.x - roi.box.left);
  for (const Corner& p : points) roi.coordinates.add16(p.y - roi.box.top);
  if (roi.box.fitsShorts()) return;
  roi.options |= kSubPixel;
  for (const Corner& p : points) roi.coordinates.addFloat(p.x);
  for (const Corner& p : points) roi.coordinates.addFloat(p.y);
}

RoiFile pointsRoi(const std::vector<Detections::Place>& places) {
  RoiFile roi;
  roi.kind = kPoint;
  std::vector<Corner> points;
  points.reserve(places.size());
  for (const Detections::Place& p : places) {
    points.push_back({static_cast<int>(p.x), static_cast<int>(p.y)});
  }
  addPoints(roi, points);
  return roi;
}

RoiFile ovalRoi(const Detections::Place& p) {
  RoiFile roi;
  roi.kind = kOval;
  roi.options = kSubPixel;
  const double left = p.x + kHalfPixel - p.radius;
  const double top = p.y + kHalfPixel - p.radius;
  roi.box.include(static_cast<int>(std::floor(left)), static_cast<int>(std::floor(top)));
  roi.box.include(static_cast<int>(std::ceil(left + 2 * p.radius)),
                  static_cast<int>(std::ceil(top + 2 * p.radius)));
  for (const double v : {left, top, 2 * p.radius, 2 * p.radius}) {
    roi.subPixelBox.push_back(static_cast<float>(v));
  }
  return roi;
}

RoiFile contourRoi(const Contour& contour) {
  RoiFile roi;
  for (const Polygon& polygon : contour.polygons) {
    for (const Corner& c : polygon.outer) roi.box.include(c.x, c.y);
  }
  const Polygon& first = contour.polygons.front();
  if (contour.polygons.size() == 1 && first.holes.empty() && roi.box.fitsShorts()) {
    roi.kind = kTraced;
    addPoints(roi, first.outer);
    return roi;
  }
  // A path in floats: 0 moves to a point, 1 draws a line to it, 4 closes the line.
  const auto addRing = [&](const Ring& ring) {
    for (std::size_t i = 0; i < ring.size(); ++i) {
      roi.coordinates.addFloat(i == 0 ? 0 : 1);
      roi.coordinates.addFloat(ring[i].x);
      roi.coordinates.addFloat(ring[i].y);
    }
    roi.coordinates.addFloat(4);
  };
  for (const Polygon& polygon : contour.polygons) {
    addRing(polygon.outer);
    for (const Ring& hole : polygon.holes) addRing(hole);
  }
  roi.shapeLength = roi.coordinates.size() / sizeof(float);
  return roi;
}

}  // namespace

std::string roiSetOf(const std::vector<Detections>& images) {
  ZipArchive archive;
  std::size_t row = 1;
  for (const Detections& d : images) {
    const RoiPosition position(d.facts.position);
    const auto add = [&](const std::string& name, RoiFile roi) {
      archive.add(name + ".roi", encode(std::move(roi), position, name));
    };
    if (d.shape == Detections::Shape::kPoints) {
      const std::size_t last = row + d.rows() - 1;
      if (d.rows() > 0) {
        add(std::to_string(row) + '-' + std::to_string(last), pointsRoi(d.places));
      }
      row += d.rows();
      continue;
    }
    for (std::size_t k = 0; k < d.rows(); ++k, ++row) {
      add(std::to_string(row), d.shape == Detections::Shape::kCircles ? ovalRoi(d.places[k])
                                                                      : contourRoi(d.contours[k]));
    }
  }
  return archive.finished();
}

}  // namespace orva::formats
