#include "benchmarks/peers/opencv_images.h"

#include <map>

namespace orva_benchmark {

cv::Mat shared(const Bytes& img) { return {img.ny(), img.nx(), CV_8U, img.pixels()}; }
cv::Mat shared(const Floats& img) { return {img.ny(), img.nx(), CV_32F, img.pixels()}; }
cv::Mat shared(const Shorts& img) { return {img.ny(), img.nx(), CV_16S, img.pixels()}; }

bool same(const cv::Mat& a, const cv::Mat& b) { return cv::norm(a, b, cv::NORM_INF) == 0; }

bool near(const cv::Mat& a, const cv::Mat& b, double share) {
  return cv::norm(a, b, cv::NORM_INF) <= share * cv::norm(a, cv::NORM_INF);
}

bool sameRegions(const Shorts& ours, const cv::Mat& labels) {
  std::map<int, int> there = {{-1, 0}};
  std::map<int, int> back = {{0, -1}};
  for (int i = 0; i < ours.npix(); ++i) {
    const int a = ours.pixels()[i];
    const int b = labels.ptr<unsigned short>()[i];
    if (there.emplace(a, b).first->second != b || back.emplace(b, a).first->second != a) {
      return false;
    }
  }
  return true;
}

}  // namespace orva_benchmark
