// findCenters() for Java.
#include "orva/voting/jni_find_centers.h"

#include <gtest/gtest.h>
#include <jni.h>
#include <malloc.h>

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <limits>
#include <string>
#include <vector>

#include "orva/image/image.h"
#include "orva/voting/find_centers.h"
#include "tests/support/fake_java.h"
#include "tests/support/sanitizer.h"

namespace orva::test {
namespace {

constexpr float kOpen = std::numeric_limits<float>::quiet_NaN();

struct Call {
  std::vector<jfloat> pixels;
  jint height = 0;
  jint width = 0;
  jint polarity = voting::CircularVoting::Bright;
  jint minRadius = 1;
  jint maxRadius = 8;
  jint coneWidth = -1;
  jfloat sigma = kOpen;
  jfloat gradient = kOpen;
  jfloat relativeGradient = 0.03F;
  jfloat threshold = kOpen;
  jfloat relativeThreshold = 0.3F;
  jboolean edges = JNI_FALSE;
  jfloat power = 0.5F;
};

// A bright and a dark disc of radius 6 on a slope.
Call discs(jint width, jint height) {
  Call call;
  call.width = width;
  call.height = height;
  for (int y = 0; y < height; ++y) {
    for (int x = 0; x < width; ++x) {
      const bool bright = std::hypot(x - 14, y - 12) <= 6;
      const bool dark = std::hypot(x - 34, y - 20) <= 6;
      const float background = 80.0F + 0.125F * static_cast<float>(x);
      call.pixels.push_back(bright ? 200.0F : dark ? 10.5F : background);
    }
  }
  return call;
}

class JavaFindCenters : public JavaCalls {
 protected:
  jfloatArray run(const Call& c, jfloatArray pixels) {
    return Java_orva_NativeVoting_findCenters(env(), nullptr, pixels, c.height, c.width, c.polarity,
                                              c.minRadius, c.maxRadius, c.coneWidth, c.sigma,
                                              c.gradient, c.relativeGradient, c.threshold,
                                              c.relativeThreshold, c.edges, c.power);
  }

  jfloatArray run(const Call& c) {
    FloatArray array;
    array.values = c.pixels;
    return run(c, &array);
  }

  // Column, row and weight of each center.
  std::vector<jfloat> found(const Call& c) {
    EXPECT_EQ(run(c), &machine.result);
    EXPECT_EQ(machine.message, "");
    return machine.result.values;
  }

