// Arithmetic of points: 16-bit coordinates, truncation, division.
#include "orva/image/points.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <csignal>
#include <cstdint>
#include <limits>
#include <type_traits>

#include "tests/support/images.h"

namespace orva::test {
namespace {

constexpr int kLow = std::numeric_limits<std::int16_t>::min();
constexpr int kHigh = std::numeric_limits<std::int16_t>::max();

static_assert(!std::is_polymorphic_v<Point> && !std::is_polymorphic_v<Point3D>);
static_assert(sizeof(Point) == 4 && sizeof(Point3D) == 6);
static_assert(std::is_same_v<decltype(Point::x), std::int16_t> &&
              std::is_same_v<decltype(Point3D::z), std::int16_t>);

// A point from three coordinates, of which Point takes two; and back, the third 0 for Point.
template <class P>
P pointOf(int x, int y, int z) {
  if constexpr (std::is_same_v<P, Point>) {
    return Point(x, y);
  } else {
    return Point3D(x, y, z);
  }
}

std::array<int, 3> coordinatesOf(const Point& p) { return {p.x, p.y, 0}; }
std::array<int, 3> coordinatesOf(const Point3D& p) { return {p.x, p.y, p.z}; }

template <class P>
class Points : public testing::Test {
 protected:
  static P random(Random& random) {
    const bool wide = randomInt(random, 0, 1) == 1;
    const int low = wide ? kLow : -20;
    const int high = wide ? kHigh : 20;
    return pointOf<P>(randomInt(random, low, high), randomInt(random, low, high),
                      randomInt(random, low, high));
  }

