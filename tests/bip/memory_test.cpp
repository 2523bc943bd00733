// Operations on masks and labels without enough memory.
#include <gtest/gtest.h>

#include <algorithm>
#include <vector>

#include "orva/bip/bip.h"
#include "tests/support/images.h"
#include "tests/support/memory_limit.h"

namespace orva::test {
namespace {

const char* const kMessage = "Error: out of memory\n";

constexpr int kSide = 1000;

class BipWithoutMemory : public testing::Test {
 protected:
  template <class Work>
  static void expect(const char* name, const Work& work) {
    expectMemoryToRunOut(name, {kMessage}, work);
  }

  // Stripes: many runs in few regions.
  const image<unsigned char> mask_ = [] {
    image<unsigned char> mask = blank<unsigned char>({kSide, kSide});
    for (int i = 0; i < mask.npix(); ++i) mask.pixels()[i] = i % 2 == 0 || i < kSide ? 255 : 0;
    return mask;
  }();
  const image<short> labels_ = [] {
    image<short> labels = blank<short>({kSide, kSide});
    for (int i = 0; i < labels.npix(); ++i) labels.pixels()[i] = static_cast<short>(i % 3 - 1);
    return labels;
  }();
};

TEST_F(BipWithoutMemory, RegionsEndTheProcess) {
  expect("axes", [this] { bip::regions(mask_); });
  expect("box", [this] {
    int n = 0;
    bip::regions(mask_, n, -1, 1, NEIGHBORHOOD_8);
  });
  expect("far neighbours", [this] {
    int n = 0;
    bip::regions(mask_, n, 255, 2, NEIGHBORHOOD_4);
  });
  expect("partition", [this] { bip::regions(labels_); });
}

TEST_F(BipWithoutMemory, ListsEndTheProcess) {
  expect("brightness", [this] { bip::regionIntensityArrays(labels_, 2, labels_, true); });
  expect("boundaries", [this] { bip::boundaries(labels_); });
}

TEST_F(BipWithoutMemory, DistancesAndMasksEndTheProcess) {
  expect("fchamfer", [this] { bip::fchamfer(mask_); });
  expect("chamfer", [this] { bip::chamfer(labels_, true); });
  expect("edge", [this] { bip::edge(labels_); });
  expect("threshold", [this] { bip::threshold(labels_, 1.0F); });
  expect("convexHull", [this] { bip::convexHull(mask_, 3); });
  expect("selectRegions", [this] {
    image<unsigned char> mask = mask_;
    bip::selectRegions(mask, labels_, 0.0F, 3);
  });
  expect("selectRegionsBySize", [this] {
    image<unsigned char> mask = mask_;
    bip::selectRegionsBySize(mask, 3, -1);
  });
  expect("removeInternalStructures", [this] {
    image<unsigned char> mask = mask_;
    bip::removeInternalStructures(mask);
  });
  expect("propagate", [this] {
    image<short> labels = labels_;
    bip::propagate(labels, 10.0F);
  });
}

// Scratch rows are all that these take.
TEST_F(BipWithoutMemory, RowsEndTheProcess) {
  constexpr int width = 400000;
  expect("erode labels", [] {
    image<short> labels = blank<short>({width, 3});
    bip::erode(labels);
  });
  expect("dilate", [] {
    image<unsigned char> mask = blank<unsigned char>({width, 3});
    bip::dilate(mask);
  });
}

}  // namespace
}  // namespace orva::test
