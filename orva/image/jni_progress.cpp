#include "orva/image/jni_progress.h"

#include <array>

namespace orva::jni {

ProgressReport::ProgressReport(JNIEnv* env) : env_(env), type_(env->FindClass("orva/Progress")) {
  if (type_ == nullptr) {  // classes of an earlier version
    env->ExceptionClear();
    return;
  }
  jmethodID isObserved = env->GetStaticMethodID(type_, "isObserved", "()Z");
  if (isObserved != nullptr) {
    report_ = env->GetStaticMethodID(type_, "report", "(Ljava/lang/String;D)Z");
  }
  const bool is =
      report_ != nullptr && env->CallStaticBooleanMethodA(type_, isObserved, nullptr) == JNI_TRUE;
  if (env->ExceptionCheck() == JNI_TRUE) {
    env->ExceptionClear();
    return;
  }
  if (is) scope_.emplace(&ProgressReport::report, this);
}

std::nullptr_t ProgressReport::raise() const {
  if (thrown_ != nullptr) {
    env_->Throw(thrown_);
  } else if (jclass type = env_->FindClass("java/util/concurrent/CancellationException")) {
    env_->ThrowNew(type, Cancelled().what());
  }
  return nullptr;
}

int ProgressReport::report(void* object, const char* step, double share) {
  auto& self = *static_cast<ProgressReport*>(object);
  if (self.hasFailed()) return 1;
  JNIEnv* env = self.env_;
  jstring name = env->NewStringUTF(step);
  bool goesOn = false;
  if (name != nullptr) {
    std::array<jvalue, 2> arguments{};
    arguments[0].l = name;
    arguments[1].d = share;
    goesOn = env->CallStaticBooleanMethodA(self.type_, self.report_, arguments.data()) == JNI_TRUE;
    env->DeleteLocalRef(name);
  }
  // No other call of Java is allowed while an exception is pending.
  if (jthrowable thrown = env->ExceptionOccurred()) {
    env->ExceptionClear();
    self.thrown_ = thrown;
    return 1;
  }
  return goesOn ? 0 : 1;
}

}  // namespace orva::jni