  // The point whose coordinates are f of those of p, cut to 16 bits.
  template <class F>
  static P each(const P& p, F f) {
    const auto c = coordinatesOf(p);
    const auto cut = [&f](int v) {
      return static_cast<int>(static_cast<std::int16_t>(static_cast<std::int64_t>(f(v)) & 0xFFFF));
    };
    return pointOf<P>(cut(c[0]), cut(c[1]), cut(c[2]));
  }
};
using PointTypes = testing::Types<Point, Point3D>;
TYPED_TEST_SUITE(Points, PointTypes);

TYPED_TEST(Points, StartAtTheOrigin) {
  EXPECT_EQ(coordinatesOf(TypeParam()), (std::array<int, 3>{0, 0, 0}));
}

TYPED_TEST(Points, WrapAt16Bits) {
  using P = TypeParam;
  const auto all = [](int v) { return pointOf<P>(v, v, v); };
  EXPECT_EQ(all(32768), all(-32768));
  EXPECT_EQ(all(65537), all(1));
  EXPECT_EQ(all(-32769), all(32767));
  EXPECT_EQ(all(32767) + 1, all(-32768));
  EXPECT_EQ(all(30000) + all(30000), all(-5536));
  EXPECT_EQ(all(-30000) - all(30000), all(5536));
  EXPECT_EQ(all(300) * 300, all(90000 - 65536));
  EXPECT_EQ(all(30000) * 2.0, all(-5536));
  EXPECT_EQ(all(30000) + 10000.5, all(40000 - 65536));
  EXPECT_EQ(-all(-32768), all(-32768));
  EXPECT_EQ(all(-32768) / -1, all(-32768));
  EXPECT_EQ(all(32767) / 0.5, all(-2));
  EXPECT_EQ(all(1) + std::numeric_limits<int>::max(), all(0));
}

TYPED_TEST(Points, AddAndSubtractCoordinateWise) {
  Random random(51);
  for (int round = 0; round < 300; ++round) {
    const TypeParam p = this->random(random);
    const TypeParam q = this->random(random);
    const auto a = coordinatesOf(p);
    const auto b = coordinatesOf(q);
    const TypeParam sum = pointOf<TypeParam>(a[0] + b[0], a[1] + b[1], a[2] + b[2]);
    const TypeParam difference = pointOf<TypeParam>(a[0] - b[0], a[1] - b[1], a[2] - b[2]);
    TypeParam r = p;
    EXPECT_EQ(p + q, sum);
    EXPECT_EQ(&(r += q), &r);
    EXPECT_EQ(r, sum);
    r = p;
    EXPECT_EQ(p - q, difference);
    EXPECT_EQ(&(r -= q), &r);
    EXPECT_EQ(r, difference);
    EXPECT_EQ(-p, this->each(p, [](int c) { return -c; }));
  }
}

TYPED_TEST(Points, CombineWithAnInt) {
  Random random(52);
  for (int round = 0; round < 300; ++round) {
    const TypeParam p = this->random(random);
    const int n =
        round % 2 == 0 ? randomInt(random, -50, 50) : randomInt(random, -2000000, 2000000);
    const TypeParam plus = this->each(p, [n](int c) { return std::int64_t{c} + n; });
    const TypeParam minus = this->each(p, [n](int c) { return std::int64_t{c} - n; });
    const TypeParam times = this->each(p, [n](int c) { return std::int64_t{c} * n; });
    EXPECT_EQ(p + n, plus);
    EXPECT_EQ(n + p, plus);
    EXPECT_EQ(p - n, minus);
    EXPECT_EQ(p * n, times);
    EXPECT_EQ(n * p, times);
    TypeParam r = p;
    EXPECT_EQ(&(r += n), &r);
    EXPECT_EQ(r, plus);
    r = p;
    EXPECT_EQ(&(r -= n), &r);
    EXPECT_EQ(r, minus);
    r = p;
    EXPECT_EQ(&(r *= n), &r);
    EXPECT_EQ(r, times);
  }
}

TYPED_TEST(Points, CombineWithADoubleTruncatedTowardZero) {
  Random random(53);
  std::uniform_real_distribution<double> value(-60.0, 60.0);
  for (int round = 0; round < 300; ++round) {
    const TypeParam p = this->random(random);
    const double v = value(random);
    const TypeParam plus = this->each(p, [v](int c) { return std::trunc(c + v); });
    const TypeParam minus = this->each(p, [v](int c) { return std::trunc(c - v); });
    const TypeParam times = this->each(p, [v](int c) { return std::trunc(c * v); });
    const TypeParam over = this->each(p, [v](int c) { return std::trunc(c / v); });
    EXPECT_EQ(p + v, plus);
    EXPECT_EQ(v + p, plus);
    EXPECT_EQ(p - v, minus);
    EXPECT_EQ(p * v, times);
    EXPECT_EQ(v * p, times);
    EXPECT_EQ(p / v, over);
    TypeParam r = p;
    EXPECT_EQ(&(r += v), &r);
    EXPECT_EQ(r, plus);
    r = p;
    EXPECT_EQ(&(r -= v), &r);
    EXPECT_EQ(r, minus);
    r = p;
    EXPECT_EQ(&(r *= v), &r);
    EXPECT_EQ(r, times);
    r = p;
    EXPECT_EQ(&(r /= v), &r);
    EXPECT_EQ(r, over);
  }
}

TYPED_TEST(Points, ChangeInPlaceAlsoWhereTheyAreTemporaries) {
  const auto p = [] { return pointOf<TypeParam>(8, -7, 5); };
  const TypeParam one = pointOf<TypeParam>(1, 1, 1);
  EXPECT_EQ(p() += one, pointOf<TypeParam>(9, -6, 6));
  EXPECT_EQ(p() -= one, pointOf<TypeParam>(7, -8, 4));
  EXPECT_EQ(p() += 2, pointOf<TypeParam>(10, -5, 7));
  EXPECT_EQ(p() -= 2, pointOf<TypeParam>(6, -9, 3));
  EXPECT_EQ(p() *= 2, pointOf<TypeParam>(16, -14, 10));
  EXPECT_EQ(p() /= 2, pointOf<TypeParam>(4, -3, 2));
  EXPECT_EQ(p() += 0.5, pointOf<TypeParam>(8, -6, 5));
  EXPECT_EQ(p() -= 0.5, pointOf<TypeParam>(7, -7, 4));
  EXPECT_EQ(p() *= 0.5, pointOf<TypeParam>(4, -3, 2));
  EXPECT_EQ(p() /= 0.5, pointOf<TypeParam>(16, -14, 10));
  EXPECT_EQ((pointOf<TypeParam>(5, 5, 5) /= 65537), pointOf<TypeParam>(5, 5, 5));
}

TYPED_TEST(Points, ChangeInPlaceByNamedMembers) {
  TypeParam p = pointOf<TypeParam>(8, -7, 5);
  const TypeParam one = pointOf<TypeParam>(1, 1, 1);
  EXPECT_EQ(&p.operator+=(one), &p);
  EXPECT_EQ(p, pointOf<TypeParam>(9, -6, 6));
  EXPECT_EQ(&p.operator-=(one), &p);
  EXPECT_EQ(p, pointOf<TypeParam>(8, -7, 5));
  EXPECT_EQ(p.operator+=(2), pointOf<TypeParam>(10, -5, 7));
  EXPECT_EQ(p.operator-=(4), pointOf<TypeParam>(6, -9, 3));
  EXPECT_EQ(p.operator*=(2), pointOf<TypeParam>(12, -18, 6));
  EXPECT_EQ(p.operator/=(2), pointOf<TypeParam>(6, -9, 3));
  EXPECT_EQ(p.operator+=(1.0), pointOf<TypeParam>(7, -8, 4));
  EXPECT_EQ(p.operator-=(1.0), pointOf<TypeParam>(6, -9, 3));
  EXPECT_EQ(p.operator*=(0.5), pointOf<TypeParam>(3, -4, 1));
  EXPECT_EQ(p.operator/=(0.5), pointOf<TypeParam>(6, -8, 2));
}

TYPED_TEST(Points, NumberMinusPointBeingPointMinusNumberIsIntended) {
  Random random(54);
  for (int round = 0; round < 100; ++round) {
    const TypeParam p = this->random(random);
    const int n = randomInt(random, -1000, 1000);
    EXPECT_EQ(n - p, this->each(p, [n](int c) { return c - n; }));
    const double v = n + 0.75;
    EXPECT_EQ(v - p, this->each(p, [v](int c) { return std::trunc(c - v); }));
  }
}

TEST(Point, NumberMinusPointBeingPointMinusNumberIsIntended) {
  EXPECT_EQ(10 - Point(3, 4), Point(-7, -6));
  EXPECT_EQ(10.0 - Point(3, 4), Point(-7, -6));
}

TEST(Point, TruncatesTowardZero) {
  EXPECT_EQ(Point(7, -7) / 2, Point(3, -3));
  EXPECT_EQ(Point(7, -7) / 2.0, Point(3, -3));
  EXPECT_EQ(Point(1, 1) + 0.9, Point(1, 1));
  EXPECT_EQ(Point(-1, -1) + 0.5, Point(0, 0));
  EXPECT_EQ(Point(3, -3) * 0.5, Point(1, -1));
}

TYPED_TEST(Points, DivideByAnIntTowardZero) {
  Random random(55);
  for (int round = 0; round < 300; ++round) {
    const TypeParam p = this->random(random);
    int n = round % 2 == 0 ? randomInt(random, -9, 9) : randomInt(random, -200000, 200000);
    if ((n & 0xFFFF) == 0) n = 7;
    EXPECT_EQ(p / n, this->each(p, [n](int c) { return c / n; })) << n;
    const int low = static_cast<std::int16_t>(n & 0xFFFF);
    TypeParam r = p;
    EXPECT_EQ(&(r /= n), &r);
    EXPECT_EQ(r, this->each(p, [low](int c) { return c / low; })) << n;
  }
}

TEST(PointDivision, CutsTheDivisorTo16BitsOnlyInPlaceAsIsIntended) {
  Point p(5, 5);
  p /= 65537;
  EXPECT_EQ(p, Point(5, 5));
  EXPECT_EQ(Point(5, 5) / 65537, Point(0, 0));
  Point3D q(8, -8, 9);
  q /= -65534;  // 2 in 16 bits
  EXPECT_EQ(q, Point3D(4, -4, 4));
  EXPECT_EQ(Point3D(8, -8, 9) / -65534, Point3D(0, 0, 0));
  EXPECT_EQ(Point(5, 5) / 65536, Point(0, 0));
}

TYPED_TEST(Points, DivisionByZeroEndsTheProcess) {
  const TypeParam p = pointOf<TypeParam>(1, 2, 3);
  TypeParam r = p;
  const auto message = testing::Eq("Warning: divided by 0\n");
  EXPECT_EXIT(p / 0, testing::ExitedWithCode(1), message);
  EXPECT_EXIT(p / 0.0, testing::ExitedWithCode(1), message);
  EXPECT_EXIT(p / -0.0, testing::ExitedWithCode(1), message);
  EXPECT_EXIT(r /= 0, testing::ExitedWithCode(1), message);
  EXPECT_EXIT(r /= 0.0, testing::ExitedWithCode(1), message);
}

TYPED_TEST(Points, InPlaceDivisionByAMultipleOf65536TrapsAsIntended) {
  TypeParam r = pointOf<TypeParam>(5, 5, 5);
  const auto divide = [&r] {
    std::signal(SIGFPE, SIG_DFL);
    r /= 65536;
  };
  EXPECT_EXIT(divide(), testing::KilledBySignal(SIGFPE), testing::Eq(""));
}

TYPED_TEST(Points, AreEqualWhenAllCoordinatesAre) {
  const TypeParam p = pointOf<TypeParam>(1, 2, 3);
  EXPECT_TRUE(p == pointOf<TypeParam>(1, 2, 3));
  EXPECT_FALSE(p != pointOf<TypeParam>(1, 2, 3));
  EXPECT_FALSE(p == pointOf<TypeParam>(0, 2, 3));
  EXPECT_TRUE(p != pointOf<TypeParam>(0, 2, 3));
  EXPECT_TRUE(p != pointOf<TypeParam>(1, 0, 3));
  EXPECT_TRUE(Point3D(1, 2, 3) != Point3D(1, 2, 0));
  EXPECT_FALSE(Point3D(1, 2, 3) == Point3D(1, 2, 0));
}

TEST(Point, IsOrderedByXThenY) {
  EXPECT_TRUE(Point(1, 9) < Point(2, 0));
  EXPECT_FALSE(Point(2, 0) < Point(1, 9));
  EXPECT_TRUE(Point(1, 8) < Point(1, 9));
  EXPECT_FALSE(Point(1, 9) < Point(1, 8));
  EXPECT_FALSE(Point(1, 9) < Point(1, 9));
  EXPECT_TRUE(Point(-1, 5) < Point(0, -5));
}

TYPED_TEST(Points, DoublesPast32BitsSaturateBeforeTheLowBitsAreKept) {
  const TypeParam p = pointOf<TypeParam>(1, 1, 1);
  EXPECT_EQ(p * 1e30, pointOf<TypeParam>(-1, -1, -1));
  EXPECT_EQ(p * -1e30, pointOf<TypeParam>(0, 0, 0));
  EXPECT_EQ(p + std::numeric_limits<double>::quiet_NaN(), pointOf<TypeParam>(0, 0, 0));
}

}  // namespace
}  // namespace orva::test
