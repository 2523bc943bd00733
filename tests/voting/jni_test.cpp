// The entry for Java, called with a table of JNI operations that holds the three that it may use.
#include <gtest/gtest.h>
#include <jni.h>
#include <malloc.h>

#include <algorithm>
#include <cstddef>
#include <vector>

#include "orva/voting/JNICircularVoting.h"
#include "tests/support/images.h"
#include "tests/support/reference/scalespace.h"
#include "tests/support/reference/voting.h"
#include "tests/support/sanitizer.h"

#if defined(ORVA_ADDRESS_SANITIZER)
#include <sanitizer/lsan_interface.h>
#endif

namespace orva::test {
namespace {

// An int array of the fake Java machine.
struct Array : _jintArray {
  std::vector<jint> values;
};

enum class Operation { Copy, Create, Store };

// A Java machine with one caller: what was called, and what is to fail.
struct Machine {
  std::vector<Operation> calls;
  std::vector<jsize> lengths;
  bool copies = true;
  bool creates = true;
  Array result;
  jintArray stored = nullptr;
  std::vector<jint> storedValues;
};

Machine machine;

void getRegion(JNIEnv* /*env*/, jintArray array, jsize start, jsize length, jint* to) {
  machine.calls.push_back(Operation::Copy);
  machine.lengths.push_back(length);
  EXPECT_EQ(start, 0);
  if (!machine.copies) return;
  const std::vector<jint>& values = static_cast<Array*>(array)->values;
  ASSERT_LE(static_cast<std::size_t>(length), values.size());
  std::copy_n(values.begin(), length, to);
}

jintArray newArray(JNIEnv* /*env*/, jsize length) {
  machine.calls.push_back(Operation::Create);
  machine.lengths.push_back(length);
  return machine.creates ? &machine.result : nullptr;
}

void setRegion(JNIEnv* /*env*/, jintArray array, jsize start, jsize length, const jint* from) {
  machine.calls.push_back(Operation::Store);
  machine.lengths.push_back(length);
  EXPECT_EQ(start, 0);
  machine.stored = array;
  machine.storedValues.assign(from, from + length);
}

struct Arguments {
  jint height = 0;
  jint width = 0;
  jint maxRadius = 6;
  jint threshold = 20;
  jint scale = 2;
  jint ignored[3] = {0, 0, 0};
};

class JavaEntry : public testing::Test {
 protected:
  JavaEntry() {
    machine = Machine();
    table_.GetIntArrayRegion = getRegion;
    table_.NewIntArray = newArray;
    table_.SetIntArrayRegion = setRegion;
    env_.functions = &table_;
  }

  // The array that a call returns to Java.
  std::vector<jint> call(const std::vector<jint>& pixels, const Arguments& a) {
    Array array;
    array.values = pixels;
#if defined(ORVA_ADDRESS_SANITIZER)
    const __lsan::ScopedDisabler twoImagesAreKept;
#endif
    const jintArray result = Java_JNICircularVoting_compute(
        &env_, nullptr, &array, a.height, a.width, a.ignored[0], a.maxRadius, a.ignored[1],
        a.ignored[2], a.threshold, a.scale);
    EXPECT_EQ(result, machine.creates ? &machine.result : nullptr);
    EXPECT_EQ(machine.stored, result);
    return machine.storedValues;
  }

