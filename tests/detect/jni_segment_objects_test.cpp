// segmentObjects() for Java.
#include <gtest/gtest.h>
#include <jni.h>

#include <algorithm>
#include <cstddef>
#include <limits>
#include <string>
#include <vector>

#include "orva/detect/detect.h"
#include "orva/detect/jni_detection.h"
#include "orva/detect/measure.h"
#include "orva/detect/segment.h"
#include "orva/image/image.h"
#include "tests/detect/jni_calls.h"
#include "tests/support/fake_java.h"

namespace orva::test {
namespace {

constexpr std::size_t kEstimated = 6;
constexpr std::size_t kPerObject = 21;

struct SegmentCall : FindCall {
  explicit SegmentCall(const FindCall& c) : FindCall(c) {}

  jfloat minArea = 0.0F;
  jfloat maxArea = std::numeric_limits<float>::infinity();
  jboolean excludeBorder = JNI_FALSE;
};

// What Java is to get.
struct Outcome {
  std::vector<jdouble> values;
  std::vector<jint> labels;

  bool operator==(const Outcome&) const = default;
};

Outcome expectedOf(const image<float>& img, const detect::FindSettings& settings,
                   detect::SegmentSettings kept) {
  const detect::FindResult found = detect::findObjects(img, settings);
  kept.polarity = found.used.polarity;
  const detect::Segmentation s = detect::segmentObjects(img, found.objects, kept);
  Outcome all{valuesOf<jdouble>(found.used),
              {s.labels.pixels(), s.labels.pixels() + s.labels.npix()}};
  for (const detect::ObjectMeasures& m : detect::measureObjects(s.labels, img)) {
    const std::size_t k = (all.values.size() - kEstimated) / kPerObject;
    EXPECT_EQ(m.label, static_cast<int>(k) + 1);
    for (const double v : {double(m.label),
                           m.centroidRow,
                           m.centroidColumn,
                           m.area,
                           m.equivalentDiameterArea,
                           m.perimeter,
                           m.eccentricity,
                           m.majorAxisLength,
                           m.minorAxisLength,
                           m.orientation,
                           m.solidity,
                           m.meanIntensity,
                           m.minIntensity,
                           m.maxIntensity,
                           m.intensityStd,
                           double(m.minRow),
                           double(m.minColumn),
                           double(m.endRow),
                           double(m.endColumn),
                           double(found.objects[s.kept[k]].score),
                           m.touchesBorder ? 1.0 : 0.0}) {
      all.values.push_back(v);
    }
  }
  return all;
}

// The scene and a disc that the left border cuts.
image<float> sceneAtTheBorder() {
  image<float> img = sceneOfDiscs();
  const image<float> cut = drawn(150, 110, {disc(3, 53, 11)}, 0.0);
  std::transform(cut.pixels(), cut.pixels() + cut.npix(), img.pixels(), img.pixels(),
                 [](float a, float b) { return a + b; });
  return img;
}

class JavaSegmentObjects : public JavaCalls {
 protected:
  jdoubleArray run(const SegmentCall& c, jfloatArray pixels, jintArray labels) {
    return Java_orva_NativeDetection_segmentObjects(
        env(), nullptr, pixels, c.height, c.width, labels, c.radius, c.minRadius, c.maxRadius,
        c.polarity, c.minScore, c.minArea, c.maxArea, c.excludeBorder);
  }

  // With an array for so many labels.
  jdoubleArray run(const SegmentCall& c, std::size_t labels) {
    FloatArray pixels;
    pixels.values = c.pixels;
    machine.integers.values.assign(labels, kUntouched);
    return run(c, &pixels, &machine.integers);
  }

  Outcome found(const SegmentCall& c) {
    EXPECT_EQ(run(c, c.pixels.size()), &machine.doubles);
    EXPECT_EQ(machine.message, "");
    return {machine.doubles.values, machine.integers.values};
  }

  // The exception of a call that returns null and writes no label.
  std::string refusal(const SegmentCall& c, std::size_t labels) {
    EXPECT_EQ(run(c, labels), nullptr);
    EXPECT_EQ(machine.integers.values, std::vector<jint>(labels, kUntouched));
    return pendingException();
  }

  std::string refusal(const SegmentCall& c) { return refusal(c, c.pixels.size()); }

