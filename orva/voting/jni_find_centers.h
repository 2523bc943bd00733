/// @file
/// findCenters() for Java: the native method of the class orva.NativeVoting.
///
/// @code
/// public static native float[] findCenters(float[] pixels, int height, int width, int polarity,
///     int minRadius, int maxRadius, int coneWidth, float sigma, float gradient,
///     float relativeGradient, float threshold, float relativeThreshold, boolean edges,
///     float power);
/// @endcode
///
/// Built with ORVA_BUILD_JAVA; not installed.
#ifndef ORVA_VOTING_JNI_FIND_CENTERS_H
#define ORVA_VOTING_JNI_FIND_CENTERS_H

#include <jni.h>

extern "C" {

/// Finds centers by the settings of orva::voting::VoteSettings.
///
/// @param env of the calling thread, without a pending exception
/// @param type not used
/// @param pixels @p height times @p width grey values, row by row; read, not kept
/// @param height number of rows
/// @param width number of columns
/// @param polarity a value of CircularVoting::RegionType
/// @param minRadius as in VoteSettings, and so are the others
/// @param maxRadius in pixels
/// @param coneWidth in pixels; a negative one is derived from @p maxRadius
/// @param sigma in pixels; a NaN is derived from @p maxRadius
/// @param gradient in grey levels per pixel; for a NaN @p relativeGradient counts
/// @param relativeGradient share of the strongest gradient
/// @param threshold in votes; for a NaN @p relativeThreshold counts
/// @param relativeThreshold share of the strongest vote
/// @param edges whether only edges vote
/// @param power exponent of the gradient magnitudes
/// @return a new array of column, row and weight of each center, in the order of
///         VoteResult::centers; null with a pending exception: IllegalArgumentException for a null
///         array, for one whose length is not @p height times @p width, for a setting out of its
///         range and for an image that is too large; OutOfMemoryError when the result does not fit
///         memory
///
/// A lack of memory within the search ends the process, as in CircularVoting::compute(). Any number
/// of threads may call at the same time.
JNIEXPORT jfloatArray JNICALL Java_orva_NativeVoting_findCenters(
    JNIEnv* env, jclass type, jfloatArray pixels, jint height, jint width, jint polarity,
    jint minRadius, jint maxRadius, jint coneWidth, jfloat sigma, jfloat gradient,
    jfloat relativeGradient, jfloat threshold, jfloat relativeThreshold, jboolean edges,
    jfloat power);

}  // extern "C"

#endif
