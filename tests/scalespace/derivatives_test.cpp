#include <gtest/gtest.h>

#include "orva/scalespace/scalespace.h"
#include "tests/support/images.h"
#include "tests/support/reference/scalespace.h"

namespace orva::test {
namespace {

struct OneSigma {
  const char* name;
  image<float> (*function)(const Image&, float);
  reference::Orders orders;
};

const OneSigma kOneSigma[] = {
    {"dX", scalespace::dX, {1, 0, 0}},     {"dY", scalespace::dY, {0, 1, 0}},
    {"dZ", scalespace::dZ, {0, 0, 1}},     {"dXX", scalespace::dXX, {2, 0, 0}},
    {"dYY", scalespace::dYY, {0, 2, 0}},   {"dZZ", scalespace::dZZ, {0, 0, 2}},
    {"dXXX", scalespace::dXXX, {3, 0, 0}}, {"dYYY", scalespace::dYYY, {0, 3, 0}},
    {"dZZZ", scalespace::dZZZ, {0, 0, 3}}, {"dXY", scalespace::dXY, {1, 1, 0}},
    {"dXZ", scalespace::dXZ, {1, 0, 1}},   {"dYZ", scalespace::dYZ, {0, 1, 1}},
};

// Which of the two sigmas, or 0 for the fixed sigma of 1, each axis gets.
struct TwoSigmas {
  const char* name;
  image<float> (*function)(const Image&, float, float);
  reference::Orders orders;
  int sigmaOf[3];
};

const TwoSigmas kTwoSigmas[] = {
    {"dXY", scalespace::dXY, {1, 1, 0}, {1, 2, 0}},
    {"dXZ", scalespace::dXZ, {1, 0, 1}, {1, 0, 2}},
    {"dYZ", scalespace::dYZ, {0, 1, 1}, {0, 1, 2}},
    {"dXXY", scalespace::dXXY, {2, 1, 0}, {1, 2, 0}},
    {"dXYY", scalespace::dXYY, {1, 2, 0}, {1, 2, 0}},
    {"dXXZ", scalespace::dXXZ, {2, 0, 1}, {1, 0, 2}},
    {"dXZZ", scalespace::dXZZ, {1, 0, 2}, {1, 0, 2}},
    {"dYYZ", scalespace::dYYZ, {0, 2, 1}, {0, 1, 2}},
    {"dYZZ", scalespace::dYZZ, {0, 1, 2}, {0, 1, 2}},
};

const Shape kDerivativeShapes[] = {{9, 7, 4},  {8, 6},     {5, 4, 1, 3, 2},
                                   {11, 1, 3}, {1, 12, 5}, {1, 1}};

template <class T>
class Derivatives : public testing::Test {};
TYPED_TEST_SUITE(Derivatives, PixelTypes);

TYPED_TEST(Derivatives, WithOneSigmaUseItOnAllAxes) {
  Random random(21);
  for (const OneSigma& row : kOneSigma) {
    for (const Shape& shape : kDerivativeShapes) {
      const auto img = randomImage<TypeParam>(random, shape);
      const float s = randomSigma(random);
      EXPECT_TRUE(sameImage(row.function(img, s), reference::gaussian(img, {s, s, s}, row.orders)))
          << row.name;
    }
  }
}

TYPED_TEST(Derivatives, SmoothTheThirdAxisWithSigmaOneAsIntended) {
  Random random(22);
  for (const TwoSigmas& row : kTwoSigmas) {
    for (const Shape& shape : kDerivativeShapes) {
      const auto img = randomImage<TypeParam>(random, shape);
      const float s[] = {1.0F, randomSigma(random), randomSigma(random)};
      const reference::Triple sigma{s[row.sigmaOf[0]], s[row.sigmaOf[1]], s[row.sigmaOf[2]]};
      EXPECT_TRUE(
          sameImage(row.function(img, s[1], s[2]), reference::gaussian(img, sigma, row.orders)))
          << row.name;
    }
  }
}

TYPED_TEST(Derivatives, WithThreeSigmasUseOneOnEachAxis) {
  Random random(23);
  for (const Shape& shape : kDerivativeShapes) {
    const auto img = randomImage<TypeParam>(random, shape);
    const reference::Triple s{randomSigma(random), randomSigma(random), randomSigma(random)};
    EXPECT_TRUE(
        sameImage(scalespace::dXYZ(img, s.x, s.y, s.z), reference::gaussian(img, s, {1, 1, 1})));
  }
}

TEST(DerivativeForms, OfANullImageAreNull) {
  const image<short> null(0, 1, 1, 1, 1);
  for (const OneSigma& row : kOneSigma) EXPECT_TRUE(row.function(null, 1).isNull()) << row.name;
  for (const TwoSigmas& row : kTwoSigmas)
    EXPECT_TRUE(row.function(null, 1, 1).isNull()) << row.name;
  EXPECT_TRUE(scalespace::dXYZ(null, 1, 1, 1).isNull());
}

TEST(DerivativeForms, OfAFormWithoutChangeAlongTheAxisAreNearlyZero) {
  Random random(24);
  const Shape shape{20, 15};
  auto rows = blank<unsigned char>(shape);
  auto columns = blank<unsigned char>(shape);
  for (int y = 0; y < shape.ny; ++y) {
    for (int x = 0; x < shape.nx; ++x) {
      rows.setPixel(x, y, static_cast<float>(y * 17));
      columns.setPixel(x, y, static_cast<float>(x * 13));
    }
  }
  const auto dx = scalespace::dX(rows, 2.0F);
  const auto dy = scalespace::dY(columns, 2.0F);
  for (int i = 0; i < dx.npix(); ++i) {
    EXPECT_NEAR(dx.pixel(i), 0.0F, 1e-3) << i;
    EXPECT_NEAR(dy.pixel(i), 0.0F, 1e-3) << i;
  }
}

TEST(DerivativeForms, ArePositiveWhereBrightnessGrows) {
  const Shape shape{9, 9, 9};
  auto ramp = blank<float>(shape);
  for (int z = 0; z < 9; ++z)
    for (int y = 0; y < 9; ++y)
      for (int x = 0; x < 9; ++x)
        ramp.setPixel(
            x, y, z,
            static_cast<float>(x) + 10 * static_cast<float>(y) + 100 * static_cast<float>(z));
  EXPECT_NEAR(scalespace::dX(ramp, 1.0F).pixel(4, 4, 4), 1.0F, 1e-2);
  EXPECT_NEAR(scalespace::dY(ramp, 1.0F).pixel(4, 4, 4), 10.0F, 1e-1);
  EXPECT_NEAR(scalespace::dZ(ramp, 1.0F).pixel(4, 4, 4), 100.0F, 1.0F);
}

TEST(DerivativeForms, AlongZOfASingleFrameAreTheSmoothedImageIsIntended) {
  Random random(25);
  const auto img = randomImage<unsigned char>(random, {14, 9});
  const auto smoothed = scalespace::gaussian(img, 1.5F, 0, 0, 0);
  EXPECT_TRUE(sameImage(scalespace::dZ(img, 1.5F), smoothed));
  EXPECT_TRUE(sameImage(scalespace::dZZ(img, 1.5F), smoothed));
  EXPECT_TRUE(sameImage(scalespace::dZZZ(img, 1.5F), smoothed));
}

}  // namespace
}  // namespace orva::test
