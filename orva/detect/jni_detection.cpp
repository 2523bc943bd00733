#include "orva/detect/jni_detection.h"

#include <cstddef>
#include <optional>
#include <stdexcept>
#include <vector>

#include "orva/detect/detect.h"
#include "orva/detect/measure.h"
#include "orva/detect/segment.h"
#include "orva/image/image.h"
#include "orva/image/jni_image.h"

namespace orva::detect {
namespace {

constexpr jint kOpenPolarity = -1;

std::optional<Polarity> polarityOf(jint value) {
  if (value == kOpenPolarity) return std::nullopt;
  if (value != static_cast<jint>(Polarity::Bright) && value != static_cast<jint>(Polarity::Dark)) {
    throw std::invalid_argument("polarity is not -1 to 1");
  }
  return static_cast<Polarity>(value);
}

FindSettings settingsOf(jfloat radius, jfloat minRadius, jfloat maxRadius, jint polarity,
                        jfloat minScore) {
  FindSettings settings;
  settings.radius = jni::givenUnlessNan(radius);
  settings.minRadius = jni::givenUnlessNan(minRadius);
  settings.maxRadius = jni::givenUnlessNan(maxRadius);
  settings.polarity = polarityOf(polarity);
  settings.minScore = minScore;
  return settings;
}

// Radius, polarity and confidence, and the same of the runner-up.
template <class Value>
std::vector<Value> valuesOf(const SettingsEstimate& estimate) {
  std::vector<Value> values;
  for (const Settings& s : {Settings(estimate), estimate.runnerUp}) {
    values.insert(values.end(), {s.radius, static_cast<Value>(s.polarity), s.confidence});
  }
  return values;
}

// The settings used, then column, row, radius, score and coverage of each object.
std::vector<jfloat> valuesOf(const FindResult& result) {
  std::vector<jfloat> values = valuesOf<jfloat>(result.used);
  values.reserve(values.size() + 5 * result.objects.size());
  for (const Object& o : result.objects) {
    values.insert(values.end(), {o.x, o.y, o.radius, o.score, o.coverage});
  }
  return values;
}

// The settings used, then the measurements of each region with the score of its object.
std::vector<jdouble> valuesOf(const SegmentedImage& regions, const image<float>& img) {
  std::vector<jdouble> values = valuesOf<jdouble>(regions.used);
  for (const ObjectMeasures& m : measureObjects(regions.labels, img)) {
    for (const MeasureColumn& column : measureColumns()) values.push_back(column.of(m));
    values.push_back(regions.objects[static_cast<std::size_t>(m.label) - 1].score);
    values.push_back(m.touchesBorder ? 1.0 : 0.0);
  }
  return values;
}

}  // namespace
}  // namespace orva::detect

jfloatArray Java_orva_NativeDetection_findObjects(JNIEnv* env, jclass /*type*/, jfloatArray pixels,
                                                  jint height, jint width, jfloat radius,
                                                  jfloat minRadius, jfloat maxRadius, jint polarity,
                                                  jfloat minScore) {
  using namespace orva::detect;
  using namespace orva::jni;
  return withJavaExceptions(env, "objects", [&] {
    const FindSettings settings = settingsOf(radius, minRadius, maxRadius, polarity, minScore);
    const orva::image<float> img = imageOf(env, pixels, height, width);
    return newArray(env, valuesOf(findObjects(img, settings)));
  });
}

jdoubleArray Java_orva_NativeDetection_segmentObjects(
    JNIEnv* env, jclass /*type*/, jfloatArray pixels, jint height, jint width, jintArray labels,
    jfloat radius, jfloat minRadius, jfloat maxRadius, jint polarity, jfloat minScore,
    jfloat minArea, jfloat maxArea, jboolean excludeBorder) {
  using namespace orva::detect;
  using namespace orva::jni;
  return withJavaExceptions(env, "objects", [&] {
    const FindSettings settings = settingsOf(radius, minRadius, maxRadius, polarity, minScore);
    const orva::image<float> img = imageOf(env, pixels, height, width);
    requireSize(env, labels, "label", height, width);
    SegmentSettings kept;
    kept.minArea = minArea;
    kept.maxArea = maxArea;
    kept.excludeBorder = excludeBorder == JNI_TRUE;
    const SegmentedImage regions = segmentImage(img, settings, kept);
    const std::vector<jdouble> values = valuesOf(regions, img);
    jdoubleArray result = newArray(env, values);
    // A failed creation leaves the labels as they are.
    if (result != nullptr) {
      env->SetIntArrayRegion(labels, 0, regions.labels.npix(), regions.labels.pixels());
    }
    return result;
  });
}

jfloatArray Java_orva_NativeDetection_estimateSettings(JNIEnv* env, jclass /*type*/,
                                                       jfloatArray pixels, jint height,
                                                       jint width) {
  using namespace orva::detect;
  using namespace orva::jni;
  return withJavaExceptions(env, "objects", [&] {
    const orva::image<float> img = imageOf(env, pixels, height, width);
    return newArray(env, valuesOf<jfloat>(estimateSettings(img)));
  });
}
