#include "orva/voting/JNICircularVoting.h"

#include <cstddef>
#include <vector>

#include "orva/image/bad_alloc.h"
#include "orva/image/image.h"
#include "orva/image/truncate.h"
#include "orva/scalespace/scalespace.h"
#include "orva/util/narrow.h"
#include "orva/voting/circularvoting.h"

namespace {

using orva::voting::CircularVoting;

// The centers of a grey image, as the Java method returns them.
std::vector<jint> findCenters(const orva::image<unsigned char>& grey, jint height, jint width,
                              jint maxRadius, float threshold, float scale) {
  const float strongest = orva::scalespace::gradient(grey, scale, 1.0F).max();
  CircularVoting voting;
  voting.setParams(CircularVoting::Bright, 1, maxRadius,
                   orva::truncateTo<int>(maxRadius * 0.25 + 0.5),
                   static_cast<float>(0.1 * static_cast<double>(strongest)), threshold, scale,
                   CircularVoting::Power, 1.0F, false, true);
  voting.saveHistory(false);
  voting.setPrefix("tmp/");
  // Intended: the frame is kept for ever, as is the image that it comes from.
  if (const auto* frame = grey.frame(0)) voting.compute(*frame);

  const std::vector<orva::Point>& centers = voting.centers();
  if (centers.empty()) return {height / 3, width / 3, 0};
  std::vector<jint> triples;
  triples.reserve(3 * centers.size());
  for (std::size_t i = 0; i < centers.size(); ++i) {
    triples.insert(triples.end(), {centers[i].y, centers[i].x,
                                   orva::truncateTo<jint>(voting.center_weights()[i])});
  }
  return triples;
}

}  // namespace

jintArray Java_JNICircularVoting_compute(JNIEnv* env, jobject /*self*/, jintArray pixels,
                                         jint height, jint width, jint /*unused1*/, jint maxRadius,
                                         jint /*unused2*/, jint /*unused3*/, jint threshold,
                                         jint scale) {
  return orva::exitOnBadAlloc([&] {
    // Intended: kept for ever.
    auto* grey = new orva::image<unsigned char>(width, height, 1, 1, 1);
    std::vector<jint> buffer(static_cast<std::size_t>(grey->npix()));
    env->GetIntArrayRegion(pixels, 0, grey->npix(), buffer.data());
    for (std::size_t i = 0; i < buffer.size(); ++i) {
      grey->pixels()[i] = orva::wrapTo8(buffer[i]);
    }

    const std::vector<jint> triples = findCenters(
        *grey, height, width, maxRadius, static_cast<float>(threshold), static_cast<float>(scale));
    const auto length = static_cast<jsize>(triples.size());
    jintArray result = env->NewIntArray(length);
    env->SetIntArrayRegion(result, 0, length, triples.data());
    return result;
  });
}