  // The exception of a call that returns null.
  std::string refusal(const Call& c) {
    EXPECT_EQ(run(c), nullptr);
    return pendingException();
  }
};

std::vector<jfloat> expected(const Call& c, const voting::VoteSettings& settings) {
  image<float> img(c.width, c.height, 1, 1, 1);
  std::copy(c.pixels.begin(), c.pixels.end(), img.pixels());
  std::vector<jfloat> triples;
  for (const voting::Center& center : voting::findCenters(img, settings).centers) {
    triples.push_back(static_cast<jfloat>(center.x));
    triples.push_back(static_cast<jfloat>(center.y));
    triples.push_back(center.weight);
  }
  return triples;
}

TEST_F(JavaFindCenters, FindsColumnRowAndWeight) {
  const Call call = discs(50, 32);
  voting::VoteSettings settings;
  settings.maxRadius = 8;
  const std::vector<jfloat> centers = found(call);
  ASSERT_FALSE(centers.empty());
  EXPECT_EQ(centers, expected(call, settings));
  EXPECT_NEAR(centers[0], 14.0F, 1.0F);
  EXPECT_NEAR(centers[1], 12.0F, 1.0F);
}

TEST_F(JavaFindCenters, PassesEverySettingOn) {
  Call call = discs(50, 32);
  voting::VoteSettings settings;
  settings.maxRadius = 8;
  const std::vector<jfloat> usual = found(call);
  const auto expectEffect = [&](const char* name) {
    const std::vector<jfloat> centers = found(call);
    EXPECT_EQ(centers, expected(call, settings)) << name;
    EXPECT_NE(centers, usual) << name;
    call = discs(50, 32);
    settings = voting::VoteSettings();
    settings.maxRadius = 8;
  };
  call.polarity = settings.polarity = voting::CircularVoting::Dark;
  expectEffect("dark");
  call.polarity = settings.polarity = voting::CircularVoting::Both;
  expectEffect("both");
  call.minRadius = settings.minRadius = 5;
  expectEffect("minRadius");
  call.maxRadius = settings.maxRadius = 10;
  expectEffect("maxRadius");
  settings.coneWidth = call.coneWidth = 2;
  expectEffect("coneWidth");
  settings.sigma = call.sigma = 2.5F;
  expectEffect("sigma");
  settings.gradient = call.gradient = 20.0F;
  expectEffect("gradient");
  call.relativeGradient = settings.relativeGradient = 0.7F;
  expectEffect("relativeGradient");
  settings.threshold = call.threshold = 40.0F;
  expectEffect("threshold");
  call.relativeThreshold = settings.relativeThreshold = 0.9F;
  expectEffect("relativeThreshold");
  call.edges = JNI_TRUE;
  settings.edges = true;
  expectEffect("edges");
  call.power = settings.power = 2.0F;
  expectEffect("power");
}

TEST_F(JavaFindCenters, FindsNothingInAnImageWithoutPixels) {
  Call call;
  EXPECT_EQ(found(call), std::vector<jfloat>());
  call.width = 40000;
  EXPECT_EQ(found(call), std::vector<jfloat>());
}

TEST_F(JavaFindCenters, TakesPixelsThatAreNoNumbers) {
  Call call = discs(50, 32);
  call.pixels[3] = kOpen;
  call.pixels[400] = std::numeric_limits<float>::infinity();
  voting::VoteSettings settings;
  settings.maxRadius = 8;
  EXPECT_EQ(found(call).size(), expected(call, settings).size());
}

TEST_F(JavaFindCenters, RefusesAnArrayThatIsNotTheImage) {
  const std::string wrongLength =
      "java/lang/IllegalArgumentException: The pixel array does not hold height times width values";
  Call call = discs(50, 32);
  call.height = 31;
  EXPECT_EQ(refusal(call), wrongLength);
  call.height = -32;
  call.width = -50;
  EXPECT_EQ(refusal(call), wrongLength);
  call.pixels.clear();
  call.height = call.width = 1 << 16;
  EXPECT_EQ(refusal(call), wrongLength);
  EXPECT_EQ(run(call, nullptr), nullptr);
  EXPECT_EQ(machine.message, "The pixel array is null");
}

TEST_F(JavaFindCenters, RefusesSettingsOutOfTheirRange) {
  Call call = discs(50, 32);
  call.relativeThreshold = 0.01F;
  EXPECT_EQ(refusal(call),
            "java/lang/IllegalArgumentException: VoteSettings: relativeThreshold is not 0.05 to 1");
  call = discs(50, 32);
  call.minRadius = 9;
  EXPECT_EQ(refusal(call),
            "java/lang/IllegalArgumentException: VoteSettings: minRadius is not 1 to maxRadius");
  for (const jint polarity : {-1, 3}) {
    call = discs(50, 32);
    call.polarity = polarity;
    EXPECT_EQ(refusal(call), "java/lang/IllegalArgumentException: polarity is not 0 to 2");
  }
}

TEST_F(JavaFindCenters, RefusesAnImageThatIsTooLarge) {
  Call call;
  call.width = 32767 - 2 * static_cast<int>(voting::voteMargin(4, 8));
  call.height = 1;
  call.pixels.assign(static_cast<std::size_t>(call.width), 7.0F);
  EXPECT_EQ(found(call), std::vector<jfloat>());
  ++call.width;
  call.pixels.push_back(7.0F);
  EXPECT_EQ(refusal(call),
            "java/lang/IllegalArgumentException: The image is too large to vote on: a side and "
            "twice the margin exceed 32767 pixels");
}

TEST_F(JavaFindCenters, LeavesTheExceptionOfAFailedCreation) {
  machine.creates = false;
  EXPECT_EQ(run(discs(50, 32)), nullptr);
  EXPECT_EQ(machine.message, "");
}

#if !defined(ORVA_ADDRESS_SANITIZER)  // which has an allocator of its own and reports leaks
TEST_F(JavaFindCenters, KeepsNothing) {
  const auto inUse = [] {
    const struct mallinfo2 info = mallinfo2();
    return info.uordblks + info.hblkhd;
  };
  Call call;
  call.width = 1500;
  call.height = 1000;
  call.maxRadius = 1;
  call.pixels.assign(1'500'000, 7.0F);
  FloatArray array;
  array.values = call.pixels;
  run(call, &array);
  const std::size_t before = inUse();
  for (int i = 0; i < 3; ++i) run(call, &array);
  EXPECT_LE(inUse(), before + 10'000);
}
#endif

}  // namespace
}  // namespace orva::test
