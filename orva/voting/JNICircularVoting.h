/// @file
/// The entry for Java: the native method of the class JNICircularVoting of the default package.
///
/// @code
/// public native int[] compute(int[] pixels, int height, int width, int unused1, int maxRadius,
///                             int unused2, int unused3, int threshold, int scale);
/// @endcode
///
/// Built with ORVA_BUILD_JAVA. The file is named after the Java class.
#ifndef ORVA_VOTING_JNICIRCULARVOTING_H
#define ORVA_VOTING_JNICIRCULARVOTING_H

#include <jni.h>

extern "C" {

/// Finds bright objects by circular voting: distances 1 to @p maxRadius, a first cone whose
/// half-width is a quarter of @p maxRadius (rounded to the nearest), no vote from gradients below a
/// tenth of the strongest, no weighting and no edge mask.
///
/// @param env used for GetIntArrayRegion, NewIntArray and SetIntArrayRegion and nothing else
/// @param self not used
/// @param pixels @p height times @p width grey values, row by row; the lowest 8 bits of each count
/// @param height number of rows
/// @param width number of columns
/// @param unused1 not used
/// @param maxRadius farthest distance of a vote in pixels
/// @param unused2 not used
/// @param unused3 not used
/// @param threshold votes above it make a center; they count in grey levels per pixel
/// @param scale sigma of the gradient in pixels
/// @return a new array of three values for each center, in the order of CircularVoting::centers():
///         row, column, and weight truncated toward zero. Without any center it is the one triple
///         (height / 3, width / 3, 0); so, too, for a height or width of 0.
///
/// Nothing is checked and no exception raised or checked for: a null or short array and a failed
/// NewIntArray are left to the Java machine, and pixels that could not be copied are black. Sizes
/// whose product is negative or does not fit 32 bits, and a lack of memory, end the process with
/// status 1 after "Error: out of memory" on standard error; an image too large for voting has no
/// centers (CircularVoting::compute). Two images of height times width bytes are kept at every
/// call, never to be released; this is intended (for two negative sizes it is one). Any number of
/// threads may call at the same time.
JNIEXPORT jintArray JNICALL Java_JNICircularVoting_compute(JNIEnv* env, jobject self,
                                                           jintArray pixels, jint height,
                                                           jint width, jint unused1, jint maxRadius,
                                                           jint unused2, jint unused3,
                                                           jint threshold, jint scale);

}  // extern "C"

#endif
