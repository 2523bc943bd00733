// Lengths in micrometres.
#ifndef ORVA_FORMATS_LENGTH_UNIT_H
#define ORVA_FORMATS_LENGTH_UNIT_H

#include <optional>
#include <string_view>

namespace orva::formats {

// The micrometres of one `unit`: metric units from pm to km by their symbols ("um", "\u00b5m" and
// "\u03bcm" are the same) and names, singular or plural, British or American; "Å", "inch", "in",
// "thou", "mil", "ft", "pt". None for other units such as "pixel".
std::optional<double> micrometresPer(std::string_view unit);

// `length` in micrometres; none for another unit, and where the result is not above 0 and finite.
std::optional<double> micrometres(double length, std::string_view unit);

}  // namespace orva::formats

#endif
