// Numbers and fields as text.
#ifndef ORVA_FORMATS_TEXT_H
#define ORVA_FORMATS_TEXT_H

#include <string>

namespace orva::formats {

// The shortest decimal text that reads back as `v`.
std::string shortest(float v);

// One field of a CSV row, quoted where it must be.
std::string csvField(const std::string& text);

// The extension of a file's name with its dot, in small letters.
std::string extensionOf(const std::string& path);

}  // namespace orva::formats

#endif
