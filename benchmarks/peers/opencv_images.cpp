#include "benchmarks/peers/opencv_images.h"

#include <map>

namespace orva_benchmark {

cv::Mat asMat(const Bytes& img) { return {img.ny(), img.nx(), CV_8U, img.pixels()}; }
cv::Mat asMat(const Floats& img) { return {img.ny(), img.nx(), CV_32F, img.pixels()}; }
cv::Mat asMat(const Shorts& img) { return {img.ny(), img.nx(), CV_16S, img.pixels()}; }

bool equal(const cv::Mat& a, const cv::Mat& b) { return cv::norm(a, b, cv::NORM_INF) == 0; }

bool nearlyEqual(const cv::Mat& a, const cv::Mat& b, double tolerance) {
  return cv::norm(a, b, cv::NORM_INF) <= tolerance * cv::norm(a, cv::NORM_INF);
}

bool sameRegions(const Shorts& ours, const cv::Mat& labels) {
  std::map<int, int> toTheirs = {{-1, 0}};
  std::map<int, int> toOurs = {{0, -1}};
  for (int i = 0; i < ours.npix(); ++i) {
    const int a = ours.pixels()[i];
    const int b = labels.ptr<unsigned short>()[i];
    if (toTheirs.emplace(a, b).first->second != b || toOurs.emplace(b, a).first->second != a) {
      return false;
    }
  }
  return true;
}

}  // namespace orva_benchmark
