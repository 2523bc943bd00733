// Statistics without enough memory.
#include <gtest/gtest.h>

#include <vector>

#include "orva/image_math/image_math.h"
#include "tests/support/images.h"
#include "tests/support/memory_limit.h"

namespace orva::test {
namespace {

template <class Work>
void expect(const char* name, const Work& work) {
  expectMemoryToRunOut(name, {"Error: out of memory\n"}, work);
}

TEST(StatisticsWithoutMemory, EndTheProcess) {
  Random random(611);
  // Of levels from -2e9 to 2e9, which are sorted.
  const auto wide = randomImage<int>(random, {300, 300});
  // Of fewer, which are counted.
  auto narrow = randomImage<float>(random, {300, 300});
  narrow.setPixel(0, 900000.0F);
  const auto signs = randomImage<float>(random, {1000, 800});
  expect("sorted", [&] { image_math::topByPercentage(wide, 0.5F); });
  expect("counted", [&] { image_math::meanOfTopByPercentage(narrow, 0.5F); });
  expect("zeros", [&] { image_math::findZeros(signs); });
  expect("zeros of two", [&] { image_math::findZeros(signs, signs); });
}

}  // namespace
}  // namespace orva::test
