// Calls of the native methods that find objects, and what they return.
#ifndef ORVA_TESTS_DETECT_JNI_CALLS_H
#define ORVA_TESTS_DETECT_JNI_CALLS_H

#include <jni.h>

#include <limits>
#include <vector>

#include "orva/detect/detect.h"
#include "orva/image/image.h"
#include "tests/detect/scenes.h"

namespace orva::test {

inline constexpr float kOpen = std::numeric_limits<float>::quiet_NaN();

// The arguments that all searches have.
struct FindCall {
  std::vector<jfloat> pixels;
  jint height = 0;
  jint width = 0;
  jfloat radius = kOpen;
  jfloat minRadius = kOpen;
  jfloat maxRadius = kOpen;
  jint polarity = -1;
  jfloat minScore = 0.5F;
};

// Bright discs of several radii and a dark one.
inline image<float> sceneOfDiscs() {
  return drawn(150, 110,
               {disc(25, 25, 6), disc(70, 25, 9), disc(115, 30, 14), disc(30, 80, 10),
                disc(75, 75, 8, -40), disc(120, 80, 7, 25)});
}

inline FindCall callOf(const image<float>& img) {
  FindCall call;
  call.pixels.assign(img.pixels(), img.pixels() + img.npix());
  call.height = img.ny();
  call.width = img.nx();
  return call;
}

template <class Value>
std::vector<Value> valuesOf(const detect::SettingsEstimate& e) {
  const auto polarity = [](const detect::Settings& s) {
    return s.polarity == detect::Polarity::Dark ? Value{1} : Value{0};
  };
  return {e.radius,          polarity(e),          e.confidence,
          e.runnerUp.radius, polarity(e.runnerUp), e.runnerUp.confidence};
}

}  // namespace orva::test

#endif