  static constexpr jint kUntouched = -7;
};

TEST_F(JavaSegmentObjects, ReturnsLabelsAndMeasurements) {
  const image<float> img = sceneAtTheBorder();
  const Outcome outcome = found(SegmentCall(callOf(img)));
  EXPECT_EQ(outcome, expectedOf(img, {}, {}));
  ASSERT_EQ(outcome.values.size(), kEstimated + 6 * kPerObject);
  EXPECT_EQ(*std::max_element(outcome.labels.begin(), outcome.labels.end()), 6);
}

TEST_F(JavaSegmentObjects, PassesEverySettingOn) {
  const image<float> img = sceneAtTheBorder();
  const SegmentCall usual(callOf(img));
  const Outcome open = found(usual);
  SegmentCall call = usual;
  detect::FindSettings settings;
  detect::SegmentSettings kept;
  const auto expectEffect = [&](const char* name) {
    const Outcome outcome = found(call);
    EXPECT_EQ(outcome, expectedOf(img, settings, kept)) << name;
    EXPECT_NE(outcome, open) << name;
    call = usual;
    settings = {};
    kept = {};
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
  call.minScore = settings.minScore = 1.0F;
  expectEffect("minScore");
  call.minArea = kept.minArea = 200.0F;
  expectEffect("minArea");
  call.maxArea = kept.maxArea = 200.0F;
  expectEffect("maxArea");
  call.excludeBorder = JNI_TRUE;
  kept.excludeBorder = true;
  expectEffect("excludeBorder");
}

TEST_F(JavaSegmentObjects, FindsNothingInAnImageWithoutPixels) {
  SegmentCall call{FindCall()};
  EXPECT_EQ(found(call).values.size(), kEstimated);
  call.width = 40000;
  EXPECT_EQ(found(call).values.size(), kEstimated);
}

TEST_F(JavaSegmentObjects, RefusesArraysThatAreNotTheImage) {
  const std::string prefix = "java/lang/IllegalArgumentException: The ";
  const SegmentCall usual(callOf(sceneOfDiscs()));
  const std::size_t n = usual.pixels.size();
  SegmentCall call = usual;
  ++call.height;
  EXPECT_EQ(refusal(call), prefix + "pixel array does not hold height times width values");
  EXPECT_EQ(refusal(usual, n - 1), prefix + "label array does not hold height times width values");
  EXPECT_EQ(refusal(usual, n + 1), prefix + "label array does not hold height times width values");
  EXPECT_EQ(refusal(usual, 0), prefix + "label array does not hold height times width values");
  FloatArray pixels;
  pixels.values = usual.pixels;
  EXPECT_EQ(run(usual, &pixels, nullptr), nullptr);
  EXPECT_EQ(pendingException(), prefix + "label array is null");
  EXPECT_EQ(run(usual, nullptr, &machine.integers), nullptr);
  EXPECT_EQ(pendingException(), prefix + "pixel array is null");
  call = usual;
  call.height = -call.height;
  call.width = -call.width;
  EXPECT_EQ(refusal(call), prefix + "pixel array does not hold height times width values");
}

TEST_F(JavaSegmentObjects, RefusesSettingsOutOfTheirRange) {
  const std::string prefix = "java/lang/IllegalArgumentException: ";
  const SegmentCall usual(callOf(sceneOfDiscs()));
  SegmentCall call = usual;
  call.radius = 0.0F;
  EXPECT_EQ(refusal(call), prefix + "FindSettings: radius is not a number above 0");
  call = usual;
  call.polarity = 2;
  EXPECT_EQ(refusal(call), prefix + "polarity is not -1 to 1");
  call = usual;
  call.minArea = -1.0F;
  EXPECT_EQ(refusal(call), prefix + "SegmentSettings: minArea is not a number of at least 0");
  call = usual;
  call.minArea = 5.0F;
  call.maxArea = 4.0F;
  EXPECT_EQ(refusal(call), prefix + "SegmentSettings: maxArea is not a number of at least minArea");
  call.maxArea = kOpen;
  EXPECT_EQ(refusal(call), prefix + "SegmentSettings: maxArea is not a number of at least minArea");
}

TEST_F(JavaSegmentObjects, LeavesTheExceptionOfAFailedCreation) {
  machine.creates = false;
  const SegmentCall call(callOf(sceneOfDiscs()));
  EXPECT_EQ(run(call, call.pixels.size()), nullptr);
  EXPECT_EQ(machine.message, "");
}

}  // namespace
}  // namespace orva::test
