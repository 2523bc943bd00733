// Pixels shared with OpenCV, and whether two results are the same.
#ifndef ORVA_BENCHMARKS_PEERS_OPENCV_IMAGES_H
#define ORVA_BENCHMARKS_PEERS_OPENCV_IMAGES_H

#include <opencv2/core.hpp>

#include "benchmarks/pictures.h"

namespace orva_benchmark {

// The same pixels under both names; nothing is copied.
cv::Mat shared(const Bytes& img);
cv::Mat shared(const Floats& img);
cv::Mat shared(const Shorts& img);

// All pixels the same.
bool same(const cv::Mat& a, const cv::Mat& b);
// All pixels the same but for a share of the largest one.
bool near(const cv::Mat& a, const cv::Mat& b, double share);
// 16-bit labels, background 0, of the same regions as ours, background -1; numbers may differ.
bool sameRegions(const Shorts& ours, const cv::Mat& labels);

}  // namespace orva_benchmark

#endif
