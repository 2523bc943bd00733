// Copies share their pixels, clones own theirs, and failed allocations end the process.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/resource.h>

#include <memory>
#include <utility>

#include "tests/support/images.h"
#include "tests/support/sanitizer.h"
#include "tests/support/shapes.h"

namespace orva::test {
namespace {

template <class T>
class Sharing : public testing::Test {
 protected:
  // An image of five sizes, none of them 1.
  image<T> some() { return randomImage<T>(random_, {5, 4, 3, 2, 2}); }

 private:
  Random random_{31};
};
TYPED_TEST_SUITE(Sharing, PixelTypes);

// Writes through `a` are seen through `b`, and the other way round.
template <class T>
void expectShared(image<T>& a, Image& b) {
  EXPECT_EQ(a.data(), b.data());
  a.setPixel(3, 41);
  EXPECT_EQ(b.pixel(3), a.pixel(3));
  b.setPixel(4, 42);
  EXPECT_EQ(a.pixel(4), b.pixel(4));
  EXPECT_NEAR(a.pixel(4), 42, 1e-4);
}

template <class T>
void expectApart(image<T>& a, Image& b) {
  EXPECT_NE(a.data(), b.data());
  EXPECT_TRUE(sameImage(a, b));
  a.setPixel(3, 41);
  b.setPixel(3, 42);
  EXPECT_NEAR(a.pixel(3), 41, 1e-4);
  EXPECT_NEAR(b.pixel(3), 42, 1e-4);
}

TYPED_TEST(Sharing, CopyConstructedImageSharesPixels) {
  image<TypeParam> img = this->some();
  image<TypeParam> copy(img);
  EXPECT_TRUE(sameImage(copy, img));
  expectShared(img, copy);
}

TYPED_TEST(Sharing, CopySharesPixels) {
  image<TypeParam> img = this->some();
  const std::unique_ptr<Image> copy(img.copy());
  ASSERT_NE(dynamic_cast<image<TypeParam>*>(copy.get()), nullptr);
  EXPECT_TRUE(sameImage(*copy, img));
  expectShared(img, *copy);
}

TYPED_TEST(Sharing, AssignedImageSharesPixelsAndTakesTheSizes) {
  image<TypeParam> img = this->some();
  image<TypeParam> other(1, 2, 1, 1, 1);
  image<TypeParam>& result = (other = img);
  EXPECT_EQ(&result, &other);
  EXPECT_TRUE(sameImage(other, img));
  expectShared(img, other);
}

TYPED_TEST(Sharing, AssignmentLeavesTheFormerSharersTheirPixels) {
  image<TypeParam> first = this->some();
  const image<TypeParam> keeps(first);
  const std::unique_ptr<Image> before(first.clone());
  first = image<TypeParam>(2, 2, 1, 1, 1);
  first.setPixel(0, 9);
  EXPECT_TRUE(sameImage(keeps, *before));
}

TYPED_TEST(Sharing, SelfAssignmentKeepsThePixels) {
  image<TypeParam> img = this->some();
  const std::unique_ptr<Image> before(img.clone());
  image<TypeParam>& self = img;
  img = self;
  EXPECT_TRUE(sameImage(img, *before));
  image<TypeParam> sharer(img);
  img = sharer;
  EXPECT_TRUE(sameImage(img, *before));
}

TYPED_TEST(Sharing, PixelsOutliveTheImageTheyWereMadeWith) {
  auto img = std::make_unique<image<TypeParam>>(this->some());
  const std::unique_ptr<Image> before(img->clone());
  const image<TypeParam> copy(*img);
  img.reset();
  EXPECT_TRUE(sameImage(copy, *before));
}

TYPED_TEST(Sharing, MovedFromImageIsStillAnImage) {
  image<TypeParam> img = this->some();
  const std::unique_ptr<Image> before(img.clone());
  const image<TypeParam> taken(std::move(img));
  EXPECT_TRUE(sameImage(taken, *before));
  // Moving is copying: the pixels are shared.
  EXPECT_TRUE(sameImage(img, *before));  // NOLINT(bugprone-use-after-move)
  EXPECT_EQ(img.data(), taken.data());   // NOLINT(bugprone-use-after-move)
  img = image<TypeParam>(2, 2, 1, 1, 1);
  EXPECT_EQ(img.npix(), 4);
  EXPECT_TRUE(sameImage(taken, *before));
}

TYPED_TEST(Sharing, CloneAndDuplicateOwnTheirPixels) {
  image<TypeParam> img = this->some();
  const std::unique_ptr<Image> clone(img.clone());
  ASSERT_NE(dynamic_cast<image<TypeParam>*>(clone.get()), nullptr);
  expectApart(img, *clone);
  img = this->some();
  image<TypeParam> duplicate = img.duplicate();
  expectApart(img, duplicate);
}

TYPED_TEST(Sharing, CloneAndDuplicateHoldEveryPixelOfEveryShape) {
  Random random(32);
  for (const Shape& s : oddShapesAndWidths()) {
    const auto img = randomImage<TypeParam>(random, s);
    const std::unique_ptr<Image> clone(img.clone());
    const image<TypeParam> duplicate = img.duplicate();
    for (const Image* copy :
         {static_cast<const Image*>(clone.get()), static_cast<const Image*>(&duplicate)}) {
      EXPECT_TRUE(sameImage(*copy, img));
      EXPECT_NE(copy->data(), img.data());
    }
  }
}

TYPED_TEST(Sharing, NullImagesCopyAndCloneToNullImages) {
  const image<TypeParam> none(5, 5, 0, 1, 1);
  const std::unique_ptr<Image> copy(none.copy());
  const std::unique_ptr<Image> clone(none.clone());
  EXPECT_TRUE(sameImage(*copy, none));
  EXPECT_TRUE(sameImage(*clone, none));
  EXPECT_TRUE(sameImage(none.duplicate(), none));
  image<TypeParam> assigned(2, 2, 1, 1, 1);
  assigned = none;
  EXPECT_TRUE(assigned.isNull());
  EXPECT_EQ(assigned.data(), nullptr);
}

TYPED_TEST(Sharing, BlockOwnersAreMadeWithOneUserAndDeletedToNull) {
  ArrayData* data = image<TypeParam>::newData();
  ASSERT_NE(data, nullptr);
  EXPECT_TRUE(data->deref());
  image<TypeParam>::deleteData(data);
  EXPECT_EQ(data, nullptr);
  image<TypeParam>::deleteData(data);
  EXPECT_EQ(data, nullptr);
}

TYPED_TEST(Sharing, NegativeSizesWithAPositiveProductHavePixels) {
  const image<TypeParam> img(-2, -3, 1, 1, 1);
  EXPECT_EQ(img.npix(), 6);
  EXPECT_EQ(img.nx(), 0);
  ASSERT_NE(img.pixels(), nullptr);
  EXPECT_EQ(img.pixel(5), 0.0F);
}

const Shape kTooLarge[] = {{65536, 65536},         {65536, 32768}, {100000, 100000},
                           {1024, 1024, 1024, 16}, {-2, 3},        {1, 1, 1, -1}};

TYPED_TEST(Sharing, CountsThatDoNotFit32BitsEndTheProcess) {
  for (const Shape& s : kTooLarge) {
    EXPECT_EXIT(image<TypeParam>(s.nx, s.ny, s.nz, s.nc, s.nt), testing::ExitedWithCode(1),
                testing::Eq("Error: out of memory\n"));
  }
}

TEST(Memory, LargeSizesWithAZeroAmongThemAreANullImage) {
  EXPECT_TRUE(image<int>(65536, 65536, 0, 1, 1).isNull());
}

TEST(MemoryDeathTest, FailedAllocationEndsTheProcess) {
  if (addressSanitizer) GTEST_SKIP() << "the sanitizer answers failed allocations";
  const auto starve = [] {
    constexpr rlim_t kLimit = rlim_t{1} << 30;
    const rlimit limit{kLimit, kLimit};
    setrlimit(RLIMIT_AS, &limit);
    const image<float> img(32768, 32768, 1, 1, 1);
  };
  EXPECT_EXIT(starve(), testing::ExitedWithCode(1), testing::Eq("Error: out of memory\n"));
}

}  // namespace
}  // namespace orva::test
