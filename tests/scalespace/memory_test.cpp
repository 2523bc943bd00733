// Filters without enough memory.
#include <gtest/gtest.h>

#include <memory>

#include "orva/scalespace/scalespace.h"
#include "tests/support/images.h"
#include "tests/support/memory_limit.h"

namespace orva::test {
namespace {

// The first for pixels, the second for a kernel or a line.
template <class Work>
void expect(const char* name, const Work& work) {
  expectMemoryToRunOut(name, {"Error: out of memory\n", "Out of memory\n"}, work);
}

TEST(FiltersWithoutMemory, EndTheProcess) {
  const image<unsigned char> img = blank<unsigned char>({900, 700});
  expect("gaussian", [&] { scalespace::gaussian(img, 1.0F, 1, 0, 0); });
  expect("smooth", [&] { scalespace::smooth(img, 1.0F, 1.0F); });
  expect("gradient", [&] { scalespace::gradient(img, 1.0F, 1.0F); });
  expect("laplacian", [&] { scalespace::laplacian(img, 1.0F); });
  expect("dXY", [&] { scalespace::dXY(img, 1.0F); });
  expect("pixelwise", [&] { scalespace::angle(img, img); });
  expect("reduce", [&] { std::unique_ptr<Image>(scalespace::reduce(img, 0.5F, 1.0F)).reset(); });
}

TEST(FiltersWithoutMemory, OfFeaturesEndTheProcess) {
  const image<unsigned char> img = blank<unsigned char>({700, 500});
  expect("by Laplacian", [&] { scalespace::features(img, 1.0F, LAPLACIAN_NEGATIVE, 1.0F); });
  expect("by differences", [&] { scalespace::features(img, 1.0F, HESSIAN_MAXIMUM, 1.0F); });
  expect("harmonicCut", [&] { scalespace::harmonicCut(img, 1.0F, true, 1); });
}

// Lines so long that they and their divisors take most of the memory.
TEST(FiltersWithoutMemory, OfLongLinesEndTheProcess) {
  const image<unsigned char> row = blank<unsigned char>({1500000, 1});
  expect("smooth", [&] { scalespace::smooth(row, 1.0F, 1.0F); });
  const image<unsigned char> depth = blank<unsigned char>({1, 1, 1500000});
  expect("frames", [&] { scalespace::gaussian(depth, 1.0F, 0, 0, 1); });
}

TEST(FiltersWithoutMemory, OfLongKernelsEndTheProcess) {
  const image<unsigned char> img = blank<unsigned char>({3, 2});
  expect("gaussian", [&] { scalespace::gaussian(img, 2e5F, 1, 0, 0); });
  expect("smooth", [&] { scalespace::smooth(img, 2e5F, 1.0F); });
}

// Where it would take a day if there were memory.
TEST(FiltersWithoutMemory, OfAnAbsurdOrderEndTheProcess) {
  expectNoMemory("dog", [] { scalespace::dog(2000000, 1.0F); });
  expectNoMemory("gaussianKernel", [] {
    int radius = 0;
    const std::unique_ptr<float[]> taps(scalespace::gaussianKernel(1.0F, radius, 2000000));
  });
}

}  // namespace
}  // namespace orva::test
