// Numbers and fields as text.
#ifndef ORVA_FORMATS_TEXT_H
#define ORVA_FORMATS_TEXT_H

#include <string>

namespace orva::formats {

// The shortest decimal text that reads back as `v`.
std::string shortestDecimal(float v);
// The same; whole numbers of up to 15 digits without an exponent.
std::string shortestDecimal(double v);

// `v` with this number of decimals.
std::string fixed(float v, int decimals);

// `v` with three decimals at most, without zeros at their end.
std::string trimmedDecimal(double v);

// The number that a decimal text begins with; 0 for other texts.
double parsedDecimal(const std::string& text);

// One field of a CSV row, in quotes where its characters need them.
std::string csvField(const std::string& text);

// The extension of a file's name with its dot, in lower case.
std::string extensionOf(const std::string& path);

}  // namespace orva::formats

#endif
