// Images as OpenCV matrices, and comparisons of results.
#ifndef ORVA_BENCHMARKS_PEERS_OPENCV_IMAGES_H
#define ORVA_BENCHMARKS_PEERS_OPENCV_IMAGES_H

#include <opencv2/core.hpp>

#include "benchmarks/test_images.h"

namespace orva_benchmark {

// A matrix that shares the pixels of the image.
cv::Mat asMat(const Bytes& img);
cv::Mat asMat(const Floats& img);
cv::Mat asMat(const Shorts& img);

// Whether all pixels are equal.
bool equal(const cv::Mat& a, const cv::Mat& b);
// Whether pixels differ by at most `tolerance` times the largest magnitude in a.
bool nearlyEqual(const cv::Mat& a, const cv::Mat& b, double tolerance);
// Whether `labels`, 16-bit with background 0, have the same regions as `ours` with background -1,
// in any numbering.
bool sameRegions(const Shorts& ours, const cv::Mat& labels);

}  // namespace orva_benchmark

#endif
