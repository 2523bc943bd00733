#include "formats/length_unit.h"

#include <algorithm>
#include <array>
#include <cmath>

namespace orva::formats {
namespace {

struct Unit {
  std::string_view name;
  double micrometres;
};

// Symbols, which mean the same in any case but for "Mm", and full names in the singular.
constexpr std::array kUnits{
    Unit{"pm", 1e-6},         Unit{"picometer", 1e-6},   Unit{"picometre", 1e-6},
    Unit{"\u00c5", 1e-4},     Unit{"\u212b", 1e-4},      Unit{"angstrom", 1e-4},
    Unit{"nm", 1e-3},         Unit{"nanometer", 1e-3},   Unit{"nanometre", 1e-3},
    Unit{"um", 1.0},          Unit{"\u00b5m", 1.0},      Unit{"\u03bcm", 1.0},
    Unit{"micron", 1.0},      Unit{"micrometer", 1.0},   Unit{"micrometre", 1.0},
    Unit{"mm", 1e3},          Unit{"millimeter", 1e3},   Unit{"millimetre", 1e3},
    Unit{"cm", 1e4},          Unit{"centimeter", 1e4},   Unit{"centimetre", 1e4},
    Unit{"dm", 1e5},          Unit{"decimeter", 1e5},    Unit{"decimetre", 1e5},
    Unit{"m", 1e6},           Unit{"meter", 1e6},        Unit{"metre", 1e6},
    Unit{"km", 1e9},          Unit{"kilometer", 1e9},    Unit{"kilometre", 1e9},
    Unit{"thou", 25.4},       Unit{"mil", 25.4},         Unit{"li", 25400.0 / 12},
    Unit{"pt", 25400.0 / 72}, Unit{"in", 25400.0},       Unit{"inch", 25400.0},
    Unit{"inches", 25400.0},  Unit{"ft", 12 * 25400.0},  Unit{"foot", 12 * 25400.0},
    Unit{"yd", 36 * 25400.0}, Unit{"yard", 36 * 25400.0}};

bool equalsInAnyCase(std::string_view a, std::string_view b) {
  const auto lower = [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c + 32) : c; };
  return std::equal(a.begin(), a.end(), b.begin(), b.end(),
                    [&](char x, char y) { return lower(x) == lower(y); });
}

std::optional<double> known(std::string_view unit) {
  for (const Unit& u : kUnits) {
    if (equalsInAnyCase(u.name, unit)) return u.micrometres;
  }
  return std::nullopt;
}

}  // namespace

std::optional<double> micrometresPer(std::string_view unit) {
  constexpr std::string_view kSpace = " \t\r\n";
  const std::size_t first = unit.find_first_not_of(kSpace);
  if (first == std::string_view::npos) return std::nullopt;
  unit = unit.substr(first, unit.find_last_not_of(kSpace) + 1 - first);
  if (unit == "Mm" || unit == "Pm") return std::nullopt;  // a million metres and more
  if (const auto found = known(unit)) return found;
  const bool isPlural = unit.size() > 4 && unit.ends_with('s');
  return isPlural ? known(unit.substr(0, unit.size() - 1)) : std::nullopt;
}

std::optional<double> micrometres(double length, std::string_view unit) {
  const std::optional<double> factor = micrometresPer(unit);
  const double size = factor ? length * *factor : 0;
  return size > 0 && std::isfinite(size) ? std::optional(size) : std::nullopt;
}

}  // namespace orva::formats