 private:
  JNINativeInterface_ table_ = {};  // any other operation would be a call of null
  JNIEnv env_ = {};
};

// Bright discs with grey levels and sizes of their own, on a background that is not even.
std::vector<jint> discs(const Arguments& a, int count, unsigned seed) {
  Random random(seed);
  std::vector<jint> pixels(static_cast<std::size_t>(a.height) * static_cast<std::size_t>(a.width));
  for (jint& p : pixels) p = randomInt(random, 20, 30);
  for (int n = 0; n < count; ++n) {
    const int cx = randomInt(random, 0, a.width - 1);
    const int cy = randomInt(random, 0, a.height - 1);
    const int radius = randomInt(random, 3, 7);
    const int grey = randomInt(random, 90, 250);
    for (int y = 0; y < a.height; ++y) {
      for (int x = 0; x < a.width; ++x) {
        const int d = (x - cx) * (x - cx) + (y - cy) * (y - cy);
        if (d <= radius * radius) pixels[static_cast<std::size_t>(y * a.width + x)] = grey;
      }
    }
  }
  return pixels;
}

// The same by the reference implementations.
std::vector<jint> expected(const std::vector<jint>& pixels, const Arguments& a) {
  image<unsigned char> img(a.width, a.height, 1, 1, 1);
  for (int i = 0; i < img.npix(); ++i) {
    img.pixels()[i] = static_cast<unsigned char>(pixels[static_cast<std::size_t>(i)] % 256);
  }
  const auto sigma = static_cast<float>(a.scale);
  const std::vector<float> slopes = pixelsOf(reference::gradient(img, sigma, 1.0F));
  const double strongest = *std::max_element(slopes.begin(), slopes.end());
  // Bright, not weighted, without an edge mask, absolute votes.
  const reference::VotingParams params = {.maxRadius = a.maxRadius,
                                          .coneWidth = static_cast<int>(a.maxRadius * 0.25 + 0.5),
                                          .gradThreshold = static_cast<float>(0.1 * strongest),
                                          .centerThreshold = static_cast<float>(a.threshold),
                                          .sigma = sigma,
                                          .absoluteValues = true};
  const reference::Voting voting = reference::compute(params, img);
  std::vector<jint> triples;
  for (std::size_t i = 0; i < voting.centers.size(); ++i) {
    triples.push_back(voting.centers[i].y);
    triples.push_back(voting.centers[i].x);
    triples.push_back(static_cast<jint>(voting.weights[i]));
  }
  if (triples.empty()) triples = {a.height / 3, a.width / 3, 0};
  return triples;
}

class JavaEntryMatchesReference : public JavaEntry {};

TEST_F(JavaEntryMatchesReference, ForRandomArguments) {
  Random random(2);
  int centers = 0;
  for (unsigned round = 0; round < 60; ++round) {
    const Arguments a = {.height = randomInt(random, 1, 50),
                         .width = randomInt(random, 1, 50),
                         .maxRadius = randomInt(random, 1, 14),
                         .threshold = randomInt(random, 0, 60),
                         .scale = randomInt(random, 1, 3)};
    const std::vector<jint> pixels = discs(a, 4, round);
    const std::vector<jint> found = call(pixels, a);
    EXPECT_EQ(found, expected(pixels, a)) << "round " << round;
    centers += static_cast<int>(found.size()) / 3;
  }
  EXPECT_GT(centers, 100);
}

TEST_F(JavaEntry, UsesThreeOperationsInOrder) {
  const Arguments a = {.height = 40, .width = 30};
  const std::vector<jint> found = call(discs(a, 2, 1), a);
  EXPECT_EQ(machine.calls,
            (std::vector<Operation>{Operation::Copy, Operation::Create, Operation::Store}));
  const auto length = static_cast<jsize>(found.size());
  EXPECT_GE(length, 3);
  EXPECT_EQ(machine.lengths, (std::vector<jsize>{1200, length, length}));
}

TEST_F(JavaEntry, GivesOneTripleForAnImageWithoutObjects) {
  for (const auto& [height, width] : {std::pair{20, 31}, {1, 1}, {3, 6}, {2, 100}}) {
    const Arguments a = {.height = height, .width = width};
    const std::vector<jint> black(static_cast<std::size_t>(height * width));
    EXPECT_EQ(call(black, a), (std::vector<jint>{height / 3, width / 3, 0}));
  }
}

TEST_F(JavaEntry, GivesOneTripleForAnImageWithoutPixels) {
  for (const auto& [height, width] : {std::pair{0, 9}, {7, 0}, {0, 0}, {-7, 0}, {0, -8}}) {
    EXPECT_EQ(call({}, {.height = height, .width = width}),
              (std::vector<jint>{height / 3, width / 3, 0}));
  }
}

TEST_F(JavaEntry, GivesOneTripleForTwoNegativeSizes) {
  EXPECT_EQ(call(std::vector<jint>(35), {.height = -5, .width = -7}),
            (std::vector<jint>{-1, -2, 0}));
}

TEST_F(JavaEntry, EndsTheProcessForSizesThatNoImageCanHave) {
  EXPECT_EXIT(call({}, {.height = -5, .width = 7}), testing::ExitedWithCode(1),
              "Error: out of memory");
  EXPECT_EXIT(call({}, {.height = 1 << 16, .width = 1 << 16}), testing::ExitedWithCode(1),
              "Error: out of memory");
}

TEST_F(JavaEntry, KeepsTheLowestEightBitsOfAPixel) {
  const Arguments a = {.height = 40, .width = 36, .threshold = 5};
  const std::vector<jint> grey = discs(a, 3, 5);
  std::vector<jint> packed = grey;
  Random random(3);
  for (jint& p : packed) p |= static_cast<jint>(static_cast<unsigned>(random()) << 8U);
  const std::vector<jint> found = call(grey, a);
  EXPECT_GT(found.size(), 3U);
  EXPECT_EQ(call(packed, a), found);

  std::vector<jint> white = discs(a, 0, 0);
  std::vector<jint> wrapped = white;
  for (std::size_t i = 0; i < white.size(); ++i) {
    const bool inside = i % 36 > 10 && i % 36 < 20 && i / 36 > 10 && i / 36 < 20;
    white[i] = inside ? 255 : 0;
    wrapped[i] = inside ? 0x1FF : 256;
  }
  EXPECT_GT(call(white, a)[2], 0);
  EXPECT_EQ(call(wrapped, a), call(white, a));
}

TEST_F(JavaEntry, IgnoresThreeArguments) {
  Arguments a = {.height = 40, .width = 36, .threshold = 5};
  const std::vector<jint> pixels = discs(a, 3, 5);
  const std::vector<jint> found = call(pixels, a);
  EXPECT_GT(found.size(), 3U);
  for (jint& ignored : a.ignored) {
    ignored = -77;
    EXPECT_EQ(call(pixels, a), found);
  }
}

TEST_F(JavaEntry, TakesAQuarterOfTheRadiusForTheCone) {
  const Arguments base = {.height = 60, .width = 60, .threshold = 0};
  const std::vector<jint> pixels = discs(base, 5, 8);
  for (const auto& [radius, cone] : {std::pair{1, 0}, {2, 1}, {6, 2}, {10, 3}, {20, 5}}) {
    Arguments a = base;
    a.maxRadius = radius;
    ASSERT_EQ(static_cast<int>(radius * 0.25 + 0.5), cone);
    EXPECT_EQ(call(pixels, a), expected(pixels, a)) << radius;
  }
}

TEST_F(JavaEntry, ReadsAFailedCopyAsBlack) {
  machine.copies = false;
  EXPECT_EQ(call(std::vector<jint>(600, 200), {.height = 20, .width = 30}),
            (std::vector<jint>{6, 10, 0}));
}

TEST_F(JavaEntry, StoresIntoTheNullOfAFailedCreation) {
  machine.creates = false;
  call(std::vector<jint>(600), {.height = 20, .width = 30});
  EXPECT_EQ(machine.calls.size(), 3U);
  EXPECT_EQ(machine.stored, nullptr);
}

TEST_F(JavaEntry, FindsNothingInAnImageTooLargeForVoting) {
  testing::internal::CaptureStderr();
  const Arguments a = {.height = 1, .width = 32767};
  EXPECT_EQ(call(std::vector<jint>(32767, 9), a), (std::vector<jint>{0, 10922, 0}));
  EXPECT_EQ(testing::internal::GetCapturedStderr(),
            "In CircularVoting::compute\n   Warning: image is too large, no centers\n");
}

// Bytes in use on the heap.
std::size_t inUse() {
  const struct mallinfo2 info = mallinfo2();
  return info.uordblks + info.hblkhd;
}

TEST_F(JavaEntry, KeepsTwoImagesOfEveryCallAsIntended) {
  if (addressSanitizer) GTEST_SKIP() << "the sanitizer has an allocator of its own";
  const Arguments a = {.height = 1000, .width = 1500, .maxRadius = 1};
  const std::vector<jint> black(1'500'000);
  call(black, a);
  const std::size_t before = inUse();
  call(black, a);
  const std::size_t kept = inUse() - before;
  EXPECT_GE(kept, 3'000'000U);
  EXPECT_LT(kept, 3'020'000U);
}

// An image is three blocks of the heap: the object, the owner of its pixels, and the pixels,
// rounded up to their alignment. The heap adds 8 bytes to each and rounds up to 16.
std::size_t bytesOfImage(std::size_t pixels) {
  constexpr std::size_t kAlignment = 64;
  constexpr std::size_t kHeap = 8 + 15;
  return sizeof(image<unsigned char>) + sizeof(ArrayData) + pixels + 2 * kAlignment + 3 * kHeap;
}

TEST_F(JavaEntry, KeepsNoMoreThanTheTwoImagesOf2000Calls) {
  if (addressSanitizer) GTEST_SKIP() << "the sanitizer has an allocator of its own";
  std::vector<std::vector<jint>> first;
  std::size_t before = 0;
  std::size_t minKept = 0;
  std::size_t maxKept = 0;
  for (int i = -100; i < 2000; ++i) {  // the C library keeps some for later in the first calls
    if (i == 0) before = inUse();
    const int k = (i + 100) % 20;
    const Arguments a = {.height = 40 + k, .width = 60 - k, .maxRadius = 4 + k % 5};
    const std::vector<jint> found = call(discs(a, 2, static_cast<unsigned>(k)), a);
    machine = {};
    if (first.size() < 20) {
      first.push_back(found);
    } else {
      EXPECT_EQ(found, first[static_cast<std::size_t>(k)]) << i;
    }
    if (i < 0) continue;
    const auto pixels = static_cast<std::size_t>(a.height * a.width);
    minKept += 2 * pixels;
    maxKept += 2 * bytesOfImage(pixels);
  }
  const std::size_t kept = inUse() - before;
  EXPECT_GE(kept, minKept);
  EXPECT_LE(kept, maxKept);
}

}  // namespace
}  // namespace orva::test
