// The same workloads by OpenCV, on one thread. Where both are defined to give the same result, that
// is tested before the time is taken.
//
// Every way gives a new result in every call, as the library does; OpenCV could be given one to
// write over. Of operations in place the copy is part of the time of all ways.
#include <memory>
#include <opencv2/imgproc.hpp>
#include <string>

#include "benchmarks/comparison.h"
#include "benchmarks/peers/opencv_images.h"
#include "benchmarks/pictures.h"
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
namespace scale = orva::scalespace;
using reference::Orders;

constexpr int kSide = 2048;

// The taps as a filter that correlates needs them for a convolution.
cv::Mat taps(float sigma, int order) {
  int radius = 0;
  const std::unique_ptr<float[]> kernel(scale::gaussianKernel(sigma, radius, order));
  cv::Mat flipped;
  cv::flip(cv::Mat(1, 2 * radius + 1, CV_32F, kernel.get()), flipped, 1);
  return flipped;
}

template <class MakeImage>
void derivative(const std::string& workload, MakeImage make, float sigma, Orders order) {
  const cv::Mat alongX = taps(sigma, order.x);
  const cv::Mat alongY = taps(sigma, order.y);
  const auto ours = [=](const auto& img) {
    return scale::gaussian(img, sigma, order.x, order.y, order.z);
  };
  const auto theirs = [=](const auto& img) {
    cv::Mat result;
    cv::sepFilter2D(shared(img), result, CV_32F, alongX, alongY, {-1, -1}, 0, cv::BORDER_REPLICATE);
    return result;
  };
  compare(workload, make)
      .ours(ours)
      .reference([=](const auto& img) {
        return reference::gaussian(img, {sigma, sigma, sigma}, order);
      })
      .opencv(theirs, [=](const auto& img) { return near(shared(ours(img)), theirs(img), 1e-4); });
}

template <class MakeMask>
void labelling(const std::string& size, MakeMask make) {
  for (const auto type : {orva::NEIGHBORHOOD_4, orva::NEIGHBORHOOD_8}) {
    const auto ours = [type](const Bytes& mask) {
      int n = 0;
      return bip::regions(mask, n, 255, 1, type);
    };
    const auto theirs = [type](const Bytes& mask) {
      cv::Mat labels;
      cv::connectedComponents(shared(mask), labels, type, CV_16U);
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

// Labels, boxes, sizes and centroids.
template <class MakeMask>
void labellingWithTable(const std::string& size, MakeMask make) {
  const auto theirs = [](const Bytes& mask) {
    Components result;
    cv::connectedComponentsWithStats(shared(mask), result.labels, result.stats, result.centroids, 4,
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
      // Of one of the region's pixels: its box's first row has one.
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

// Steps of 1 and 1.4142 here, of 0.955 and 1.3693 there, and the borders differ: equal are the
// pixels of distance 0 alone.
template <class MakeMask>
void distances(const std::string& size, MakeMask make) {
  const auto theirs = [](const Bytes& mask) {
    cv::Mat result;
    cv::distanceTransform(shared(mask), result, cv::DIST_L2, 3);
    return result;
  };
  compare("fchamfer byte " + size, make)
      .ours([](const Bytes& mask) { return bip::fchamfer(mask); })
      .reference([](const Bytes& mask) { return reference::fchamfer(mask); })
      .opencv(theirs, [theirs](const Bytes& mask) {
        return same(shared(bip::fchamfer(mask)) == 0, theirs(mask) == 0);
      });
}

template <class MakeMask>
void morphology(const std::string& size, MakeMask make) {
  const cv::Mat box = cv::Mat::ones(3, 3, CV_8U);
  const auto eroded = [](const Bytes& mask) {
    Bytes result = mask.duplicate();
    bip::erode(result);
    return result;
  };
  const auto erodedThere = [box](const Bytes& mask) {
    cv::Mat result;
    cv::erode(shared(mask), result, box, {-1, -1}, 1, cv::BORDER_CONSTANT, cv::Scalar(0));
    return result;
  };
  compare("erode copy byte " + size, make)
      .ours(eroded)
      .reference([](const Bytes& mask) {
        Bytes result = mask.duplicate();
        reference::erode(result);
        return result;
      })
      .opencv(erodedThere,
              [=](const Bytes& mask) { return same(shared(eroded(mask)), erodedThere(mask)); });
  const auto dilated = [](const Bytes& mask) {
    Bytes result = mask.duplicate();
    bip::dilate(result);
    return result;
  };
  const auto dilatedThere = [box](const Bytes& mask) {
    cv::Mat result;
    cv::dilate(shared(mask), result, box, {-1, -1}, 1, cv::BORDER_CONSTANT, cv::Scalar(0));
    return result;
  };
  compare("dilate copy byte " + size, make)
      .ours(dilated)
      .reference([](const Bytes& mask) {
        Bytes result = mask.duplicate();
        reference::dilate(result);
        return result;
      })
      .opencv(dilatedThere,
              [=](const Bytes& mask) { return same(shared(dilated(mask)), dilatedThere(mask)); });
}

template <class MakeImage, class Theirs>
void thresholding(const std::string& workload, MakeImage make, Theirs theirs) {
  compare(workload, make)
      .ours([](const auto& img) { return bip::threshold(img, 128); })
      .reference([](const auto& img) { return reference::threshold(img, 128); })
      .opencv(theirs, [theirs](const auto& img) {
        return same(shared(bip::threshold(img, 128)), theirs(img));
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
      derivative("dX byte " + size, bytes, s, {1, 0, 0});
      derivative("dY byte " + size, bytes, s, {0, 1, 0});
      derivative("dX float " + size, wide, s, {1, 0, 0});
      derivative("dY float " + size, wide, s, {0, 1, 0});
    }
  }
  const auto masks = [](const std::string& size, auto make) {
    labelling(size, make);
    labellingWithTable(size, make);
    distances(size, make);
    morphology(size, make);
  };
  masks("2048 discs", [] { return discMask(kSide); });
  masks("2048 spiral", [] { return spiral(kSide); });
  thresholding(
      "threshold byte 2048", [] { return discs(kSide); },
      [](const Bytes& img) {
        cv::Mat mask;
        cv::threshold(shared(img), mask, 127, 255, cv::THRESH_BINARY);
        return mask;
      });
  // cv::threshold keeps the pixel type; the comparison makes a mask of bytes, as the library does.
  thresholding(
      "threshold float 2048", [] { return floats(discs(kSide)); },
      [](const Floats& img) {
        cv::Mat mask;
        cv::compare(shared(img), 128, mask, cv::CMP_GE);
        return mask;
      });
}

}  // namespace orva_benchmark
