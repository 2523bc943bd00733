#include "orva/image/jni_image.h"

#include <cstdint>
#include <string_view>

namespace orva::jni {

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

jfloatArray newArray(JNIEnv* env, const std::vector<jfloat>& values) {
  const auto length = static_cast<jsize>(values.size());
  jfloatArray array = env->NewFloatArray(length);
  if (array != nullptr) env->SetFloatArrayRegion(array, 0, length, values.data());
  return array;
}

jfloatArray raise(JNIEnv* env, const char* type, const std::string& message) {
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
