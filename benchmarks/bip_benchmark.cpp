#include <memory>
#include <string>

#include "benchmarks/comparison.h"
#include "benchmarks/test_images.h"
#include "benchmarks/workloads.h"
#include "orva/bip/bip.h"
#include "tests/support/reference/bip.h"
#include "tests/support/reference/distance.h"
#include "tests/support/reference/hull.h"
#include "tests/support/reference/selection.h"

namespace orva_benchmark {
namespace {

namespace bip = orva::bip;
namespace reference = orva::reference;
using orva::Image;

constexpr int kSide = 2048;

template <class MakeMask>
void compareLabelling(const std::string& size, MakeMask make) {
  for (const auto type : {orva::NEIGHBORHOOD_4, orva::NEIGHBORHOOD_8}) {
    compare("regions " + std::to_string(type) + " " + size, make)
        .ours([type](const Bytes& mask) {
          int n = 0;
          return bip::regions(mask, n, 255, 1, type);
        })
        .reference([type](const Bytes& mask) {
          int n = 0;
          return reference::regions(mask, n, 255, 1, type);
        });
  }
  compare("regions of labels " + size, [make] { return labelsOf(make()); })
      .ours([](const Shorts& labels) {
        int n = 0;
        return bip::regions(labels, n);
      })
      .reference([](const Shorts& labels) {
        int n = 0;
        return reference::regions(labels, n);
      });
}

template <class MakeMask>
void compareDistances(const std::string& size, MakeMask make) {
  compare("fchamfer byte " + size, make)
      .ours([](const Bytes& mask) { return bip::fchamfer(mask); })
      .reference([](const Bytes& mask) { return reference::fchamfer(mask); });
  compare("fchamfer labels " + size, [make] {
    return labelsOf(make());
  }).ours([](const Shorts& labels) {
      return bip::fchamfer(labels);
    }).reference([](const Shorts& labels) { return reference::fchamfer(labels); });
  compare("chamfer byte " + size, make)
      .ours([](const Bytes& mask) { return bip::chamfer(mask, false); })
      .reference([](const Bytes& mask) {
        return reference::chamferBytes(reference::fchamfer(mask), false);
      });
  compareInPlace("propagate labels " + size, [make] {
    return labelsOf(make());
  }).ours([](Shorts& labels) {
      bip::propagate(labels, 20);
    }).reference([](Shorts& labels) { reference::propagate(labels, 20); });
}

template <class MakeMask>
void compareMorphology(const std::string& size, MakeMask make) {
  const auto labels = [make] { return labelsOf(make()); };
  compareInPlace("erode labels " + size, labels)
      .ours([](Shorts& img) { bip::erode(img); })
      .reference([](Shorts& img) { reference::erode(img); });
  compareInPlace("erode byte " + size, make)
      .ours([](Bytes& mask) { bip::erode(mask); })
      .reference([](Bytes& mask) { reference::erode(mask); });
  compareInPlace("dilate byte " + size, make)
      .ours([](Bytes& mask) { bip::dilate(mask); })
      .reference([](Bytes& mask) { reference::dilate(mask); });
  compare("edge byte " + size, make)
      .ours([](const Bytes& mask) { return bip::edge(mask); })
      .reference([](const Bytes& mask) { return reference::edge(mask); });
  compare("edge labels " + size, labels)
      .ours([](const Shorts& img) { return bip::edge(img); })
      .reference([](const Shorts& img) { return reference::edge(img); });
  compareInPlace("removeInternalStructures " + size, make)
      .ours([](Bytes& mask) { bip::removeInternalStructures(mask); })
      .reference([](Bytes& mask) { reference::removeInternalStructures(mask); });
}

template <class MakeMask>
void compareMeasurements(const std::string& size, MakeMask make) {
  struct Labelled {
    Shorts labels;
    Bytes brightness;
    int n;
  };
  const auto labelled = [make] {
    const Bytes mask = make();
    int n = 0;
    const Shorts labels = bip::regions(mask, n, 255, 1, orva::NEIGHBORHOOD_4);
    return Labelled{labels, discs(mask.nx()), n};
  };
  compare("regionFeatures " + size, labelled)
      .ours([](const Labelled& in) { return bip::regionFeatures(in.labels, in.n); })
      .reference(
          [](const Labelled& in) { return reference::regionFeatures(in.labels, in.n, nullptr); });
  compare("regionFeatures with brightness " + size, labelled)
      .ours([](const Labelled& in) { return bip::regionFeatures(in.labels, in.n, in.brightness); })
      .reference([](const Labelled& in) {
        return reference::regionFeatures(in.labels, in.n, &in.brightness);
      });
  for (const bool sorted : {false, true}) {
    compare("regionIntensityArrays " + std::string(sorted ? "sorted " : "") + size, labelled)
        .ours([sorted](const Labelled& in) {
          return bip::regionIntensityArrays(in.labels, in.n, in.brightness, sorted);
        })
        .reference([sorted](const Labelled& in) {
          return reference::regionIntensityArrays(in.labels, in.n, in.brightness, sorted);
        });
  }
  compare("regionNumber " + size, labelled)
      .ours([](const Labelled& in) { return bip::regionNumber(in.labels); })
      .reference([](const Labelled& in) { return reference::regionNumber(in.labels); });
  compare("isBinaryImage " + size, make)
      .ours([](const Bytes& mask) { return bip::isBinaryImage(mask); })
      .reference([](const Bytes& mask) { return reference::isBinaryImage(mask); });
}

// For smaller images, as these reference implementations scan the whole image for every region.
template <class MakeMask>
void compareBoundariesAndRelabel(const std::string& size, MakeMask make) {
  const auto labels = [make] { return labelsOf(make()); };
  compare("boundaries " + size, labels)
      .ours([](const Shorts& img) { return bip::boundaries(img); })
      .reference([](const Shorts& img) { return reference::boundaries(img); });
  compareInPlace("relabel " + size, labels)
      .ours([](Shorts& img) { bip::relabel(img); })
      .reference([](Shorts& img) { reference::relabel(img); });
}

template <class MakeMask>
void compareSelection(const std::string& size, MakeMask make) {
  const auto brightness = [] {
    static const Bytes img = discs(kSide);
    return img;
  };
  compareInPlace("selectRegions " + size, make)
      .ours([brightness](Bytes& mask) { bip::selectRegions(mask, brightness(), 100, 300); })
      .reference(
          [brightness](Bytes& mask) { reference::selectRegions(mask, brightness(), 100, 300); });
  compareInPlace("selectRegionsBySize " + size, make)
      .ours([](Bytes& mask) { bip::selectRegionsBySize(mask, 300, 500); })
      .reference([](Bytes& mask) { reference::selectRegionsBySize(mask, 300, 500); });
}

void compareBrightnessAndHulls() {
  const auto bytes = [] { return discs(kSide); };
  compareInPlace("reverse 2048", bytes)
      .ours([](Bytes& img) { bip::reverse(img); })
      .reference([](Bytes& img) { reference::reverse(img); });
  compare("histogram 2048", bytes)
      .ours([](const Bytes& img) { return bip::histogram(img, 0, 255); })
      .reference([](const Bytes& img) { return reference::histogram(img, 0, 255); });
  compare("threshold byte 2048", bytes)
      .ours([](const Bytes& img) { return bip::threshold(img, 128); })
      .reference([](const Bytes& img) { return reference::threshold(img, 128); });
  compare("threshold float 2048", [] {
    return floats(discs(kSide));
  }).ours([](const Floats& img) {
      return bip::threshold(img, 128);
    }).reference([](const Floats& img) { return reference::threshold(img, 128); });
  compare("computeThreshold 2048 sigma 2", bytes)
      .ours([](const Bytes& img) { return bip::computeThreshold(img, 2); })
      .reference([](const Bytes& img) { return reference::computeThreshold(img, 2); });
  compare("convexHull 2048 discs", [] {
    return discMask(kSide);
  }).ours([](const Bytes& mask) {
      return bip::convexHull(mask, 10);
    }).reference([](const Bytes& mask) { return reference::convexHull(mask, 10); });
}

}  // namespace

void registerWorkloads() {
  const auto compareAll = [](const std::string& size, auto make) {
    compareLabelling(size, make);
    compareDistances(size, make);
    compareMorphology(size, make);
    compareMeasurements(size, make);
    compareSelection(size, make);
  };
  compareAll("2048 discs", [] { return discMask(kSide); });
  compareAll("2048 spiral", [] { return spiral(kSide); });
  compareBoundariesAndRelabel("1024 discs", [] { return discMask(1024); });
  compareBoundariesAndRelabel("1024 spiral", [] { return spiral(1024); });
  const auto stack = [] { return maskOf(discStack()); };
  compareLabelling("64x256x256 discs", stack);
  compareDistances("64x256x256 discs", stack);
  compareBrightnessAndHulls();
}

}  // namespace orva_benchmark
