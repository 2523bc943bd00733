// Masks drawn as text and random labels, for the tests of this folder.
#ifndef ORVA_TESTS_BIP_PICTURES_H
#define ORVA_TESTS_BIP_PICTURES_H

#include <string>
#include <vector>

#include "tests/support/images.h"

namespace orva::test {

// '#' is 255, '.' is 0, a digit d stands for the value 10 * d.
inline image<unsigned char> maskOf(const std::vector<std::string>& rows) {
  image<unsigned char> mask =
      blank<unsigned char>({static_cast<int>(rows.at(0).size()), static_cast<int>(rows.size())});
  int i = 0;
  for (const std::string& row : rows) {
    for (const char c : row) {
      const int v = c == '#' ? 255 : c == '.' ? 0 : 10 * (c - '0');
      mask.pixels()[i++] = static_cast<unsigned char>(v);
    }
  }
  return mask;
}

// '.' is -1, a digit is its label.
inline image<short> labelsOf(const std::vector<std::string>& rows) {
  image<short> labels =
      blank<short>({static_cast<int>(rows.at(0).size()), static_cast<int>(rows.size())});
  int i = 0;
  for (const std::string& row : rows) {
    for (const char c : row) labels.pixels()[i++] = static_cast<short>(c == '.' ? -1 : c - '0');
  }
  return labels;
}

// Labels -1 .. most, in patches that often touch.
inline image<short> randomLabels(Random& random, const Shape& shape, int most) {
  image<short> labels = blank<short>(shape);
  short current = -1;
  for (int i = 0; i < labels.npix(); ++i) {
    if (randomInt(random, 0, 3) == 0) current = static_cast<short>(randomInt(random, -1, most));
    const bool asAbove = i >= shape.nx && randomInt(random, 0, 2) > 0;
    labels.pixels()[i] = asAbove ? labels.pixels()[i - shape.nx] : current;
  }
  return labels;
}

}  // namespace orva::test

#endif
