#include "formats/size_text.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <limits>
#include <string_view>
#include <system_error>

#include "formats/file_error.h"
#include "formats/length_unit.h"

namespace orva::formats {
namespace {

// A finite number of at least 0 at the start of `text`, and what follows it.
template <class Number>
std::optional<Number> numberAtStart(std::string_view text, std::string_view& rest) {
  Number v = 0;
  const char* const end = text.data() + text.size();
  const auto [next, error] = std::from_chars(text.data(), end, v);
  if (error != std::errc() || !std::isfinite(v) || v < 0) return std::nullopt;
  rest = {next, static_cast<std::size_t>(end - next)};
  return v;
}

std::optional<Size> sizeIn(const std::string& text, int dimension) {
  std::string_view unit;
  const auto metric = numberAtStart<double>(text, unit);
  const auto pixels = numberAtStart<float>(text, unit);
  if (!metric || !pixels) return std::nullopt;
  if (unit.empty()) return Size{double{*pixels}, false, dimension};
  if (dimension == 2) {
    if (!unit.ends_with('2')) return std::nullopt;
    unit.remove_suffix(1);
  }
  const std::optional<double> factor = micrometresPer(unit);
  if (!factor) return std::nullopt;
  const double micrometres = *metric * std::pow(*factor, dimension);
  return std::isfinite(micrometres) ? std::optional(Size{micrometres, true, dimension})
                                    : std::nullopt;
}

}  // namespace

float Size::inPixels(const std::optional<double>& pixelSize) const {
  if (!isMetric) return static_cast<float>(value);
  if (!pixelSize) {
    throw FileError(
        "has no known size of square pixels; give --pixel-size, or sizes in pixels without a unit");
  }
  const double pixels = value / std::pow(*pixelSize, dimension);
  using Limits = std::numeric_limits<float>;
  return value > 0
             ? static_cast<float>(std::clamp(pixels, double{Limits::min()}, double{Limits::max()}))
             : 0.0F;
}

std::optional<Size> lengthIn(const std::string& text) { return sizeIn(text, 1); }

std::optional<Size> areaIn(const std::string& text) { return sizeIn(text, 2); }

}  // namespace orva::formats
