// Progress of the native methods, and their end on request. Built with ORVA_BUILD_JAVA.
#ifndef ORVA_IMAGE_JNI_PROGRESS_H
#define ORVA_IMAGE_JNI_PROGRESS_H

#include <jni.h>

#include <cstddef>
#include <optional>

#include "orva/util/parallel.h"

namespace orva::jni {

// Until its end, reports the progress of the operations of this thread to the listener that the
// class orva.Progress has for it. Without that class, or a listener, nothing is reported.
class ProgressReport {
 public:
  explicit ProgressReport(JNIEnv* env);

  // Whether the listener threw an exception, which then must be raised.
  bool hasFailed() const { return thrown_ != nullptr; }

  // Leaves the exception of the listener pending, or else a CancellationException; null.
  std::nullptr_t raise() const;

 private:
  static int report(void* object, const char* step, double share);

  JNIEnv* env_;
  jclass type_ = nullptr;
  jmethodID report_ = nullptr;
  jthrowable thrown_ = nullptr;
  std::optional<ProgressScope> scope_;
};

}  // namespace orva::jni

#endif
