// The same workloads in OpenCV, on one thread. Before it is measured, its result is compared with
// that of the library, as far as both are defined to agree.
//
// Every call of every implementation allocates its result, as calls of the library do; OpenCV could
// also reuse one. For operations in place the measured time includes the copy.
#include <memory>
#include <opencv2/imgproc.hpp>
#include <string>

#include "benchmarks/comparison.h"
#include "benchmarks/peers/opencv_images.h"
#include "benchmarks/test_images.h"
#include "benchmarks/workloads.h"
#include "orva/bip/bip.h"
#include "orva/scalespace/scalespace.h"
#include "tests/support/reference/bip.h"
#include "tests/support/reference/distance.h"
#include "tests/support/reference/scalespace.h"
#include "tests/support/reference/selection.h"

namespace orva_benchmark {
namespace {

namespace bip = orva::bip;
namespace reference = orva::reference;
namespace scale = orva::scalespace;
using reference::Orders;

constexpr int kSide = 2048;

// Gaussian taps in reverse order: OpenCV correlates where the library convolves.
cv::Mat taps(float sigma, int order) {
  int radius = 0;
  const std::unique_ptr<float[]> kernel(scale::gaussianKernel(sigma, radius, order));
  cv::Mat flipped;
  cv::flip(cv::Mat(1, 2 * radius + 1, CV_32F, kernel.get()), flipped, 1);
  return flipped;
}

template <class MakeImage>
void compareDerivative(const std::string& workload, MakeImage make, float sigma, Orders order) {
  const cv::Mat alongX = taps(sigma, order.x);
  const cv::Mat alongY = taps(sigma, order.y);
  const auto ours = [=](const auto& img) {
    return scale::gaussian(img, sigma, order.x, order.y, order.z);
  };
  const auto theirs = [=](const auto& img) {
    cv::Mat result;
    cv::sepFilter2D(asMat(img), result, CV_32F, alongX, alongY, {-1, -1}, 0, cv::BORDER_REPLICATE);
    return result;
  };
  compare(workload, make)
      .ours(ours)
      .reference([=](const auto& img) {
        return reference::gaussian(img, {sigma, sigma, sigma}, order);
      })
      .opencv(theirs,
              [=](const auto& img) { return nearlyEqual(asMat(ours(img)), theirs(img), 1e-4); });
}

template <class MakeMask>
void compareLabelling(const std::string& size, MakeMask make) {
  for (const auto type : {orva::NEIGHBORHOOD_4, orva::NEIGHBORHOOD_8}) {
    const auto ours = [type](const Bytes& mask) {
      int n = 0;
      return bip::regions(mask, n, 255, 1, type);
    };
    const auto theirs = [type](const Bytes& mask) {
      cv::Mat labels;
      cv::connectedComponents(asMat(mask), labels, type, CV_16U);
      return labels;
    };
    compare("regions " + std::to_string(type) + " " + size, make)
        .ours(ours)
        .reference([type](const Bytes& mask) {
          int n = 0;
          return reference::regions(mask, n, 255, 1, type);
        })
        .opencv(theirs, [=](const Bytes& mask) { return sameRegions(ours(mask), theirs(mask)); });
  }
}

struct Components {
  cv::Mat labels;
  cv::Mat stats;
  cv::Mat centroids;
};

// Labels with bounding boxes, sizes and centroids.
template <class MakeMask>
void compareLabellingAndFeatures(const std::string& size, MakeMask make) {
  const auto theirs = [](const Bytes& mask) {
    Components result;
    cv::connectedComponentsWithStats(asMat(mask), result.labels, result.stats, result.centroids, 4,
                                     CV_16U);
    return result;
  };
  const auto agrees = [theirs](const Bytes& mask) {
    int n = 0;
    const Shorts labels = bip::regions(mask, n, 255, 1, orva::NEIGHBORHOOD_4);
    const auto table = bip::regionFeatures(labels, n);
    const Components components = theirs(mask);
    if (!sameRegions(labels, components.labels) || components.stats.rows != n + 1) return false;
    for (const auto& region : table) {
      // The region has a pixel in the first row of its bounding box.
      int x = region.xmin;
      while (labels.pixel(x, region.ymin) != static_cast<float>(&region - table.data())) ++x;
      const int* row =
          components.stats.ptr<int>(components.labels.at<unsigned short>(region.ymin, x));
      if (row[cv::CC_STAT_LEFT] != region.xmin || row[cv::CC_STAT_TOP] != region.ymin ||
          row[cv::CC_STAT_WIDTH] != region.xmax - region.xmin + 1 ||
          row[cv::CC_STAT_HEIGHT] != region.ymax - region.ymin + 1 ||
          row[cv::CC_STAT_AREA] != region.npix) {
        return false;
      }
    }
    return true;
  };
  compare("regions 4 and regionFeatures " + size, make)
      .ours([](const Bytes& mask) {
        int n = 0;
        const Shorts labels = bip::regions(mask, n, 255, 1, orva::NEIGHBORHOOD_4);
        return std::pair(labels, bip::regionFeatures(labels, n));
      })
      .reference([](const Bytes& mask) {
        int n = 0;
        const Shorts labels = reference::regions(mask, n, 255, 1, orva::NEIGHBORHOOD_4);
        return std::pair(labels, reference::regionFeatures(labels, n, nullptr));
      })
      .opencv(theirs, agrees);
}

// The library has steps of 1 and 1.4142, OpenCV of 0.955 and 1.3693, and borders differ: only the
// pixels of distance 0 are compared.
template <class MakeMask>
void compareDistances(const std::string& size, MakeMask make) {
  const auto theirs = [](const Bytes& mask) {
    cv::Mat result;
    cv::distanceTransform(asMat(mask), result, cv::DIST_L2, 3);
    return result;
  };
  compare("fchamfer byte " + size, make)
      .ours([](const Bytes& mask) { return bip::fchamfer(mask); })
      .reference([](const Bytes& mask) { return reference::fchamfer(mask); })
      .opencv(theirs, [theirs](const Bytes& mask) {
        return equal(asMat(bip::fchamfer(mask)) == 0, theirs(mask) == 0);
      });
}

template <class MakeMask>
void compareMorphology(const std::string& size, MakeMask make) {
  const cv::Mat box = cv::Mat::ones(3, 3, CV_8U);
  const auto eroded = [](const Bytes& mask) {
    Bytes result = mask.duplicate();
    bip::erode(result);
    return result;
  };
  const auto erodedByOpenCV = [box](const Bytes& mask) {
    cv::Mat result;
    cv::erode(asMat(mask), result, box, {-1, -1}, 1, cv::BORDER_CONSTANT, cv::Scalar(0));
    return result;
  };
  compare("erode copy byte " + size, make)
      .ours(eroded)
      .reference([](const Bytes& mask) {
        Bytes result = mask.duplicate();
        reference::erode(result);
        return result;
      })
      .opencv(erodedByOpenCV,
              [=](const Bytes& mask) { return equal(asMat(eroded(mask)), erodedByOpenCV(mask)); });
  const auto dilated = [](const Bytes& mask) {
    Bytes result = mask.duplicate();
    bip::dilate(result);
    return result;
  };
  const auto dilatedByOpenCV = [box](const Bytes& mask) {
    cv::Mat result;
    cv::dilate(asMat(mask), result, box, {-1, -1}, 1, cv::BORDER_CONSTANT, cv::Scalar(0));
    return result;
  };
  compare("dilate copy byte " + size, make)
      .ours(dilated)
      .reference([](const Bytes& mask) {
        Bytes result = mask.duplicate();
        reference::dilate(result);
        return result;
      })
      .opencv(dilatedByOpenCV, [=](const Bytes& mask) {
        return equal(asMat(dilated(mask)), dilatedByOpenCV(mask));
      });
}

template <class MakeImage, class Theirs>
void compareThreshold(const std::string& workload, MakeImage make, Theirs theirs) {
  compare(workload, make)
      .ours([](const auto& img) { return bip::threshold(img, 128); })
      .reference([](const auto& img) { return reference::threshold(img, 128); })
      .opencv(theirs, [theirs](const auto& img) {
        return equal(asMat(bip::threshold(img, 128)), theirs(img));
      });
}

}  // namespace

void registerWorkloads() {
  cv::setNumThreads(1);
  for (const int side : {1024, 4096}) {
    for (const int sigma : {1, 2, 5}) {
      const auto s = static_cast<float>(sigma);
      const std::string size = std::to_string(side) + " sigma " + std::to_string(sigma);
      const auto bytes = [side] { return discs(side); };
      const auto wide = [side] { return floats(discs(side)); };
      compareDerivative("dX byte " + size, bytes, s, {1, 0, 0});
      compareDerivative("dY byte " + size, bytes, s, {0, 1, 0});
      compareDerivative("dX float " + size, wide, s, {1, 0, 0});
      compareDerivative("dY float " + size, wide, s, {0, 1, 0});
    }
  }
  const auto compareAll = [](const std::string& size, auto make) {
    compareLabelling(size, make);
    compareLabellingAndFeatures(size, make);
    compareDistances(size, make);
    compareMorphology(size, make);
  };
  compareAll("2048 discs", [] { return discMask(kSide); });
  compareAll("2048 spiral", [] { return spiral(kSide); });
  compareThreshold(
      "threshold byte 2048", [] { return discs(kSide); },
      [](const Bytes& img) {
        cv::Mat mask;
        cv::threshold(asMat(img), mask, 127, 255, cv::THRESH_BINARY);
        return mask;
      });
  // cv::threshold keeps the pixel type; cv::compare makes a mask of bytes, as the library does.
  compareThreshold(
      "threshold float 2048", [] { return floats(discs(kSide)); },
      [](const Floats& img) {
        cv::Mat mask;
        cv::compare(asMat(img), 128, mask, cv::CMP_GE);
        return mask;
      });
}

}  // namespace orva_benchmark
