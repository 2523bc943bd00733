#include "tests/apps/conversions.h"

#include <algorithm>
#include <cmath>
#include <random>

namespace orva::test {

const std::vector<std::string> kInputs{".pgm", ".ppm", ".png", ".tif", ".iht", ".uif"};
const std::vector<std::string> kOutputs{".pgm", ".ppm", ".png", ".tif", ".iht", ".uif", ".ics"};

namespace {

bool allWholeUpTo(const Content& c, double max) {
  return std::all_of(c.values.begin(), c.values.end(),
                     [max](double v) { return v >= 0 && v <= max && v == std::floor(v); });
}

Content retyped(Content c, ImageFormat type) {
  c.type = type;
  return c;
}

bool isFlat(const std::string& extension) {
  return extension == ".pgm" || extension == ".ppm" || extension == ".png";
}

}  // namespace

Content randomContent(ImageFormat type, const Sizes& s, double low, double high, unsigned seed) {
  std::mt19937 random(seed);
  std::uniform_real_distribution<double> number(low, high);
  Content content{type, s.width, s.height, s.planes, {}};
  const int count = s.width * s.height * s.planes * content.samples();
  for (int i = 0; i < count; ++i) content.values.push_back(std::round(number(random)));
  content.values.front() = high;
  content.values.back() = low;
  return content;
}

Content luminance(const Content& colour) {
  Content grey{FLOAT, colour.width, colour.height, colour.planes, {}};
  for (std::size_t i = 0; i < colour.values.size(); i += 3) {
    // The library weighs the first component as blue.
    grey.values.push_back(luminance(
        GenericRgb<double>{colour.values[i + 2], colour.values[i + 1], colour.values[i]}));
  }
  return grey;
}

std::optional<Content> asBytes(const Content& c) {
  if (c.type == RGB) {
    Content grey = retyped(luminance(c), BYTE);
    for (double& v : grey.values) v = std::round(v);
    return grey;
  }
  return allWholeUpTo(c, 255) ? std::optional(retyped(c, BYTE)) : std::nullopt;
}

Content asColour(const Content& bytes) {
  Content colour{RGB, bytes.width, bytes.height, bytes.planes, {}};
  for (const double v : bytes.values) colour.values.insert(colour.values.end(), 3, v);
  return colour;
}

std::optional<Content> expectedIn(const std::string& extension, const Content& c) {
  if (isFlat(extension) && c.planes > 1) return std::nullopt;
  const bool isColour = c.type == RGB;
  if (extension == ".pgm" || extension == ".uif") return asBytes(c);
  if (isColour && extension == ".iht") return luminance(c);
  if (isColour) return c;
  if (extension == ".ppm") {
    const auto bytes = asBytes(c);
    return bytes ? std::optional(asColour(*bytes)) : std::nullopt;
  }
  if (extension == ".png") {
    if (allWholeUpTo(c, 255)) return retyped(c, BYTE);
    return allWholeUpTo(c, 65535) ? std::optional(retyped(c, USHORT)) : std::nullopt;
  }
  if (extension == ".iht" && c.type == UINT) {
    return allWholeUpTo(c, 2147483647.0) ? std::optional(retyped(c, INT)) : std::nullopt;
  }
  // Only TIFF and PNG hold pixels of 16 bits without sign.
  return c.type == USHORT && extension != ".tif" ? retyped(c, INT) : c;
}

std::string reasonOf(const std::string& extension, const Content& c) {
  if (isFlat(extension) && c.planes > 1) {
    const std::string name = extension == ".pgm" ? "PGM" : extension == ".ppm" ? "PPM" : "PNG";
    return "has " + std::to_string(c.planes) + " planes and " + name +
           " holds one; choose one with --frame\n";
  }
  if (extension == ".iht") return "has pixels above 2147483647, too large for IHT\n";
  const std::string bits = extension == ".png" ? "16" : "8";
  return "has pixels that do not fit " + bits + " bits; --stretch maps their range to 0..255\n";
}

Outcome Conversion::convert(const std::string& in, const std::string& out,
                            const std::vector<std::string>& options) const {
  std::vector<std::string> arguments{"convert", in, out};
  arguments.insert(arguments.end(), options.begin(), options.end());
  return box.run(arguments);
}

}  // namespace orva::test
