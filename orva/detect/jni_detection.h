/// @file
/// findObjects(), segmentObjects() and estimateSettings() for Java: the native methods of the class
/// orva.NativeDetection.
///
/// @code
/// public static native float[] findObjects(float[] pixels, int height, int width, float radius,
///     float minRadius, float maxRadius, int polarity, float minScore);
/// public static native double[] segmentObjects(float[] pixels, int height, int width, int[]
/// labels,
///     float radius, float minRadius, float maxRadius, int polarity, float minScore, float minArea,
///     float maxArea, boolean excludeBorder);
/// public static native float[] estimateSettings(float[] pixels, int height, int width);
/// @endcode
///
/// Built with ORVA_BUILD_JAVA; not installed.
#ifndef ORVA_DETECT_JNI_DETECTION_H
#define ORVA_DETECT_JNI_DETECTION_H

#include <jni.h>

extern "C" {

/// Finds objects by the settings of orva::detect::FindSettings.
///
/// @param env of the calling thread, without a pending exception
/// @param type not used
/// @param pixels @p height times @p width grey values, row by row; read, not kept
/// @param height number of rows
/// @param width number of columns
/// @param radius as in FindSettings; a NaN leaves it open
/// @param minRadius in pixels; a NaN leaves it open
/// @param maxRadius in pixels; a NaN leaves it open
/// @param polarity a value of detect::Polarity, or -1 to leave it open
/// @param minScore 0 to 1
/// @return a new array: the six values of Java_orva_NativeDetection_estimateSettings() for
///         FindResult::used, then column, row, radius, score and coverage of each object, in the
///         order of FindResult::objects; null with a pending exception: IllegalArgumentException
///         for a null array, for one whose length is not @p height times @p width and for a setting
///         out of its range; OutOfMemoryError when the lists of the search or its result do not fit
///         memory
///
/// A lack of memory for an image or within the Gaussian filters of the search ends the process, as
/// in orva/scalespace. Any number of threads may call at the same time.
JNIEXPORT jfloatArray JNICALL Java_orva_NativeDetection_findObjects(
    JNIEnv* env, jclass type, jfloatArray pixels, jint height, jint width, jfloat radius,
    jfloat minRadius, jfloat maxRadius, jint polarity, jfloat minScore);

/// Finds objects, and the region of each by the settings of orva::detect::SegmentSettings; the
/// polarity of the regions is that of FindResult::used.
///
/// @param env of the calling thread, without a pending exception
/// @param type not used
/// @param pixels @p height times @p width grey values, row by row; read, not kept
/// @param height number of rows
/// @param width number of columns
/// @param labels @p height times @p width values, which become those of Segmentation::labels unless
///        there is an exception; not kept
/// @param radius as for Java_orva_NativeDetection_findObjects(), and so are the next four
/// @param minRadius in pixels
/// @param maxRadius in pixels
/// @param polarity a value of detect::Polarity, or -1
/// @param minScore 0 to 1
/// @param minArea as in SegmentSettings, in pixels
/// @param maxArea in pixels; infinity for no limit
/// @param excludeBorder whether regions at the image border are left out
/// @return a new array: the six values of Java_orva_NativeDetection_estimateSettings() for
///         FindResult::used, then for each label, from 1, the values of measureColumns(), the
///         object's score, and 1 or 0 for ObjectMeasures::touchesBorder; null with a pending
///         exception as for Java_orva_NativeDetection_findObjects(), also for @p labels
///
/// Memory and threads are as for Java_orva_NativeDetection_findObjects().
JNIEXPORT jdoubleArray JNICALL Java_orva_NativeDetection_segmentObjects(
    JNIEnv* env, jclass type, jfloatArray pixels, jint height, jint width, jintArray labels,
    jfloat radius, jfloat minRadius, jfloat maxRadius, jint polarity, jfloat minScore,
    jfloat minArea, jfloat maxArea, jboolean excludeBorder);

/// The typical radius and the polarity of the objects, by orva::detect::estimateSettings().
///
/// @param env of the calling thread, without a pending exception
/// @param type not used
/// @param pixels @p height times @p width grey values, row by row; read, not kept
/// @param height number of rows
/// @param width number of columns
/// @return a new array of radius, polarity (a value of detect::Polarity) and confidence, and the
///         same of the runner-up; null with a pending exception as for
///         Java_orva_NativeDetection_findObjects()
///
/// Memory and threads are as for Java_orva_NativeDetection_findObjects().
JNIEXPORT jfloatArray JNICALL Java_orva_NativeDetection_estimateSettings(JNIEnv* env, jclass type,
                                                                         jfloatArray pixels,
                                                                         jint height, jint width);

}  // extern "C"

#endif
