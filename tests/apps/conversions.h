// What `orva convert` makes of pixels, by the rules of the formats.
#ifndef ORVA_TESTS_APPS_CONVERSIONS_H
#define ORVA_TESTS_APPS_CONVERSIONS_H

#include <gtest/gtest.h>

#include <optional>
#include <string>
#include <vector>

#include "tests/apps/image_files.h"
#include "tests/apps/sandbox.h"

namespace orva::test {

extern const std::vector<std::string> kInputs;   // extensions of what is read
extern const std::vector<std::string> kOutputs;  // and of what is written

struct Sizes {
  int width;
  int height;
  int planes;
};

// Random integers from low to high; both ends occur where there are enough pixels.
Content randomContent(ImageFormat type, const Sizes& s, double low, double high, unsigned seed);

// The brightness of the pixels as floats.
Content luminance(const Content& colour);
// Bytes, or the rounded luminance of colour; none for other values.
std::optional<Content> asBytes(const Content& c);
// Three equal samples per pixel.
Content asColour(const Content& bytes);

// The content of a file with the extension that holds `c`; none where it cannot be written.
std::optional<Content> expectedIn(const std::string& extension, const Content& c);
// Then the end of the message.
std::string reasonOf(const std::string& extension, const Content& c);

// Calls `orva convert IN OUT` in a directory of its own.
class Conversion : public ::testing::Test {
 protected:
  Outcome convert(const std::string& in, const std::string& out,
                  const std::vector<std::string>& options = {}) const;

  Sandbox box;
};

}  // namespace orva::test

#endif
