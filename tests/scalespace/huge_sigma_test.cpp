// Kernels much longer than the lines that they filter, and sigmas that are no numbers, in every
// form of the filters.
//
// A call takes the pixels times the radius: for a sigma of 25000 and 64 x 64 pixels a third of a
// second on a common machine, for a sigma of 1e6 on the same image some ten.
#include <gtest/gtest.h>

#include <functional>
#include <limits>
#include <string>
#include <vector>

#include "orva/bip/bip.h"
#include "orva/scalespace/scalespace.h"
#include "tests/support/images.h"
#include "tests/support/reference/scalespace.h"
#include "tests/support/reference/selection.h"
#include "tests/support/special_values.h"

namespace orva::test {
namespace {

struct Form {
  std::string name;
  std::function<image<float>(const Image&, float)> filter;
  reference::Orders orders;
  bool isMixed;  // smooths the third axis with a sigma of 1
};

std::vector<Form> forms() {
  using One = image<float> (*)(const Image&, float);
  using Two = image<float> (*)(const Image&, float, float);
  const auto one = [](const char* name, One f, reference::Orders o) {
    return Form{name, f, o, false};
  };
  const auto two = [](const char* name, Two f, reference::Orders o) {
    return Form{name, [f](const Image& img, float s) { return f(img, s, s); }, o, true};
  };
  return {one("dX", scalespace::dX, {1, 0, 0}),     one("dY", scalespace::dY, {0, 1, 0}),
          one("dZ", scalespace::dZ, {0, 0, 1}),     one("dXX", scalespace::dXX, {2, 0, 0}),
          one("dYY", scalespace::dYY, {0, 2, 0}),   one("dZZ", scalespace::dZZ, {0, 0, 2}),
          one("dXXX", scalespace::dXXX, {3, 0, 0}), one("dYYY", scalespace::dYYY, {0, 3, 0}),
          one("dZZZ", scalespace::dZZZ, {0, 0, 3}), one("dXY", scalespace::dXY, {1, 1, 0}),
          one("dXZ", scalespace::dXZ, {1, 0, 1}),   one("dYZ", scalespace::dYZ, {0, 1, 1}),
          two("dXY", scalespace::dXY, {1, 1, 0}),   two("dXZ", scalespace::dXZ, {1, 0, 1}),
          two("dYZ", scalespace::dYZ, {0, 1, 1}),   two("dXXY", scalespace::dXXY, {2, 1, 0}),
          two("dXYY", scalespace::dXYY, {1, 2, 0}), two("dXXZ", scalespace::dXXZ, {2, 0, 1}),
          two("dXZZ", scalespace::dXZZ, {1, 0, 2}), two("dYYZ", scalespace::dYYZ, {0, 2, 1}),
          two("dYZZ", scalespace::dYZZ, {0, 1, 2})};
}

void expectLikeDefinition(const Image& img, float s) {
  for (const Form& form : forms()) {
    const auto sigma = [&](int order) { return form.isMixed && order == 0 ? 1.0F : s; };
    const reference::Triple sigmas{sigma(form.orders.x), sigma(form.orders.y),
                                   sigma(form.orders.z)};
    EXPECT_TRUE(sameValues(form.filter(img, s), reference::gaussian(img, sigmas, form.orders)))
        << form.name << " at " << s;
  }
  EXPECT_TRUE(
      sameValues(scalespace::dXYZ(img, s, s, s), reference::gaussian(img, {s, s, s}, {1, 1, 1})));
  EXPECT_TRUE(sameValues(scalespace::smooth(img, s, s, s), reference::smooth(img, {s, s, s})));
  EXPECT_TRUE(sameValues(scalespace::gradient(img, s, 1.0F), reference::gradient(img, s, 1.0F)));
  EXPECT_TRUE(sameValues(scalespace::laplacian(img, s), reference::laplacian(img, s)));
}

TEST(HugeSigma, OfARadiusOf100000IsConvolvedInFullInEveryForm) {
  Random random(91);
  expectLikeDefinition(randomImage<float>(random, {3, 2, 2}), 25000.0F);
}

// Lines of few samples, each seen by one output in the middle of the taps.
TEST(HugeSigma, OfLongerLinesIsConvolvedInFull) {
  Random random(92);
  for (const Shape& shape : {Shape{60, 1}, Shape{1, 60}, Shape{1, 1, 60}, Shape{2, 1}}) {
    const auto img = randomImage<float>(random, shape);
    for (const float s : {1000.0F, 25000.0F}) {
      EXPECT_TRUE(sameImage(scalespace::gaussian(img, s, 1, 1, 1),
                            reference::gaussian(img, {s, s, s}, {1, 1, 1})));
      EXPECT_TRUE(sameImage(scalespace::smooth(img, s, s, s), reference::smooth(img, {s, s, s})));
    }
  }
}

TEST(HugeSigma, ThatIsNoNumberOrDoesNotFitHasFiveTapsInEveryForm) {
  Random random(93);
  for (const Shape& shape : {Shape{7, 6, 5}, Shape{9, 1}, Shape{1, 8}, Shape{1, 1}}) {
    const auto img = randomImage<short>(random, shape);
    for (const float s : {kNaN, kInfinity, -kInfinity, 1e9F, 3e38F, -3e38F, 0.0F, -1e-30F}) {
      expectLikeDefinition(img, s);
    }
  }
}

TEST(HugeSigma, OfAThresholdMatchesTheReference) {
  Random random(94);
  const auto img = randomImage<unsigned char>(random, {6, 5});
  for (const float s : {kNaN, kInfinity, -kInfinity, 0.0F, -2.0F, 1e9F, 25000.0F}) {
    EXPECT_EQ(bip::computeThreshold(img, s), reference::computeThreshold(img, s)) << s;
  }
}

}  // namespace
}  // namespace orva::test
