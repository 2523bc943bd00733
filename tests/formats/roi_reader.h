// A reader of ImageJ's ROI files, from the layout of the format alone and safe for any bytes.
#ifndef ORVA_TESTS_FORMATS_ROI_READER_H
#define ORVA_TESTS_FORMATS_ROI_READER_H

#include <array>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace orva::test {

struct Roi {
  using Point = std::array<float, 2>;

  enum Kind { kPolygon = 0, kRectangle = 1, kOval = 2, kFreehand = 7, kTraced = 8, kPoint = 10 };

  int kind = 0;
  std::array<int, 4> box{};                      // left, top, right and bottom
  std::optional<std::array<float, 4>> floatBox;  // left, top, width and height
  std::vector<Point> points;                     // of a list of points
  std::vector<std::vector<Point>> rings;         // of a composite ROI, each a closed line
  int position = 0;                              // in a stack along one axis
  std::array<int, 3> channelSliceTime{};         // in others, 0 for all
  std::string name;
};

// Big-endian numbers at places of a file. Past the end they are 0, and the reader has failed.
class RoiBytes {
 public:
  explicit RoiBytes(std::string_view bytes) : bytes_(bytes) {}

  std::uint32_t number(std::size_t at, std::size_t count) {
    if (at > bytes_.size() || bytes_.size() - at < count) {
      hasFailed_ = true;
      return 0;
    }
    std::uint32_t value = 0;
    for (std::size_t i = 0; i < count; ++i) {
      value = value << 8U | static_cast<unsigned char>(bytes_[at + i]);
    }
    return value;
  }
  int signed16(std::size_t at) { return static_cast<std::int16_t>(number(at, 2)); }
  int signed32(std::size_t at) { return static_cast<std::int32_t>(number(at, 4)); }
  float real(std::size_t at) { return std::bit_cast<float>(number(at, 4)); }
  // Whether there are `count` entries of so many bytes from a place on.
  bool holds(std::size_t at, std::size_t count, std::size_t bytes) {
    hasFailed_ = hasFailed_ || at > bytes_.size() || count > (bytes_.size() - at) / bytes;
    return !hasFailed_;
  }
  bool hasFailed() const { return hasFailed_; }

 private:
  std::string_view bytes_;
  bool hasFailed_ = false;
};

// The lines of a composite ROI: 0 moves to a point, 1 draws a line to one, 4 closes the line.
inline bool readRings(RoiBytes& in, std::size_t length, Roi& roi) {
  constexpr std::size_t kFirst = 64;
  if (!in.holds(kFirst, length, sizeof(float))) return false;
  const auto at = [&](std::size_t i) { return in.real(kFirst + i * sizeof(float)); };
  bool isOpen = false;
  for (std::size_t i = 0; i < length;) {
    const float step = at(i++);
    if (step == 4.0F && isOpen) {
      isOpen = false;
      continue;
    }
    if ((step != 0.0F && step != 1.0F) || (step == 1.0F) != isOpen || length - i < 2) return false;
    if (!isOpen) roi.rings.emplace_back();
    isOpen = true;
    roi.rings.back().push_back({at(i), at(i + 1)});
    i += 2;
  }
  return !isOpen;
}

inline bool readPoints(RoiBytes& in, bool areFloats, Roi& roi) {
  constexpr std::size_t kFirst = 64;
  const std::uint32_t narrow = in.number(16, 2);
  const std::size_t n = narrow != 0 ? narrow : in.number(18, 4);
  if (!in.holds(kFirst, n, areFloats ? 12 : 4)) return false;
  for (std::size_t i = 0; i < n; ++i) {
    if (areFloats) {
      roi.points.push_back({in.real(kFirst + 4 * n + 4 * i), in.real(kFirst + 8 * n + 4 * i)});
    } else {
      roi.points.push_back(
          {static_cast<float>(roi.box[0] + static_cast<int>(in.number(kFirst + 2 * i, 2))),
           static_cast<float>(roi.box[1] +
                              static_cast<int>(in.number(kFirst + 2 * n + 2 * i, 2)))});
    }
  }
  return true;
}

// None for bytes that are no ROI file of the kinds above.
inline std::optional<Roi> readRoi(std::string_view bytes) {
  if (!bytes.starts_with("Iout")) return std::nullopt;
  RoiBytes in(bytes);
  Roi roi;
  roi.kind = static_cast<int>(in.number(6, 1));
  roi.box = {in.signed16(10), in.signed16(8), in.signed16(14), in.signed16(12)};
  const bool isSubPixel = (in.number(50, 2) & 128U) != 0;
  roi.position = in.signed32(56);
  const std::size_t second = in.number(60, 4);
  if (in.hasFailed()) return std::nullopt;
  const std::size_t composite = in.number(36, 4);
  bool isGood = true;
  if (composite > 0) {
    isGood = roi.kind == Roi::kRectangle && readRings(in, composite, roi);
  } else if (roi.kind == Roi::kOval || roi.kind == Roi::kRectangle) {
    if (isSubPixel) roi.floatBox = {in.real(18), in.real(22), in.real(26), in.real(30)};
  } else if (roi.kind == Roi::kPolygon || roi.kind == Roi::kFreehand || roi.kind == Roi::kTraced ||
             roi.kind == Roi::kPoint) {
    isGood = readPoints(in, isSubPixel, roi);
  } else {
    isGood = false;
  }
  if (second > 0) {
    for (std::size_t i = 0; i < 3; ++i) roi.channelSliceTime[i] = in.signed32(second + 4 + 4 * i);
    const std::size_t name = in.number(second + 16, 4);
    const std::size_t length = in.number(second + 20, 4);
    if (name > 0 && in.holds(name, length, 2)) {
      for (std::size_t i = 0; i < length; ++i) {
        const std::uint32_t unit = in.number(name + 2 * i, 2);
        roi.name += unit < 128 ? static_cast<char>(unit) : '?';
      }
    }
  }
  return isGood && !in.hasFailed() ? std::optional(roi) : std::nullopt;
}

}  // namespace orva::test

#endif
