#include <memory>
#include <string>

#include "benchmarks/contest.h"
#include "benchmarks/pictures.h"
#include "benchmarks/works.h"
#include "orva/bip/bip.h"
#include "tests/support/reference/bip.h"
#include "tests/support/reference/distance.h"
#include "tests/support/reference/hull.h"
#include "tests/support/reference/selection.h"

namespace orva_benchmark {
namespace {

namespace bip = orva::bip;
using orva::Image;

constexpr int kSide = 2048;

template <class MakeMask>
void labelling(const std::string& size, MakeMask make) {
  for (const auto type : {orva::NEIGHBORHOOD_4, orva::NEIGHBORHOOD_8}) {
    contest("regions " + std::to_string(type) + " " + size, make)
        .ours([type](const Bytes& mask) {
          int n = 0;
          return bip::regions(mask, n, 255, 1, type);
        })
        .twin([type](const Bytes& mask) {
          int n = 0;
          return reference::regions(mask, n, 255, 1, type);
        });
  }
  contest("regions of labels " + size, [make] { return labelsOf(make()); })
      .ours([](const Shorts& labels) {
        int n = 0;
        return bip::regions(labels, n);
      })
      .twin([](const Shorts& labels) {
        int n = 0;
        return reference::regions(labels, n);
      });
}

template <class MakeMask>
void distances(const std::string& size, MakeMask make) {
  contest("fchamfer byte " + size, make)
      .ours([](const Bytes& mask) { return bip::fchamfer(mask); })
      .twin([](const Bytes& mask) { return reference::fchamfer(mask); });
  contest("fchamfer labels " + size, [make] {
    return labelsOf(make());
  }).ours([](const Shorts& labels) {
      return bip::fchamfer(labels);
    }).twin([](const Shorts& labels) { return reference::fchamfer(labels); });
  contest("chamfer byte " + size, make)
      .ours([](const Bytes& mask) { return bip::chamfer(mask, false); })
      .twin([](const Bytes& mask) {
        return reference::chamferBytes(reference::fchamfer(mask), false);
      });
  contestInPlace("propagate labels " + size, [make] {
    return labelsOf(make());
  }).ours([](Shorts& labels) {
      bip::propagate(labels, 20);
    }).twin([](Shorts& labels) { reference::propagate(labels, 20); });
}

template <class MakeMask>
void morphology(const std::string& size, MakeMask make) {
  const auto labels = [make] { return labelsOf(make()); };
  contestInPlace("erode labels " + size, labels)
      .ours([](Shorts& img) { bip::erode(img); })
      .twin([](Shorts& img) { reference::erode(img); });
  contestInPlace("erode byte " + size, make)
      .ours([](Bytes& mask) { bip::erode(mask); })
      .twin([](Bytes& mask) { reference::erode(mask); });
  contestInPlace("dilate byte " + size, make)
      .ours([](Bytes& mask) { bip::dilate(mask); })
      .twin([](Bytes& mask) { reference::dilate(mask); });
  contest("edge byte " + size, make)
      .ours([](const Bytes& mask) { return bip::edge(mask); })
      .twin([](const Bytes& mask) { return reference::edge(mask); });
  contest("edge labels " + size, labels)
      .ours([](const Shorts& img) { return bip::edge(img); })
      .twin([](const Shorts& img) { return reference::edge(img); });
  contestInPlace("removeInternalStructures " + size, make)
      .ours([](Bytes& mask) { bip::removeInternalStructures(mask); })
      .twin([](Bytes& mask) { reference::removeInternalStructures(mask); });
}

template <class MakeMask>
void measuring(const std::string& size, MakeMask make) {
  struct Measured {
    Shorts labels;
    Bytes brightness;
    int n;
  };
  const auto both = [make] {
    const Bytes mask = make();
    int n = 0;
    const Shorts labels = bip::regions(mask, n, 255, 1, orva::NEIGHBORHOOD_4);
    return Measured{labels, discs(mask.nx()), n};
  };
  contest("regionFeatures " + size, both)
      .ours([](const Measured& m) { return bip::regionFeatures(m.labels, m.n); })
      .twin([](const Measured& m) { return reference::regionFeatures(m.labels, m.n, nullptr); });
  contest("regionFeatures with brightness " + size, both)
      .ours([](const Measured& m) { return bip::regionFeatures(m.labels, m.n, m.brightness); })
      .twin([](const Measured& m) {
        return reference::regionFeatures(m.labels, m.n, &m.brightness);
      });
  for (const bool sorted : {false, true}) {
    contest("regionIntensityArrays " + std::string(sorted ? "sorted " : "") + size, both)
        .ours([sorted](const Measured& m) {
          return bip::regionIntensityArrays(m.labels, m.n, m.brightness, sorted);
        })
        .twin([sorted](const Measured& m) {
          return reference::regionIntensityArrays(m.labels, m.n, m.brightness, sorted);
        });
  }
  contest("regionNumber " + size, both)
      .ours([](const Measured& m) { return bip::regionNumber(m.labels); })
      .twin([](const Measured& m) { return reference::regionNumber(m.labels); });
  contest("isBinaryImage " + size, make)
      .ours([](const Bytes& mask) { return bip::isBinaryImage(mask); })
      .twin([](const Bytes& mask) { return reference::isBinaryImage(mask); });
}

// Smaller, as these twins walk the whole image for every region.
template <class MakeMask>
void regionByRegion(const std::string& size, MakeMask make) {
  const auto labels = [make] { return labelsOf(make()); };
  contest("boundaries " + size, labels)
      .ours([](const Shorts& img) { return bip::boundaries(img); })
      .twin([](const Shorts& img) { return reference::boundaries(img); });
  contestInPlace("relabel " + size, labels)
      .ours([](Shorts& img) { bip::relabel(img); })
      .twin([](Shorts& img) { reference::relabel(img); });
}

template <class MakeMask>
void selecting(const std::string& size, MakeMask make) {
  const auto brightness = [] {
    static const Bytes img = discs(kSide);
    return img;
  };
  contestInPlace("selectRegions " + size, make)
      .ours([brightness](Bytes& mask) { bip::selectRegions(mask, brightness(), 100, 300); })
      .twin([brightness](Bytes& mask) { reference::selectRegions(mask, brightness(), 100, 300); });
  contestInPlace("selectRegionsBySize " + size, make)
      .ours([](Bytes& mask) { bip::selectRegionsBySize(mask, 300, 500); })
      .twin([](Bytes& mask) { reference::selectRegionsBySize(mask, 300, 500); });
}

void brightnessAndHulls() {
  const auto bytes = [] { return discs(kSide); };
  contestInPlace("reverse 2048", bytes)
      .ours([](Bytes& img) { bip::reverse(img); })
      .twin([](Bytes& img) { reference::reverse(img); });
  contest("histogram 2048", bytes)
      .ours([](const Bytes& img) { return bip::histogram(img, 0, 255); })
      .twin([](const Bytes& img) { return reference::histogram(img, 0, 255); });
  contest("threshold byte 2048", bytes)
      .ours([](const Bytes& img) { return bip::threshold(img, 128); })
      .twin([](const Bytes& img) { return reference::threshold(img, 128); });
  contest("threshold float 2048", [] {
    return floats(discs(kSide));
  }).ours([](const Floats& img) {
      return bip::threshold(img, 128);
    }).twin([](const Floats& img) { return reference::threshold(img, 128); });
  contest("computeThreshold 2048 sigma 2", bytes)
      .ours([](const Bytes& img) { return bip::computeThreshold(img, 2); })
      .twin([](const Bytes& img) { return reference::computeThreshold(img, 2); });
  contest("convexHull 2048 discs", [] {
    return discMask(kSide);
  }).ours([](const Bytes& mask) {
      return bip::convexHull(mask, 10);
    }).twin([](const Bytes& mask) { return reference::convexHull(mask, 10); });
}

}  // namespace

void registerWorks() {
  const auto all = [](const std::string& size, auto make) {
    labelling(size, make);
    distances(size, make);
    morphology(size, make);
    measuring(size, make);
    selecting(size, make);
  };
  all("2048 discs", [] { return discMask(kSide); });
  all("2048 spiral", [] { return spiral(kSide); });
  regionByRegion("1024 discs", [] { return discMask(1024); });
  regionByRegion("1024 spiral", [] { return spiral(1024); });
  const auto stack = [] { return maskOf(discStack()); };
  labelling("64x256x256 discs", stack);
  distances("64x256x256 discs", stack);
  brightnessAndHulls();
}

}  // namespace orva_benchmark
