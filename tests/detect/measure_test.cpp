#include "orva/detect/measure.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <stdexcept>
#include <vector>

#include "orva/detect/elementary.h"
#include "tests/detect/label_image.h"

namespace orva::test {
namespace {

using detect::measureObjects;
using detect::ObjectMeasures;

// The first region's measurements, with black pixels.
ObjectMeasures measured(const image<int>& labels) {
  return measureObjects(labels, image<float>(labels.nx(), labels.ny(), 1, 1, 1)).at(0);
}

// A rectangle of label 1 with a margin of 1.
image<int> rectangle(int width, int height) {
  image<int> labels(width + 2, height + 2, 1, 1, 1);
  for (int y = 1; y <= height; ++y) {
    for (int x = 1; x <= width; ++x) labels.pixels()[y * (width + 2) + x] = 1;
  }
  return labels;
}

TEST(Measure, ASinglePixel) {
  const ObjectMeasures m = measured(rectangle(1, 1));
  EXPECT_EQ(m.label, 1);
  EXPECT_EQ(m.area, 1);
  EXPECT_EQ(m.centroidRow, 1);
  EXPECT_EQ(m.centroidColumn, 1);
  EXPECT_DOUBLE_EQ(m.equivalentDiameterArea, std::sqrt(4 / detect::kPi));
  EXPECT_EQ(m.perimeter, 0);
  EXPECT_EQ(m.eccentricity, 0);
  EXPECT_EQ(m.majorAxisLength, 0);
  EXPECT_EQ(m.minorAxisLength, 0);
  EXPECT_EQ(m.orientation, 0);
  EXPECT_EQ(m.solidity, 1);
  EXPECT_FALSE(m.touchesBorder);
}

TEST(Measure, ARectangle) {
  const ObjectMeasures m = measured(rectangle(6, 4));
  EXPECT_EQ(m.area, 24);
  EXPECT_EQ(m.centroidRow, 2.5);
  EXPECT_EQ(m.centroidColumn, 3.5);
  // The variance of n whole numbers in a row is (n^2 - 1) / 12.
  EXPECT_DOUBLE_EQ(m.majorAxisLength, 4 * std::sqrt(35.0 / 12));
  EXPECT_DOUBLE_EQ(m.minorAxisLength, 4 * std::sqrt(15.0 / 12));
  EXPECT_DOUBLE_EQ(m.eccentricity, std::sqrt(1 - 15.0 / 35));
  EXPECT_DOUBLE_EQ(m.orientation, detect::kPi / 2);
  // The border pixels are a rectangle of 5 by 3 steps.
  EXPECT_EQ(m.perimeter, 16);
  EXPECT_EQ(m.solidity, 1);
  EXPECT_EQ(m.minRow, 1);
  EXPECT_EQ(m.minColumn, 1);
  EXPECT_EQ(m.endRow, 5);
  EXPECT_EQ(m.endColumn, 7);
}

TEST(Measure, OrientationIsTheAngleToTheRowAxis) {
  EXPECT_EQ(measured(rectangle(2, 5)).orientation, 0);
  const ObjectMeasures down = measured(labelImage(4, {1, 0, 0, 0,  //
                                                      0, 1, 0, 0,  //
                                                      0, 0, 1, 0,  //
                                                      0, 0, 0, 1}));
  EXPECT_DOUBLE_EQ(down.orientation, detect::kPi / 4);
  const ObjectMeasures up = measured(labelImage(4, {0, 0, 0, 1,  //
                                                    0, 0, 1, 0,  //
                                                    0, 1, 0, 0,  //
                                                    1, 0, 0, 0}));
  EXPECT_DOUBLE_EQ(up.orientation, -detect::kPi / 4);
  EXPECT_DOUBLE_EQ(up.majorAxisLength, 4 * std::sqrt(2 * 15.0 / 12));
  EXPECT_NEAR(up.minorAxisLength, 0, 1e-7);
  EXPECT_NEAR(up.eccentricity, 1, 1e-12);
}

TEST(Measure, PerimeterRunsThroughBorderPixels) {
  // A diamond: four diagonal steps of two on each side.
  const ObjectMeasures m = measured(labelImage(7, {0, 0, 0, 0, 0, 0, 0,  //
                                                   0, 0, 0, 1, 0, 0, 0,  //
                                                   0, 0, 1, 1, 1, 0, 0,  //
                                                   0, 1, 1, 1, 1, 1, 0,  //
                                                   0, 0, 1, 1, 1, 0, 0,  //
                                                   0, 0, 0, 1, 0, 0, 0,  //
                                                   0, 0, 0, 0, 0, 0, 0}));
  EXPECT_DOUBLE_EQ(m.perimeter, 8 * std::sqrt(2.0));
  // A square with a cut corner: five straight pixels, and two between a straight and a diagonal
  // step.
  const ObjectMeasures cut = measured(labelImage(5, {0, 0, 0, 0, 0,  //
                                                     0, 0, 1, 1, 0,  //
                                                     0, 1, 1, 1, 0,  //
                                                     0, 1, 1, 1, 0,  //
                                                     0, 0, 0, 0, 0}));
  EXPECT_DOUBLE_EQ(cut.perimeter, 5 + 2 * (1 + std::sqrt(2.0)) / 2);
}

TEST(Measure, SolidityCountsThePixelsOfTheHull) {
  // The hull of an L of 3 + 2 pixels contains one pixel more.
  const ObjectMeasures m = measured(labelImage(5, {0, 0, 0, 0, 0,  //
                                                   0, 1, 0, 0, 0,  //
                                                   0, 1, 0, 0, 0,  //
                                                   0, 1, 1, 1, 0,  //
                                                   0, 0, 0, 0, 0}));
  EXPECT_DOUBLE_EQ(m.solidity, 5.0 / 6);
  // Two pixels far apart in a row: the hull contains the gap.
  EXPECT_DOUBLE_EQ(measured(labelImage(6, {1, 0, 0, 0, 0, 1})).solidity, 2.0 / 6);
}

TEST(Measure, IntensitiesOfAColumn) {
  const image<int> labels = labelImage(2, {7, 0, 7, 0, 7, 0, 7, 0});
  image<short> img(2, 4, 1, 1, 1);
  for (int y = 0; y < 4; ++y) {
    img.pixels()[2 * y] = static_cast<short>(y * y - 3);  // -3, -2, 1, 6
    img.pixels()[2 * y + 1] = 1000;
  }
  const ObjectMeasures m = measureObjects(labels, img).at(0);
  EXPECT_EQ(m.label, 7);
  EXPECT_EQ(m.meanIntensity, 0.5);
  EXPECT_EQ(m.minIntensity, -3);
  EXPECT_EQ(m.maxIntensity, 6);
  EXPECT_DOUBLE_EQ(m.intensityStd, std::sqrt((3.5 * 3.5 + 2.5 * 2.5 + 0.5 * 0.5 + 5.5 * 5.5) / 4));
  EXPECT_TRUE(m.touchesBorder);
}

TEST(Measure, ANanMakesIntensitiesNan) {
  image<float> img(3, 1, 1, 1, 1);
  img.pixels()[1] = std::numeric_limits<float>::quiet_NaN();
  const std::vector<ObjectMeasures> all = measureObjects(labelImage(3, {1, 1, 2}), img);
  EXPECT_TRUE(std::isnan(all[0].meanIntensity));
  EXPECT_TRUE(std::isnan(all[0].minIntensity));
  EXPECT_TRUE(std::isnan(all[0].maxIntensity));
  EXPECT_TRUE(std::isnan(all[0].intensityStd));
  EXPECT_EQ(all[1].meanIntensity, 0);
}

TEST(Measure, LabelsAreInAscendingOrder) {
  const image<int> labels = labelImage(4, {2000000000, 0, -5, 3,  //
                                           3, 1, 1, 2000000000});
  const std::vector<ObjectMeasures> all =
      measureObjects(labels, image<unsigned char>(4, 2, 1, 1, 1));
  ASSERT_EQ(all.size(), 3U);
  EXPECT_EQ(all[0].label, 1);
  EXPECT_EQ(all[1].label, 3);
  EXPECT_EQ(all[2].label, 2000000000);
  EXPECT_EQ(all[1].area, 2);
  EXPECT_EQ(all[1].centroidRow, 0.5);
  EXPECT_EQ(all[1].centroidColumn, 1.5);
  EXPECT_EQ(all[1].endColumn, 4);
}

TEST(Measure, NeighbouringLabelsDoNotJoin) {
  const std::vector<ObjectMeasures> all = measureObjects(labelImage(6, {1, 1, 1, 2, 2, 2,  //
                                                                        1, 1, 1, 2, 2, 2,  //
                                                                        1, 1, 1, 2, 2, 2}),
                                                         image<unsigned char>(6, 3, 1, 1, 1));
  for (const ObjectMeasures& m : all) EXPECT_EQ(m.perimeter, 8) << m.label;
}

TEST(Measure, OfNothing) {
  EXPECT_TRUE(measureObjects(image<int>(0, 0, 0, 0, 0), image<float>(0, 0, 0, 0, 0)).empty());
  EXPECT_TRUE(measureObjects(image<int>(9, 7, 1, 1, 1), image<float>(9, 7, 1, 1, 1)).empty());
}

TEST(Measure, RejectsImagesOfOtherSizes) {
  const image<int> labels(4, 3, 1, 1, 1);
  EXPECT_THROW(measureObjects(labels, image<float>(3, 4, 1, 1, 1)), std::invalid_argument);
  EXPECT_THROW(measureObjects(labels, image<float>(4, 4, 1, 1, 1)), std::invalid_argument);
}

TEST(ArcTangent, AgreesWithTheLibrary) {
  for (int k = 0; k < 720; ++k) {
    const double angle = (k - 359.5) / 360 * detect::kPi;
    for (const double length : {1e-12, 0.3, 5e9}) {
      const double x = length * std::cos(angle);
      const double y = length * std::sin(angle);
      EXPECT_NEAR(detect::arcTangent(y, x), std::atan2(y, x), 1e-14) << angle;
    }
  }
  EXPECT_EQ(detect::arcTangent(0, 0), 0);
  EXPECT_DOUBLE_EQ(detect::arcTangent(0, -2), detect::kPi);
  EXPECT_DOUBLE_EQ(detect::arcTangent(3, 0), detect::kPi / 2);
  EXPECT_DOUBLE_EQ(detect::arcTangent(-3, 0), -detect::kPi / 2);
}

}  // namespace
}  // namespace orva::test
