// Images, arrays and exceptions between Java and C++, for the native methods. Built with
// ORVA_BUILD_JAVA.
#ifndef ORVA_IMAGE_JNI_IMAGE_H
#define ORVA_IMAGE_JNI_IMAGE_H

#include <jni.h>

#include <cmath>
#include <cstddef>
#include <exception>
#include <new>
#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

#include "orva/image/image.h"
#include "orva/image/jni_progress.h"

namespace orva::jni {

// A parameter that Java leaves open as NaN.
inline std::optional<float> givenUnlessNan(float value) {
  return std::isnan(value) ? std::nullopt : std::optional(value);
}

// Throws std::invalid_argument for null and for an array whose length is not `height` times
// `width`. `name`: what the message calls the array.
void requireSize(JNIEnv* env, jarray array, const std::string& name, jint height, jint width);

// The image of `pixels`, row by row, which must have this size.
image<float> imageOf(JNIEnv* env, jfloatArray pixels, jint height, jint width);

// Null with a pending exception if Java cannot create it.
jfloatArray newArray(JNIEnv* env, const std::vector<jfloat>& values);
jdoubleArray newArray(JNIEnv* env, const std::vector<jdouble>& values);

// Leaves a Java exception pending; null.
std::nullptr_t raise(JNIEnv* env, const char* type, const std::string& message);

// The message of a C++ exception without the namespace that it starts with.
std::string withoutNamespace(const std::string& message);

// What search() returns, or null with its exception as one of Java. Reports the progress of the
// search. `results`: what OutOfMemoryError says did not fit.
template <class Search>
auto withJavaExceptions(JNIEnv* env, const char* results, const Search& search)
    -> decltype(search()) {
  constexpr const char* kIllegalArgument = "java/lang/IllegalArgumentException";
  const ProgressReport progress(env);
  try {
    const auto found = search();
    return progress.hasFailed() ? progress.raise() : found;
  } catch (const Cancelled&) {
    return progress.raise();
  } catch (const std::invalid_argument& e) {
    return raise(env, kIllegalArgument, withoutNamespace(e.what()));
  } catch (const std::length_error& e) {
    return raise(env, kIllegalArgument, std::string("The image ") + e.what());
  } catch (const std::bad_alloc&) {
    return raise(env, "java/lang/OutOfMemoryError",
                 std::string("The ") + results + " do not fit memory");
  } catch (const std::exception& e) {
    return raise(env, "java/lang/IllegalStateException", e.what());
  }
}

}  // namespace orva::jni

#endif
