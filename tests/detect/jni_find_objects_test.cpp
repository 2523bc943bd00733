// findObjects() and estimateSettings() for Java.
#include <gtest/gtest.h>
#include <jni.h>
#include <malloc.h>

#include <cmath>
#include <cstddef>
#include <limits>
#include <string>
#include <vector>

#include "orva/detect/detect.h"
#include "orva/detect/jni_detection.h"
#include "orva/image/image.h"
#include "tests/detect/jni_calls.h"
#include "tests/support/fake_java.h"
#include "tests/support/sanitizer.h"

namespace orva::test {
namespace {

class JavaFindObjects : public JavaCalls {
 protected:
  jfloatArray run(const FindCall& c, jfloatArray pixels) {
    return Java_orva_NativeDetection_findObjects(env(), nullptr, pixels, c.height, c.width,
                                                 c.radius, c.minRadius, c.maxRadius, c.polarity,
                                                 c.minScore);
  }

  jfloatArray run(const FindCall& c) {
    FloatArray array;
    array.values = c.pixels;
    return run(c, &array);
  }

  jfloatArray estimate(const FindCall& c) {
    FloatArray array;
    array.values = c.pixels;
    return Java_orva_NativeDetection_estimateSettings(env(), nullptr, &array, c.height, c.width);
  }

  std::vector<jfloat> found(const FindCall& c) {
    EXPECT_EQ(run(c), &machine.result);
    EXPECT_EQ(machine.message, "");
    return machine.result.values;
  }

  // The exception of a call that returns null.
  std::string refusal(const FindCall& c) {
    EXPECT_EQ(run(c), nullptr);
    return pendingException();
  }
};

std::vector<jfloat> expected(const image<float>& img, const detect::FindSettings& settings) {
  const detect::FindResult result = detect::findObjects(img, settings);
  std::vector<jfloat> values = valuesOf<jfloat>(result.used);
  for (const detect::Object& o : result.objects) {
    for (const float v : {o.x, o.y, o.radius, o.score, o.coverage}) values.push_back(v);
  }
  return values;
}

TEST_F(JavaFindObjects, FindsTheObjectsAndTheSettingsUsed) {
  const image<float> img = sceneOfDiscs();
  const std::vector<jfloat> values = found(callOf(img));
  EXPECT_EQ(values, expected(img, {}));
  ASSERT_EQ(values.size(), 6U + 5U * 5U);
  EXPECT_EQ(values[1], 0.0F);  // bright
}

TEST_F(JavaFindObjects, PassesEverySettingOn) {
  const image<float> img = sceneOfDiscs();
  const FindCall usual = callOf(img);
  const std::vector<jfloat> open = found(usual);
  FindCall call = usual;
  detect::FindSettings settings;
  const auto expectEffect = [&](const char* name) {
    const std::vector<jfloat> values = found(call);
    EXPECT_EQ(values, expected(img, settings)) << name;
    EXPECT_NE(values, open) << name;
    call = usual;
    settings = {};
  };
  settings.radius = call.radius = 20.0F;
  expectEffect("radius");
  settings.minRadius = call.minRadius = 8.0F;
  expectEffect("minRadius");
  settings.maxRadius = call.maxRadius = 8.0F;
  expectEffect("maxRadius");
  call.polarity = 1;
  settings.polarity = detect::Polarity::Dark;
  expectEffect("dark");
  call.polarity = 0;
  settings.polarity = detect::Polarity::Bright;
  expectEffect("bright");
  call.minScore = settings.minScore = 1.0F;
  expectEffect("minScore");
}

TEST_F(JavaFindObjects, EstimatesTheSettings) {
  const image<float> img = sceneOfDiscs();
  EXPECT_EQ(estimate(callOf(img)), &machine.result);
  EXPECT_EQ(machine.message, "");
  EXPECT_EQ(machine.result.values, valuesOf<jfloat>(detect::estimateSettings(img)));
  EXPECT_GT(machine.result.values[0], 0.0F);
}

TEST_F(JavaFindObjects, FindsNothingInAnImageWithoutPixels) {
  FindCall call;
  const std::vector<jfloat> nothing = found(call);
  ASSERT_EQ(nothing.size(), 6U);
  EXPECT_EQ(nothing[0], 0.0F);
  EXPECT_EQ(nothing[2], 0.0F);
  call.width = 40000;
  EXPECT_EQ(found(call), nothing);
  estimate(call);
  EXPECT_EQ(machine.result.values, nothing);
}

TEST_F(JavaFindObjects, TakesPixelsThatAreNoNumbers) {
  image<float> img = sceneOfDiscs();
  img.pixels()[3] = kOpen;
  img.pixels()[400] = std::numeric_limits<float>::infinity();
  EXPECT_EQ(found(callOf(img)), expected(img, {}));
}

TEST_F(JavaFindObjects, RefusesAnArrayThatIsNotTheImage) {
  const std::string wrongLength =
      "java/lang/IllegalArgumentException: The pixel array does not hold height times width values";
  FindCall call = callOf(sceneOfDiscs());
  ++call.height;
  EXPECT_EQ(refusal(call), wrongLength);
  EXPECT_EQ(estimate(call), nullptr);
  EXPECT_EQ(pendingException(), wrongLength);
  call = callOf(sceneOfDiscs());
  call.height = -call.height;
  call.width = -call.width;
  EXPECT_EQ(refusal(call), wrongLength);
  call.pixels.clear();
  call.height = call.width = 1 << 16;
  EXPECT_EQ(refusal(call), wrongLength);
  EXPECT_EQ(run(call, nullptr), nullptr);
  EXPECT_EQ(machine.message, "The pixel array is null");
}

TEST_F(JavaFindObjects, RefusesSettingsOutOfTheirRange) {
  FindCall call = callOf(sceneOfDiscs());
  call.radius = 0.0F;
  EXPECT_EQ(refusal(call),
            "java/lang/IllegalArgumentException: FindSettings: radius is not a number above 0");
  call = callOf(sceneOfDiscs());
  call.minRadius = 5.0F;
  call.maxRadius = 4.0F;
  EXPECT_EQ(refusal(call),
            "java/lang/IllegalArgumentException: FindSettings: maxRadius is not a number of at "
            "least minRadius");
  call = callOf(sceneOfDiscs());
  call.minScore = kOpen;
  EXPECT_EQ(refusal(call),
            "java/lang/IllegalArgumentException: FindSettings: minScore is not 0 to 1");
  for (const jint polarity : {-2, 2}) {
    call = callOf(sceneOfDiscs());
    call.polarity = polarity;
    EXPECT_EQ(refusal(call), "java/lang/IllegalArgumentException: polarity is not -1 to 1");
  }
}

TEST_F(JavaFindObjects, LeavesTheExceptionOfAFailedCreation) {
  machine.creates = false;
  EXPECT_EQ(run(callOf(sceneOfDiscs())), nullptr);
  EXPECT_EQ(machine.message, "");
}

#if !defined(ORVA_ADDRESS_SANITIZER)  // which has an allocator of its own and reports leaks
TEST_F(JavaFindObjects, KeepsNothing) {
  const auto inUse = [] {
    const struct mallinfo2 info = mallinfo2();
    return info.uordblks + info.hblkhd;
  };
  const FindCall call = callOf(sceneOfDiscs());
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
