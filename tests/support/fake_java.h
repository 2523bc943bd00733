// A Java machine with one caller, for tests of native methods: a table of JNI operations that holds
// those that they may use.
#ifndef ORVA_TESTS_SUPPORT_FAKE_JAVA_H
#define ORVA_TESTS_SUPPORT_FAKE_JAVA_H

#include <gtest/gtest.h>
#include <jni.h>

#include <algorithm>
#include <cstddef>
#include <string>
#include <vector>

namespace orva::test {

struct FloatArray : _jfloatArray {
  std::vector<jfloat> values;
};

struct IntArray : _jintArray {
  std::vector<jint> values;
};

struct DoubleArray : _jdoubleArray {
  std::vector<jdouble> values;
};

struct ExceptionClass : _jclass {
  std::string name;
};

// What a call left behind, and what is to fail.
struct Machine {
  bool creates = true;
  FloatArray result;
  DoubleArray doubles;  // the result of a method that returns these
  IntArray integers;    // the one array of integers that a method may take
  ExceptionClass exception;
  std::string message;
};

inline Machine machine;

inline jsize arrayLength(JNIEnv* /*env*/, jarray array) {
  if (array == &machine.integers) return static_cast<jsize>(machine.integers.values.size());
  return static_cast<jsize>(static_cast<FloatArray*>(array)->values.size());
}

inline void getRegion(JNIEnv* /*env*/, jfloatArray array, jsize start, jsize length, jfloat* to) {
  const std::vector<jfloat>& values = static_cast<FloatArray*>(array)->values;
  ASSERT_LE(static_cast<std::size_t>(start + length), values.size());
  std::copy_n(values.begin() + start, length, to);
}

inline jfloatArray newArray(JNIEnv* /*env*/, jsize length) {
  if (!machine.creates) return nullptr;
  machine.result.values.assign(static_cast<std::size_t>(length), -1.0F);
  return &machine.result;
}

inline void setRegion(JNIEnv* /*env*/, jfloatArray array, jsize start, jsize length,
                      const jfloat* from) {
  std::copy_n(from, length, static_cast<FloatArray*>(array)->values.begin() + start);
}

inline jdoubleArray newDoubleArray(JNIEnv* /*env*/, jsize length) {
  if (!machine.creates) return nullptr;
  machine.doubles.values.assign(static_cast<std::size_t>(length), -1.0);
  return &machine.doubles;
}

inline void setDoubleRegion(JNIEnv* /*env*/, jdoubleArray array, jsize start, jsize length,
                            const jdouble* from) {
  ASSERT_EQ(array, &machine.doubles);
  ASSERT_LE(static_cast<std::size_t>(start + length), machine.doubles.values.size());
  std::copy_n(from, length, machine.doubles.values.begin() + start);
}

inline void setIntRegion(JNIEnv* /*env*/, jintArray array, jsize start, jsize length,
                         const jint* from) {
  ASSERT_EQ(array, &machine.integers);
  ASSERT_LE(static_cast<std::size_t>(start + length), machine.integers.values.size());
  std::copy_n(from, length, machine.integers.values.begin() + start);
}

// There are no classes but those of exceptions.
inline jclass findClass(JNIEnv* /*env*/, const char* name) {
  if (!std::string(name).starts_with("java/")) return nullptr;
  machine.exception.name = name;
  return &machine.exception;
}

inline void clearException(JNIEnv* /*env*/) {}

inline jint throwNew(JNIEnv* /*env*/, jclass type, const char* message) {
  EXPECT_EQ(type, &machine.exception);
  machine.message = message;
  return 0;
}

// Starts with a new machine.
class JavaCalls : public testing::Test {
 protected:
  JavaCalls() {
    machine = Machine();
    table_.GetArrayLength = arrayLength;
    table_.GetFloatArrayRegion = getRegion;
    table_.NewFloatArray = newArray;
    table_.SetFloatArrayRegion = setRegion;
    table_.NewDoubleArray = newDoubleArray;
    table_.SetDoubleArrayRegion = setDoubleRegion;
    table_.SetIntArrayRegion = setIntRegion;
    table_.FindClass = findClass;
    table_.ExceptionClear = clearException;
    table_.ThrowNew = throwNew;
    env_.functions = &table_;
  }

  JNIEnv* env() { return &env_; }

  // The exception that the last call left.
  static std::string pendingException() { return machine.exception.name + ": " + machine.message; }

 private:
  JNINativeInterface_ table_ = {};  // any other operation would be a call of null
  JNIEnv env_ = {};
};

}  // namespace orva::test

#endif
