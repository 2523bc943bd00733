#include "orva/voting/jni_find_centers.h"

#include <stdexcept>
#include <vector>

#include "orva/image/image.h"
#include "orva/image/jni_image.h"
#include "orva/voting/find_centers.h"

namespace orva::voting {
namespace {

CircularVoting::RegionType regionType(jint polarity) {
  if (polarity < CircularVoting::Bright || polarity > CircularVoting::Both) {
    throw std::invalid_argument("polarity is not 0 to 2");
  }
  return static_cast<CircularVoting::RegionType>(polarity);
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

}  // namespace
}  // namespace orva::voting

jfloatArray Java_orva_NativeVoting_findCenters(JNIEnv* env, jclass /*type*/, jfloatArray pixels,
                                               jint height, jint width, jint polarity,
                                               jint minRadius, jint maxRadius, jint coneWidth,
                                               jfloat sigma, jfloat gradient,
                                               jfloat relativeGradient, jfloat threshold,
                                               jfloat relativeThreshold, jboolean edges,
                                               jfloat power) {
  using namespace orva::jni;
  using namespace orva::voting;
  return withJavaExceptions(env, "centers", [&] {
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
