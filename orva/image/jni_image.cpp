#include "orva/image/jni_image.h"

#include <cstdint>
#include <string_view>

namespace orva::jni {

void requireSize(JNIEnv* env, jarray array, const std::string& name, jint height, jint width) {
  if (array == nullptr) throw std::invalid_argument("The " + name + " array is null");
  if (height < 0 || width < 0 || env->GetArrayLength(array) != std::int64_t{height} * width) {
    throw std::invalid_argument("The " + name + " array does not hold height times width values");
  }
}

image<float> imageOf(JNIEnv* env, jfloatArray pixels, jint height, jint width) {
  requireSize(env, pixels, "pixel", height, width);
  image<float> img(width, height, 1, 1, 1);
  env->GetFloatArrayRegion(pixels, 0, img.npix(), img.pixels());
  return img;
}

jfloatArray newArray(JNIEnv* env, const std::vector<jfloat>& values) {
  const auto length = static_cast<jsize>(values.size());
  jfloatArray array = env->NewFloatArray(length);
  if (array != nullptr) env->SetFloatArrayRegion(array, 0, length, values.data());
  return array;
}

jdoubleArray newArray(JNIEnv* env, const std::vector<jdouble>& values) {
  const auto length = static_cast<jsize>(values.size());
  jdoubleArray array = env->NewDoubleArray(length);
  if (array != nullptr) env->SetDoubleArrayRegion(array, 0, length, values.data());
  return array;
}

std::nullptr_t raise(JNIEnv* env, const char* type, const std::string& message) {
  if (jclass exception = env->FindClass(type)) env->ThrowNew(exception, message.c_str());
  return nullptr;
}

std::string withoutNamespace(const std::string& message) {
  constexpr std::string_view prefix = "orva::";
  if (!message.starts_with(prefix)) return message;
  const std::size_t end = message.find("::", prefix.size());
  return end == std::string::npos ? message : message.substr(end + 2);
}

}  // namespace orva::jni
