// The base of all images: sizes and products, equality of size, reset, border masks.
#include "orva/image/image.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <memory>
#include <vector>

#include "tests/support/raw_image.h"
#include "tests/support/reference/image.h"
#include "tests/support/shapes.h"

namespace orva::test {
namespace {

// nframes, frameSize, volumeSize, timepointSize, npix.
std::vector<int> productsOf(const Image& img) {
  return {img.nframes(), img.frameSize(), img.volumeSize(), img.timepointSize(), img.npix()};
}

int setEntries(const std::vector<bool>& mask) {
  return static_cast<int>(std::count(mask.begin(), mask.end(), true));
}

TEST(ImageBase, KeepsSizesAndTheirProducts) {
  const BareImage img(2, 3, 5, 7, 11);
  EXPECT_THAT(sizesOf(img), testing::ElementsAre(2, 3, 5, 7, 11));
  EXPECT_THAT(productsOf(img), testing::ElementsAre(385, 6, 30, 210, 2310));
  EXPECT_FALSE(img.isNull());
}

TEST(ImageBase, IsAllZeroByDefault) {
  const BareImage img;
  EXPECT_THAT(sizesOf(img), testing::ElementsAre(0, 0, 0, 0, 0));
  EXPECT_THAT(productsOf(img), testing::ElementsAre(0, 0, 0, 0, 0));
  EXPECT_TRUE(img.isNull());
}

TEST(ImageBase, IsNullWithoutPixels) {
  EXPECT_TRUE(BareImage(0, 1, 1, 1, 1).isNull());
  const BareImage stack(5, 5, 0, 1, 1);
  EXPECT_TRUE(stack.isNull());
  EXPECT_THAT(sizesOf(stack), testing::ElementsAre(5, 5, 0, 1, 1));
  EXPECT_THAT(productsOf(stack), testing::ElementsAre(0, 25, 0, 0, 0));
}

TEST(ImageBase, ProductsOfNegativeSizesAsPassedAreIntended) {
  const BareImage img(-2, 3, 1, 1, 1);
  EXPECT_THAT(sizesOf(img), testing::ElementsAre(0, 3, 1, 1, 1));
  EXPECT_THAT(productsOf(img), testing::ElementsAre(1, -6, -6, -6, -6));
  EXPECT_FALSE(img.isNull());

  const BareImage all(-2, -3, -5, -7, -11);
  EXPECT_THAT(sizesOf(all), testing::ElementsAre(0, 0, 0, 0, 0));
  EXPECT_THAT(productsOf(all), testing::ElementsAre(-385, 6, -30, 210, -2310));
}

TEST(ImageBase, ProductsAreKeptModulo32Bits) {
  EXPECT_THAT(productsOf(BareImage(100000, 100000, 1, 1, 1)),
              testing::ElementsAre(1, 1410065408, 1410065408, 1410065408, 1410065408));
  EXPECT_THAT(
      productsOf(BareImage(65536, 32768, 1, 1, 1)),
      testing::ElementsAre(1, -2147483647 - 1, -2147483647 - 1, -2147483647 - 1, -2147483647 - 1));
  EXPECT_TRUE(BareImage(65536, 65536, 1, 1, 1).isNull());
}

TEST(ImageBase, FramesAreCountedOverDepthChannelsAndTime) {
  for (const Shape& s : oddShapes()) {
    const BareImage img(s.nx, s.ny, s.nz, s.nc, s.nt);
    EXPECT_EQ(img.nframes() * img.frameSize(), img.npix());
    EXPECT_EQ(img.nframes(), s.nz * s.nc * s.nt);
  }
}

TEST(EqualSize, ComparesOnlyTheNumberOfFramesAsIsIntended) {
  EXPECT_TRUE(BareImage(10, 10, 4, 1, 1).equalSize(BareImage(10, 10, 1, 2, 2)));
  EXPECT_TRUE(BareImage(10, 10, 1, 1, 6).equalSize(BareImage(10, 10, 3, 2, 1)));
}

TEST(EqualSize, FailsForOtherWidthHeightOrFrames) {
  const BareImage img(10, 9, 4, 1, 1);
  EXPECT_FALSE(img.equalSize(BareImage(9, 9, 4, 1, 1)));
  EXPECT_FALSE(img.equalSize(BareImage(10, 10, 4, 1, 1)));
  EXPECT_FALSE(img.equalSize(BareImage(10, 9, 3, 1, 1)));
  EXPECT_FALSE(img.equalSize(BareImage(9, 10, 4, 1, 1)));
}

TEST(EqualSize, IgnoresThePixelType) {
  EXPECT_TRUE(image<float>(3, 2, 1, 1, 1).equalSize(image<short>(3, 2, 1, 1, 1)));
}

// Counts how often it is destroyed.
class Counted : public BareImage {
 public:
  explicit Counted(int& destroyed) : BareImage(1, 1, 1, 1, 1), destroyed_(destroyed) {}
  Counted(const Counted&) = delete;
  Counted& operator=(const Counted&) = delete;
  ~Counted() override { ++destroyed_; }

