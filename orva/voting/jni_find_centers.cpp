#include "orva/voting/jni_find_centers.h"

#include <cmath>
#include <cstdint>
#include <exception>
#include <new>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include "orva/image/image.h"
#include "orva/voting/find_centers.h"

namespace orva::voting {
namespace {

std::optional<float> givenUnlessNan(float value) {
  return std::isnan(value) ? std::nullopt : std::optional(value);
}

CircularVoting::RegionType regionType(jint polarity) {
  if (polarity < CircularVoting::Bright || polarity > CircularVoting::Both) {
    throw std::invalid_argument("polarity is not 0 to 2");
  }
  return static_cast<CircularVoting::RegionType>(polarity);
}

image<float> imageOf(JNIEnv* env, jfloatArray pixels, jint height, jint width) {
  if (pixels == nullptr) throw std::invalid_argument("The pixel array is null");
  const jsize length = env->GetArrayLength(pixels);
  if (height < 0 || width < 0 || length != std::int64_t{height} * width) {
    throw std::invalid_argument("The pixel array does not hold height times width values");
  }
  image<float> img(width, height, 1, 1, 1);
  env->GetFloatArrayRegion(pixels, 0, length, img.pixels());
  return img;
}

// Column, row and weight of each center. Columns and rows have 15 bits, so floats hold them.
std::vector<jfloat> triplesOf(const std::vector<Center>& centers) {
  std::vector<jfloat> triples;
  triples.reserve(3 * centers.size());
  for (const Center& c : centers) {
    triples.insert(triples.end(), {static_cast<jfloat>(c.x), static_cast<jfloat>(c.y), c.weight});
  }
  return triples;
}

jfloatArray newArray(JNIEnv* env, const std::vector<jfloat>& values) {
  const auto length = static_cast<jsize>(values.size());
  jfloatArray array = env->NewFloatArray(length);
  if (array != nullptr) env->SetFloatArrayRegion(array, 0, length, values.data());
  return array;
}

// Leaves a Java exception pending.
jfloatArray raise(JNIEnv* env, const char* type, const std::string& message) {
  if (jclass exception = env->FindClass(type)) env->ThrowNew(exception, message.c_str());
  return nullptr;
}

// The message of a C++ exception without the namespace that it starts with.
std::string withoutNamespace(std::string_view message) {
  constexpr std::string_view prefix = "orva::voting::";
  if (message.starts_with(prefix)) message.remove_prefix(prefix.size());
  return std::string(message);
}

// What search() returns, or null with its exception as one of Java.
template <class Search>
jfloatArray withJavaExceptions(JNIEnv* env, const Search& search) {
  constexpr const char* kIllegalArgument = "java/lang/IllegalArgumentException";
  try {
    return search();
  } catch (const std::invalid_argument& e) {
    return raise(env, kIllegalArgument, withoutNamespace(e.what()));
  } catch (const std::length_error& e) {
    return raise(env, kIllegalArgument, std::string("The image ") + e.what());
  } catch (const std::bad_alloc&) {
    return raise(env, "java/lang/OutOfMemoryError", "The centers do not fit memory");
  } catch (const std::exception& e) {
    return raise(env, "java/lang/IllegalStateException", e.what());
  }
}

}  // namespace
}  // namespace orva::voting

jfloatArray Java_orva_NativeVoting_findCenters(JNIEnv* env, jclass /*type*/, jfloatArray pixels,
                                               jint height, jint width, jint polarity,
                                               jint minRadius, jint maxRadius, jint coneWidth,
                                               jfloat sigma, jfloat gradient,
                                               jfloat relativeGradient, jfloat threshold,
                                               jfloat relativeThreshold, jboolean edges,
                                               jfloat power) {
  using namespace orva::voting;
  return withJavaExceptions(env, [&] {
    VoteSettings settings;
    settings.polarity = regionType(polarity);
    settings.minRadius = minRadius;
    settings.maxRadius = maxRadius;
    if (coneWidth >= 0) settings.coneWidth = coneWidth;
    settings.sigma = givenUnlessNan(sigma);
    settings.gradient = givenUnlessNan(gradient);
    settings.relativeGradient = relativeGradient;
    settings.threshold = givenUnlessNan(threshold);
    settings.relativeThreshold = relativeThreshold;
    settings.edges = edges == JNI_TRUE;
    settings.power = power;
    const orva::image<float> img = imageOf(env, pixels, height, width);
    return newArray(env, triplesOf(findCenters(img, settings).centers));
  });
}
