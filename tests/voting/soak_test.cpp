// Thousands of runs in one process take no more memory than a few, and find the same.
#include <gtest/gtest.h>
#include <malloc.h>
#include <unistd.h>

#include <cstdint>
#include <fstream>
#include <memory>
#include <utility>
#include <vector>

#include "tests/support/images.h"
#include "tests/support/sanitizer.h"
#include "tests/voting/probe.h"

namespace orva::test {
namespace {

constexpr int kInputs = 50;
constexpr int kPasses = 40;

// What is not released, or kept by the C library for calls of the same size.
std::size_t allocatedBytes() {
  const struct mallinfo2 heap = mallinfo2();
  return heap.uordblks + heap.hblkhd;
}

// After what the C library keeps for later has gone back to the system.
long residentBytes() {
  malloc_trim(0);
  std::ifstream statm("/proc/self/statm");
  long all = 0;
  long resident = 0;
  statm >> all >> resident;
  EXPECT_TRUE(statm);
  return resident * sysconf(_SC_PAGESIZE);
}

struct Input {
  VotingParams params;
  std::unique_ptr<Image> img;
};

std::unique_ptr<Image> pictureOf(Random& random, int type, const Shape& shape) {
  const std::vector<Disc> discs{
      {shape.nx / 3, shape.ny / 2, randomInt(random, 2, 9)},
      {2 * shape.nx / 3, randomInt(random, 0, shape.ny), randomInt(random, 2, 6)}};
  const auto inside = static_cast<float>(randomInt(random, 150, 250));
  switch (type) {
    case 0:
      return std::make_unique<image<unsigned char>>(
          discImage<unsigned char>(shape, discs, inside, 20));
    case 1:
      return std::make_unique<image<short>>(discImage<short>(shape, discs, inside, -20));
    case 2:
      return std::make_unique<image<int>>(discImage<int>(shape, discs, inside, 20));
    case 3:
      return std::make_unique<image<unsigned>>(discImage<unsigned>(shape, discs, inside, 20));
    case 4:
      return std::make_unique<image<Rgb>>(discImage<Rgb>(shape, discs, inside, 20));
    default:
      return std::make_unique<image<float>>(discImage<float>(shape, discs, inside / 255, 0.1F));
  }
}

// Of changing sizes, types, radii and settings.
std::vector<Input> inputs() {
  Random random(20);
  std::vector<Input> result;
  for (int i = 0; i < kInputs; ++i) {
    Input input;
    input.img = pictureOf(random, i % 6,
                          {randomInt(random, 1, 60), randomInt(random, 1, 50), 1 + (i % 10 == 9)});
    VotingParams& p = input.params;
    p.regionType = i % 3;
    p.minRadius = randomInt(random, 1, 3);
    p.maxRadius = p.minRadius + randomInt(random, 0, 9);
    p.coneWidth = randomInt(random, 0, 5);
    p.sigma = static_cast<float>(randomInt(random, 5, 20)) / 10;
    p.gradThreshold = 0.05F;
    p.weightParam = i % 4 == 0 ? 1.0F : 0.5F;
    p.useEdges = i % 5 == 4;
    result.push_back(std::move(input));
  }
  return result;
}

// Of the bytes, by FNV-1a.
class Hash {
 public:
  void add(const void* data, std::size_t bytes) {
    const auto* p = static_cast<const unsigned char*>(data);
    for (std::size_t i = 0; i < bytes; ++i) value_ = (value_ ^ p[i]) * 1099511628211U;
  }
  template <class T>
  void add(const std::vector<T>& values) {
    add(values.data(), values.size() * sizeof(T));
  }
  std::uint64_t value() const { return value_; }

 private:
  std::uint64_t value_ = 14695981039346656037U;
};

std::uint64_t resultOf(const Input& input) {
  const Probe probe = computed(input.params, *input.img);
  Hash hash;
  hash.add(pixelsOf(probe.acc_));
  hash.add(probe.center_weights());
  for (const Point& p : probe.centers()) hash.add(std::vector<int>{p.x, p.y});
  return hash.value();
}

// 2000 runs. One cache line that each kept would be too much for the first of the bounds, which
// allows for what the C library keeps; the other one allows for its way to ask for pages.
TEST(Soak, TakesNoMoreMemoryAndFindsTheSame) {
  constexpr std::size_t kMaxAllocated = std::size_t{120} << 10U;
  constexpr long kMaxResident = 1L << 20U;
  const std::vector<Input> all = inputs();
  std::vector<std::uint64_t> expected;
  for (int warmUp = 0; warmUp < 2; ++warmUp) {
    expected.clear();
    for (const Input& input : all) expected.push_back(resultOf(input));
  }
  const long residentBefore = residentBytes();
  const std::size_t allocatedBefore = allocatedBytes();
  for (int pass = 0; pass < kPasses; ++pass) {
    for (std::size_t i = 0; i < all.size(); ++i) {
      ASSERT_EQ(resultOf(all[i]), expected[i]) << "input " << i << " in pass " << pass;
    }
  }
  if (addressSanitizer) return;  // it keeps what is released
  EXPECT_LE(allocatedBytes(), allocatedBefore + kMaxAllocated);
  EXPECT_LE(residentBytes() - residentBefore, kMaxResident);
}

// The inputs are not all without a center, nor alike.
TEST(Soak, HasInputsThatFindDifferentThings) {
  std::vector<std::uint64_t> results;
  int withCenters = 0;
  for (const Input& input : inputs()) {
    results.push_back(resultOf(input));
    if (!computed(input.params, *input.img).centers().empty()) ++withCenters;
  }
  EXPECT_GT(withCenters, kInputs / 2);
  std::sort(results.begin(), results.end());
  EXPECT_GT(std::unique(results.begin(), results.end()) - results.begin(), kInputs * 3 / 4);
}

}  // namespace
}  // namespace orva::test