 private:
  int& destroyed_;
};

TEST(Reset, DeletesTheOldImageAndPointsToTheNew) {
  int firstDestroyed = 0;
  int secondDestroyed = 0;
  Image* p = new Counted(firstDestroyed);
  Image* const second = new Counted(secondDestroyed);
  Image::reset(p, second);
  EXPECT_EQ(p, second);
  EXPECT_EQ(firstDestroyed, 1);
  EXPECT_EQ(secondDestroyed, 0);
  Image::reset(p, nullptr);
  EXPECT_EQ(p, nullptr);
  EXPECT_EQ(secondDestroyed, 1);
}

TEST(Reset, KeepsAnImageThatIsSetAgain) {
  int destroyed = 0;
  Image* p = new Counted(destroyed);
  Image* const same = p;
  Image::reset(p, same);
  Image::reset(p, p);
  EXPECT_EQ(p, same);
  EXPECT_EQ(destroyed, 0);
  delete p;
}

TEST(Reset, SetsANullPointer) {
  int destroyed = 0;
  const auto owner = std::make_unique<Counted>(destroyed);
  Image* p = nullptr;
  Image::reset(p, owner.get());
  EXPECT_EQ(p, owner.get());
  EXPECT_EQ(destroyed, 0);
}

TEST(Interior, OfOnePlaneLeavesOutRowsAndColumnsOfTheBorder) {
  EXPECT_THAT(Image::interior(1, 1, 1), testing::ElementsAre(false));
  EXPECT_THAT(Image::interior(3, 3, 1),
              testing::ElementsAre(false, false, false, false, true, false, false, false, false));
}

TEST(Interior, OfAStackLeavesOutTheOuterPlanes) {
  const std::vector<bool> mask = Image::interior(4, 4, 3);
  ASSERT_EQ(mask.size(), 48U);
  EXPECT_EQ(setEntries(mask), 4);
  for (const std::size_t i : {16U + 5U, 16U + 6U, 16U + 9U, 16U + 10U}) EXPECT_TRUE(mask[i]) << i;
}

TEST(Interior, IsEmptyInADimensionOfOneOrTwo) {
  EXPECT_EQ(setEntries(Image::interior(1, 9, 1)), 0);
  EXPECT_EQ(setEntries(Image::interior(2, 9, 1)), 0);
  EXPECT_EQ(setEntries(Image::interior(9, 1, 5)), 0);
  EXPECT_EQ(setEntries(Image::interior(9, 2, 5)), 0);
  EXPECT_EQ(setEntries(Image::interior(9, 9, 2)), 0);
  EXPECT_EQ(setEntries(Image::interior(9, 9, 1)), 49);
}

TEST(Interior, HasNoEntriesForSizesThatAreNotPositive) {
  EXPECT_TRUE(Image::interior(0, 3, 3).empty());
  EXPECT_TRUE(Image::interior(3, 0, 3).empty());
  EXPECT_TRUE(Image::interior(3, 3, 0).empty());
  EXPECT_TRUE(Image::interior(-3, 3, 3).empty());
}

TEST(InteriorMatchesReferenceAtEveryWidth, ForRandomSizes) {
  Random random(12);
  for (int round = 0; round < 260; ++round) {
    const int nx = 1 + round % kMaxSweepWidth;
    const int ny = randomInt(random, 1, 9);
    const int nz = randomInt(random, 1, 5);
    EXPECT_EQ(Image::interior(nx, ny, nz), reference::interior(nx, ny, nz))
        << nx << " " << ny << " " << nz;
  }
}

TEST(Interior, IsTheSameFromBothEnds) {
  for (const Shape& s : oddShapes()) {
    const std::vector<bool> mask = Image::interior(s.nx, s.ny, s.nz);
    EXPECT_EQ(std::vector<bool>(mask.rbegin(), mask.rend()), mask);
  }
}

TEST(Interior, OfAnImageTakingAllFramesAsPlanesIsIntended) {
  const BareImage img(5, 4, 2, 3, 1);
  EXPECT_EQ(img.interior(), Image::interior(5, 4, 6));
  EXPECT_EQ(setEntries(img.interior()), 3 * 2 * 4);
  EXPECT_EQ(BareImage(5, 4, 1, 1, 1).interior(), Image::interior(5, 4, 1));
  EXPECT_TRUE(BareImage(0, 1, 1, 1, 1).interior().empty());
}

TEST(RoundDouble, RoundsPositiveHalvesUp) {
  EXPECT_EQ(round_double(2.5), 3);
  EXPECT_EQ(round_double(2.49), 2);
  EXPECT_EQ(round_double(0.5), 1);
  EXPECT_EQ(round_double(0.49999999999999994), 0);
  EXPECT_EQ(round_double(7), 7);
  EXPECT_EQ(round_double(0), 0);
}

TEST(RoundDouble, TruncatingNegativeValuesIsIntended) {
  EXPECT_EQ(round_double(-2.5), -2);
  EXPECT_EQ(round_double(-1.7), -1);
  EXPECT_EQ(round_double(-0.9), 0);
  EXPECT_EQ(round_double(-3), -3);
}

TEST(RoundDoubleMatchesReference, ForAnyValueAndForHalves) {
  Random random(13);
  std::uniform_real_distribution<double> value(-1e6, 1e6);
  for (int round = 0; round < 2000; ++round) {
    const double v = value(random);
    EXPECT_EQ(round_double(v), reference::round_double(v)) << v;
    const double half = std::trunc(v) + 0.5;
    EXPECT_EQ(round_double(half), reference::round_double(half)) << half;
  }
}

TEST(RoundDouble, HoldsValuesPast32BitsAtTheEnds) {
  EXPECT_EQ(round_double(1e300), std::numeric_limits<int>::max());
  EXPECT_EQ(round_double(2147483647.5), std::numeric_limits<int>::max());
  EXPECT_EQ(round_double(-1e300), std::numeric_limits<int>::min());
  EXPECT_EQ(round_double(std::numeric_limits<double>::quiet_NaN()), 0);
}

TEST(OutOfMemoryDeathTest, EndsTheProcess) {
  EXPECT_EXIT(out_of_memory(), testing::ExitedWithCode(1), testing::Eq("Error: out of memory\n"));
}

TEST(ImageFormat, CodesAreFixed) {
  using namespace orva;
  EXPECT_THAT((std::vector<int>{BYTE, INT, USHORT, SHORT, FLOAT, UINT, RGB, SHORTRGB, INTRGB,
                                FLOATRGB, RGBA}),
              testing::ElementsAre(0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10));
}

TEST(ArrayData, CountsItsUsers) {
  ArrayData data;
  data.ref();
  data.ref();
  EXPECT_FALSE(data.deref());
  EXPECT_FALSE(data.deref());
  EXPECT_TRUE(data.deref());
}

}  // namespace
}  // namespace orva::test
