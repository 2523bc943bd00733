#include <gtest/gtest.h>
#include <sys/resource.h>

#include <cmath>
#include <cstdlib>
#include <limits>
#include <memory>
#include <new>

#include "orva/scalespace/scalespace.h"
#include "tests/support/images.h"
#include "tests/support/reference/scalespace.h"
#include "tests/support/sanitizer.h"
#include "tests/support/special_values.h"

namespace orva::test {
namespace {

reference::Kernel kernelOf(float sigma, int order) {
  reference::Kernel kernel;
  const std::unique_ptr<float[]> taps(scalespace::gaussianKernel(sigma, kernel.radius, order));
  kernel.taps.assign(taps.get(), taps.get() + 2 * kernel.radius + 1);
  return kernel;
}

TEST(Dog, OrderZeroIsTheNormalisingConstant) {
  const float c0 = static_cast<float>(std::sqrt(1.0 / (4.0 * 6.2831854)));
  EXPECT_EQ(scalespace::dog(0, 2.0F), std::vector<float>{c0});
}

TEST(Dog, LowOrdersHaveTheirClosedForms) {
  const float sigma = 2.0F;
  const float c0 = scalespace::dog(0, sigma)[0];
  EXPECT_EQ(scalespace::dog(1, sigma), (std::vector<float>{0, -c0 / 4}));
  EXPECT_EQ(scalespace::dog(2, sigma), (std::vector<float>{-c0 / 4, 0, c0 / 16}));
  EXPECT_EQ(scalespace::dog(3, sigma), (std::vector<float>{0, 3 * c0 / 16, 0, -c0 / 64}));
}

TEST(DogMatchesReference, ForRandomSigmas) {
  Random random(1);
  for (int round = 0; round < 2000; ++round) {
    const float sigma = randomSigma(random, 0.05F, 60.0F);
    const int order = round % 8;
    EXPECT_EQ(scalespace::dog(order, sigma), reference::dog(order, sigma))
        << sigma << " order " << order;
  }
}

TEST(Dog, ANegativeOrderCountsAsZero) {
  EXPECT_EQ(scalespace::dog(-3, 1.5F), scalespace::dog(0, 1.5F));
}

TEST(Polyval, SumsPowersFromTheLowest) {
  EXPECT_EQ(scalespace::polyval({}, 3.0F), 0.0F);
  EXPECT_EQ(scalespace::polyval({7.0F}, 3.0F), 7.0F);
  EXPECT_EQ(scalespace::polyval({1.0F, 2.0F, 3.0F}, 2.0F), 17.0F);
  EXPECT_EQ(scalespace::polyval({1.0F, 2.0F, 3.0F}, -2.0F), 9.0F);
}

TEST(Polyval, AddsInSinglePrecisionFromTheLowest) {
  // Each 1 is lost beside 2^25; added together first they would not be.
  EXPECT_EQ(scalespace::polyval({33554432.0F, 1.0F, 1.0F, 1.0F, 1.0F}, 1.0F), 33554432.0F);
}

TEST(PolyvalMatchesReference, ForRandomCoefficients) {
  Random random(2);
  for (int round = 0; round < 500; ++round) {
    std::vector<float> c(static_cast<std::size_t>(randomInt(random, 0, 7)));
    for (float& v : c) v = randomPixel<float>(random);
    const float x = randomSigma(random, -9.0F, 9.0F);
    EXPECT_EQ(scalespace::polyval(c, x), reference::polyval(c, x));
  }
}

TEST(GaussianKernel, RadiusIsFourSigmaRoundedDownAndNeverBelowTwo) {
  const struct {
    float sigma;
    int radius;
  } rows[] = {{0.5F, 2}, {0.7F, 2},   {0.7499F, 2}, {0.75F, 3},  {0.99F, 3},
              {1.0F, 4}, {1.24F, 4},  {1.25F, 5},   {10.0F, 40}, {12.4F, 49},
              {0.0F, 2}, {1e-30F, 2}, {-1.0F, 2},   {-50.0F, 2}};
  for (const auto& row : rows) {
    for (int order = 0; order <= 3; ++order)
      EXPECT_EQ(kernelOf(row.sigma, order).radius, row.radius) << row.sigma << " order " << order;
  }
}

TEST(GaussianKernel, ARadiusThatIsNoNumberOrDoesNotFitIsTwo) {
  for (const float sigma : {kInfinity, -kInfinity, kNaN, 536870912.0F, 1e9F, 1e20F, 3e38F, -3e38F})
    EXPECT_EQ(kernelOf(sigma, 0).radius, 2) << sigma;
}

TEST(GaussianKernel, EvenOrdersAreSymmetricOddOnesAntisymmetric) {
  for (const float sigma : {0.4F, 1.0F, 1.7F, 6.3F}) {
    for (int order = 0; order <= 3; ++order) {
      const reference::Kernel kernel = kernelOf(sigma, order);
      const float sign = order % 2 == 0 ? 1.0F : -1.0F;
      for (int k = 0; k <= kernel.radius; ++k)
        EXPECT_EQ(kernel.tap(-k), sign * kernel.tap(k)) << sigma << " order " << order;
    }
    EXPECT_EQ(kernelOf(sigma, 1).tap(0), 0.0F);
    EXPECT_LT(kernelOf(sigma, 1).tap(1), 0.0F);
    EXPECT_LT(kernelOf(sigma, 2).tap(0), 0.0F);
  }
}

TEST(GaussianKernel, IsSampledAndNotNormalised) {
  for (const float sigma : {0.3F, 1.0F, 3.0F}) {
    const reference::Kernel kernel = kernelOf(sigma, 0);
    EXPECT_EQ(kernel.tap(0), scalespace::dog(0, sigma)[0]);
  }
  // At 0.3 the samples are too sparse: they sum to 1.3.
  float sum = 0;
  for (const float tap : kernelOf(0.3F, 0).taps) sum += tap;
  EXPECT_NEAR(sum, 1.3399, 1e-3);
}

TEST(GaussianKernel, SumsToNearlyOne) {
  for (const float sigma : {1.0F, 2.0F, 5.5F, 20.0F}) {
    double sum = 0;
    for (const float tap : kernelOf(sigma, 0).taps) sum += static_cast<double>(tap);
    EXPECT_NEAR(sum, 1.0, 2e-4) << sigma;
  }
}

TEST(GaussianKernelMatchesReference, ForRandomSigmas) {
  Random random(3);
  for (int round = 0; round < 600; ++round) {
    const float sigma = randomSigma(random, 0.05F, round % 3 == 0 ? 50.0F : 3.0F);
    const int order = round % 6;
    const reference::Kernel expected = reference::gaussianKernel(sigma, order);
    EXPECT_EQ(kernelOf(sigma, order).taps, expected.taps) << sigma << " order " << order;
  }
}

TEST(GaussianKernel, SquaresPast32BitsAreRight) {
  const reference::Kernel kernel = kernelOf(12000.0F, 0);
  ASSERT_EQ(kernel.radius, 48000);
  EXPECT_EQ(kernel.taps, reference::gaussianKernel(12000.0F, 0).taps);
  for (int k = 1; k <= kernel.radius; ++k) ASSERT_LE(kernel.tap(k), kernel.tap(k - 1)) << k;
  EXPECT_NEAR(kernel.tap(48000) / kernel.tap(0), std::exp(-8.0), 1e-8);
}

TEST(GaussianKernel, OfANegativeSigmaHasTapsOfItsMagnitudeAndRadiusTwo) {
  const reference::Kernel negative = kernelOf(-5.0F, 1);
  const reference::Kernel positive = kernelOf(5.0F, 1);
  ASSERT_EQ(negative.radius, 2);
  for (int k = -2; k <= 2; ++k) EXPECT_EQ(negative.tap(k), positive.tap(k));
}

TEST(GaussianKernel, DegenerateSigmasGiveFiveTapsOfTheirDefinition) {
  for (const float sigma : {0.0F, 1e-30F, 1e-10F, -1e-10F, kInfinity, kNaN, 1e20F}) {
    for (int order = 0; order <= 3; ++order) {
      const std::vector<float> expected = reference::gaussianKernel(sigma, order).taps;
      const std::vector<float> taps = kernelOf(sigma, order).taps;
      ASSERT_EQ(taps.size(), 5U);
      for (std::size_t i = 0; i < 5; ++i) {
        EXPECT_EQ(std::isnan(taps[i]), std::isnan(expected[i])) << sigma << " order " << order;
        if (!std::isnan(expected[i])) {
          EXPECT_EQ(taps[i], expected[i]) << sigma << " order " << order;
        }
      }
    }
  }
}

TEST(GaussianKernelDeathTest, ATapCountPast32BitsEndsTheProcessWithoutAllocating) {
  // 2^28 is the first sigma whose tap count does not fit; below 2^29 the radius still does.
  for (const float sigma : {268435456.0F, 4e8F, 536870848.0F}) {
    const auto make = [sigma] {
      std::set_new_handler([] { std::_Exit(7); });
      int radius = 0;
      delete[] scalespace::gaussianKernel(sigma, radius, 0);
    };
    EXPECT_EXIT(make(), testing::ExitedWithCode(1), "^Out of memory\n$") << sigma;
  }
}

TEST(GaussianKernelDeathTest, NoMemoryForTheTapsEndsTheProcess) {
  if (addressSanitizer) GTEST_SKIP() << "the sanitizer answers failed allocations";
  const auto make = [] {
    constexpr rlim_t kLimit = rlim_t{1} << 30;
    const rlimit limit{kLimit, kLimit};
    if (setrlimit(RLIMIT_AS, &limit) != 0) std::_Exit(7);
    int radius = 0;
    delete[] scalespace::gaussianKernel(1e8F, radius, 0);
  };
  EXPECT_EXIT(make(), testing::ExitedWithCode(1), "^Out of memory\n$");
}

}  // namespace
}  // namespace orva::test
