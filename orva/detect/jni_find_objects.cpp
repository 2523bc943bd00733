#include "orva/detect/jni_find_objects.h"

#include <optional>
#include <stdexcept>
#include <vector>

#include "orva/detect/detect.h"
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

// Radius, polarity and confidence, and the same of the runner-up.
std::vector<jfloat> valuesOf(const SettingsEstimate& estimate) {
  std::vector<jfloat> values;
  for (const Settings& s : {Settings(estimate), estimate.runnerUp}) {
    values.insert(values.end(), {s.radius, static_cast<jfloat>(s.polarity), s.confidence});
  }
  return values;
}

// The settings used, then column, row, radius, score and coverage of each object.
std::vector<jfloat> valuesOf(const FindResult& result) {
  std::vector<jfloat> values = valuesOf(result.used);
  values.reserve(values.size() + 5 * result.objects.size());
  for (const Object& o : result.objects) {
    values.insert(values.end(), {o.x, o.y, o.radius, o.score, o.coverage});
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
    FindSettings settings;
    settings.radius = givenUnlessNan(radius);
    settings.minRadius = givenUnlessNan(minRadius);
    settings.maxRadius = givenUnlessNan(maxRadius);
    settings.polarity = polarityOf(polarity);
    settings.minScore = minScore;
    const orva::image<float> img = imageOf(env, pixels, height, width);
    return newArray(env, valuesOf(findObjects(img, settings)));
  });
}

jfloatArray Java_orva_NativeDetection_estimateSettings(JNIEnv* env, jclass /*type*/,
                                                       jfloatArray pixels, jint height,
                                                       jint width) {
  using namespace orva::detect;
  using namespace orva::jni;
  return withJavaExceptions(env, "objects", [&] {
    return newArray(env, valuesOf(estimateSettings(imageOf(env, pixels, height, width))));
  });
}
