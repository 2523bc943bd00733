#include <gtest/gtest.h>

#include <cmath>

#include "orva/bip/bip.h"
#include "tests/support/reference/distance.h"
#include "tests/support/shapes.h"
#include "tests/support/test_images.h"

namespace orva::test {
namespace {

// Whether adding up to eight ones one by one gives the same as adding their number.
bool sumsAgree(float v) {
  float sum = v;
  for (int k = 1; k <= 8; ++k) {
    sum += 1.0F;
    if (sum != v + static_cast<float>(k)) return false;
  }
  return true;
}

TEST(ChamferRows, OnesAddUpAtOnceForEveryDistanceThatOccurs) {
  for (const float v : {0.0F, 1.0F, std::sqrt(2.0F), std::sqrt(3.0F)})
    EXPECT_TRUE(sumsAgree(v)) << v;
  int wrong = 0;
  for (float v = 2.0F; v < 8.0F; v = std::nextafter(v, 9.0F)) wrong += sumsAgree(v) ? 0 : 1;
  EXPECT_EQ(wrong, 0);
  for (float v = 8.0F; v < 10001.0F; v *= 1.00001F) wrong += sumsAgree(v) ? 0 : 1;
  EXPECT_EQ(wrong, 0);
}

TEST(ChamferRows, OnesDoNotAddUpAtOnceForOtherNumbers) {
  int wrong = 0;
  for (float v = 1.0F; v < 2.0F; v = std::nextafter(v, 3.0F)) wrong += sumsAgree(v) ? 0 : 1;
  EXPECT_GT(wrong, 0);  // so the distances below 2 have to be tried
}

// Calls check(random, shape) with a plane of many rows and a volume of every width.
template <class Check>
void forChamferShapesOfEveryWidth(Check check) {
  Random random(71);
  forEveryWidth([&](int width) {
    for (const Shape& shape :
         {Shape{width, 1 + width % 23}, Shape{width, 3 + width % 4, 3 + width % 2}}) {
      check(random, shape);
    }
  });
}

TEST(ChamferMatchesReferenceAtEveryWidth, ForMasks) {
  forChamferShapesOfEveryWidth([](Random& random, const Shape& shape) {
    for (const double share : {0.5, 0.97, 0.999}) {
      const image<unsigned char> mask = randomMask(random, shape, share);
      ASSERT_TRUE(sameImage(bip::fchamfer(mask), reference::fchamfer(mask))) << shape.nx;
    }
  });
}

TEST(ChamferMatchesReferenceAtEveryWidth, ForLabels) {
  forChamferShapesOfEveryWidth([](Random& random, const Shape& shape) {
    for (const int maxLabel : {0, 3}) {
      const image<short> labels = randomLabels(random, shape, maxLabel);
      ASSERT_TRUE(sameImage(bip::fchamfer(labels), reference::fchamfer(labels))) << shape.nx;
    }
  });
}

TEST(PropagationMatchesReferenceAtEveryWidth, ForDistantLabels) {
  forChamferShapesOfEveryWidth([](Random& random, const Shape& shape) {
    // Few seeds: many pixels at the same distance of two of them.
    image<short> labels = blank<short>(shape);
    for (int i = 0; i < labels.npix(); ++i) {
      labels.pixels()[i] =
          static_cast<short>(randomInt(random, 0, 40) == 0 ? randomInt(random, 0, 9) : -1);
    }
    for (const float maxDistance : {3.5F, 20000.0F}) {
      image<short> own = labels.duplicate();
      image<short> expected = labels.duplicate();
      bip::propagate(own, maxDistance);
      reference::propagate(expected, maxDistance);
      ASSERT_TRUE(sameImage(own, expected)) << shape.nx;
    }
  });
}

TEST(ChamferMatchesReference, ForASingleZeroInALargePlane) {
  image<unsigned char> mask = blank<unsigned char>({301, 203});
  std::fill_n(mask.pixels(), mask.npix(), static_cast<unsigned char>(9));
  mask.pixels()[17 + 301 * 90] = 0;
  EXPECT_TRUE(sameImage(bip::fchamfer(mask), reference::fchamfer(mask)));
}

}  // namespace
}  // namespace orva::test
