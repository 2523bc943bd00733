#include "formats/image_axes.h"

#include <cmath>
#include <cstdint>
#include <numeric>

#include "formats/length_unit.h"
#include "formats/text.h"

namespace orva::formats {
namespace {

constexpr double kMaxPlainPixel = 20;  // micrometres

std::vector<int> pagesInOrder(int count) {
  std::vector<int> pages(static_cast<std::size_t>(count));
  std::iota(pages.begin(), pages.end(), 0);
  return pages;
}

// A resolution is a float in the file; its size has the digits that a float has.
std::optional<double> sizeOf(double resolution, std::string_view unit) {
  const auto size = resolution > 0 ? micrometres(1 / resolution, unit) : std::nullopt;
  if (!size) return std::nullopt;
  const double rounded = parsedDecimal(shortestDecimal(static_cast<float>(*size)));
  return rounded > 0 && std::isfinite(rounded) ? std::optional(rounded) : size;
}

// The value behind "\nKEY=" up to the end of the line; "" if there is none.
std::string_view valueOf(std::string_view description, std::string_view key) {
  for (std::size_t at = description.find('\n'); at != std::string_view::npos;
       at = description.find('\n', at + 1)) {
    const std::string_view line = description.substr(at + 1);
    if (!line.starts_with(key) || line.substr(key.size(), 1) != "=") continue;
    const std::string_view value = line.substr(key.size() + 1);
    return value.substr(0, value.find_first_of("\r\n"));
  }
  return {};
}

// A number above 0, or `otherwise`.
template <class Number>
Number positiveIn(std::string_view text, Number otherwise) {
  const std::optional<Number> value = parsedNumber<Number>(text);
  return value && *value > 0 ? *value : otherwise;
}

// ImageJ writes characters beyond ASCII as \uXXXX; the only such units are those of the micrometre
// and of the angstrom.
std::string_view unescaped(std::string_view unit) {
  if (unit == "\\u00B5m" || unit == "\\u00b5m" || unit == "\xb5m") return "um";
  if (unit == "\\u00C5" || unit == "\\u00c5" || unit == "\xc5") return "angstrom";
  return unit;
}

}  // namespace

std::optional<double> squarePixelSize(const PixelSize& size) {
  constexpr double kTolerance = 0.01;
  if (!size.x || !size.y) return std::nullopt;
  const double mean = (*size.x + *size.y) / 2;
  return std::fabs(*size.x - *size.y) < kTolerance * mean ? std::optional(mean) : std::nullopt;
}

ImageAxes axesOfPages(const PageFacts& facts) {
  ImageAxes axes;
  axes.nz = facts.pages;
  axes.areKnown = facts.pages == 1;
  axes.channelNames.resize(1);
  axes.pages = pagesInOrder(facts.pages);
  const auto x = sizeOf(facts.xResolution, facts.resolutionUnit);
  const auto y = sizeOf(facts.yResolution, facts.resolutionUnit);
  if (x && y && *x < kMaxPlainPixel && *y < kMaxPlainPixel) axes.pixelSize = {x, y, std::nullopt};
  return axes;
}

bool isImageJDescription(std::string_view description) {
  return description.starts_with("ImageJ=");
}

ImageAxes imageJAxes(std::string_view description, const PageFacts& facts) {
  ImageAxes axes = axesOfPages(facts);
  const int nc = positiveIn(valueOf(description, "channels"), 1);
  const int nz = positiveIn(valueOf(description, "slices"), 1);
  const int nt = positiveIn(valueOf(description, "frames"), 1);
  const auto planes = static_cast<double>(nc) * nz * nt;
  if (planes == facts.pages) {
    axes.nc = nc;
    axes.nz = nz;
    axes.nt = nt;
    axes.areKnown = true;
    axes.channelNames.resize(static_cast<std::size_t>(nc));
  }
  const std::string_view unit = unescaped(valueOf(description, "unit"));
  if (!unit.empty()) {
    const double spacing = positiveIn(valueOf(description, "spacing"), 0.0);
    axes.pixelSize = {sizeOf(facts.xResolution, unit), sizeOf(facts.yResolution, unit),
                      micrometres(spacing, unit)};
  }
  return axes;
}

std::string imageJDescription(const ImageAxes& axes) {
  std::string text = "ImageJ=1.53t\nimages=" + std::to_string(axes.nc * axes.nz * axes.nt) + '\n';
  if (axes.nc > 1) text += "channels=" + std::to_string(axes.nc) + '\n';
  if (axes.nz > 1) text += "slices=" + std::to_string(axes.nz) + '\n';
  if (axes.nt > 1) text += "frames=" + std::to_string(axes.nt) + '\n';
  if ((axes.nc > 1) + (axes.nz > 1) + (axes.nt > 1) > 1) text += "hyperstack=true\n";
  if (axes.nc > 1) text += "mode=grayscale\n";
  if (axes.pixelSize.x && axes.pixelSize.y) text += "unit=micron\n";
  if (axes.pixelSize.z) text += "spacing=" + shortestDecimal(*axes.pixelSize.z) + '\n';
  return text + "loop=false\n";
}

}  // namespace orva::formats
