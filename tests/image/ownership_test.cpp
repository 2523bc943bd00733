// Who frees pixels, and when: the last image that uses them.
#include <gtest/gtest.h>
#include <malloc.h>

#include <memory>

#include "tests/support/images.h"
#include "tests/support/sanitizer.h"

namespace orva::test {
namespace {

// Bytes that the process has from its allocator, large blocks included.
std::size_t allocated() {
  const auto info = mallinfo2();
  return info.uordblks + info.hblkhd;
}

constexpr int kSide = 512;
constexpr std::size_t kBytes = std::size_t{kSide} * kSide;  // of an image of bytes

image<unsigned char> some() { return {kSide, kSide, 1, 1, 1}; }

// Whether calls that each leave a block of `bytes` behind would take more than an image, and these
// calls do not. (The allocator keeps some small blocks for the next call.)
template <class Call>
testing::AssertionResult frees(std::size_t bytes, const Call& call) {
  const std::size_t before = allocated();
  for (std::size_t left = 0; left <= 4 * kBytes; left += bytes) call();
  const std::size_t after = allocated();
  if (after < before + kBytes) return testing::AssertionSuccess();
  return testing::AssertionFailure() << after - before << " bytes are kept";
}

constexpr std::size_t kOwner = sizeof(ArrayData);

class LastOwner : public testing::Test {
 protected:
  void SetUp() override {
    if (addressSanitizer) GTEST_SKIP() << "the sanitizer reports what is not freed, itself";
  }
};

TEST_F(LastOwner, HoldsThePixelsUpToItsEnd) {
  const std::size_t before = allocated();
  auto first = std::make_unique<image<unsigned char>>(some());
  auto second = std::make_unique<image<unsigned char>>(*first);
  const std::unique_ptr<Image> third(second->copy());
  EXPECT_GE(allocated() - before, kBytes);
  EXPECT_LT(allocated() - before, 2 * kBytes);
  third->setPixel(kSide, 7.0F);
  first.reset();
  second.reset();
  EXPECT_GE(allocated() - before, kBytes);
  EXPECT_EQ(third->pixel(kSide), 7.0F);
}

TEST_F(LastOwner, FreesThePixelsAtItsEnd) {
  EXPECT_TRUE(frees(kBytes, [] { const image<unsigned char> img = some(); }));
  EXPECT_TRUE(frees(kBytes, [] {
    auto first = std::make_unique<image<unsigned char>>(some());
    const image<unsigned char> second(*first);  // NOLINT: shared
    first.reset();
  }));
  EXPECT_TRUE(frees(kBytes, [] {
    const image<unsigned char> img = some();
    const std::unique_ptr<Image> copy(img.copy());
    const std::unique_ptr<Image> clone(img.clone());
    const std::unique_ptr<Image> frame(img.frame(0));
  }));
  // Without pixels, too.
  EXPECT_TRUE(frees(kOwner, [] { const image<float> img(0, 1, 1, 1, 1); }));
}

TEST_F(LastOwner, FreesThePixelsWhenAssigned) {
  image<unsigned char> img = some();
  const image<unsigned char> other = some();
  EXPECT_TRUE(frees(kBytes, [&] {
    img = some();
    img = other;
  }));
  const image<unsigned char>& itself = img;
  EXPECT_TRUE(frees(kBytes, [&] { img = itself; }));
  EXPECT_EQ(img.data(), other.data());
  image<float> empty(0, 1, 1, 1, 1);
  EXPECT_TRUE(frees(kOwner, [&] { empty = image<float>(0, 1, 1, 1, 1); }));
}

TEST_F(LastOwner, FreesThePixelsByReset) {
  EXPECT_TRUE(frees(kBytes, [] {
    Image* p = some().clone();
    Image::reset(p, some().clone());
    Image::reset(p, nullptr);
  }));
}

TEST_F(LastOwner, FreesAnOwnerByDeleteData) {
  EXPECT_TRUE(frees(kOwner, [] {
    ArrayData* data = image<short>::newData();
    image<short>::deleteData(data);
    EXPECT_EQ(data, nullptr);
  }));
}

}  // namespace
}  // namespace orva::test
