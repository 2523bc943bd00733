// Objects that are drawn are found where they were drawn.
#include <gtest/gtest.h>

#include <cmath>
#include <cstddef>
#include <vector>

#include "orva/detect/detect.h"
#include "tests/detect/scenes.h"

namespace orva::test {
namespace {

using detect::FindSettings;
using detect::Object;
using detect::Polarity;

// Differences of found and drawn discs over several images.
struct Errors {
  int discs = 0;
  int found = 0;
  int surplus = 0;
  double x = 0;
  double y = 0;
  double squares = 0;
  double radius = 0;
};

Errors errorsOf(double smallest, double largest, double noise, int images, double sign = 1.0) {
  Errors e;
  for (int i = 0; i < images; ++i) {
    std::vector<Ellipse> discs =
        discGrid(520, 480, smallest, largest, static_cast<unsigned>(100 + i));
    for (Ellipse& d : discs) d.grey *= sign;
    image<float> img = drawn(520, 480, discs, 200.0);
    addNoise(img, noise, static_cast<unsigned>(i));
    const std::vector<Object> objects = found(img);
    for (const Ellipse& d : discs) {
      ++e.discs;
      const Object* o = nearest(objects, d.x, d.y);
      if (o == nullptr || std::hypot(o->x - d.x, o->y - d.y) > d.a / 2) continue;
      ++e.found;
      e.x += o->x - d.x;
      e.y += o->y - d.y;
      e.squares += (o->x - d.x) * (o->x - d.x) + (o->y - d.y) * (o->y - d.y);
      e.radius += std::fabs(o->radius - d.a);
    }
    e.surplus += static_cast<int>(objects.size());
  }
  e.surplus -= e.found;
  e.x /= e.found;
  e.y /= e.found;
  e.radius /= e.found;
  e.squares = std::sqrt(e.squares / e.found);
  return e;
}

void expectPrecise(const Errors& e) {
  EXPECT_GE(e.found, e.discs * 98 / 100);
  EXPECT_LE(e.surplus, e.discs / 50);
  EXPECT_LE(std::fabs(e.x), 0.05);
  EXPECT_LE(std::fabs(e.y), 0.05);
  EXPECT_LE(e.squares, 0.25);
  EXPECT_LE(e.radius, 0.5);
}

TEST(Discs, SmallOnesAreFoundToASubPixel) {
  const Errors e = errorsOf(6, 12, 8.0, 2);
  EXPECT_GE(e.discs, 300);
  expectPrecise(e);
}

TEST(Discs, LargeOnesAreFoundToASubPixel) { expectPrecise(errorsOf(13, 30, 8.0, 4)); }

TEST(Discs, MixedSizesAreFoundTogether) { expectPrecise(errorsOf(6, 30, 8.0, 6)); }

TEST(Discs, DarkOnesAreFoundAsBrightOnes) { expectPrecise(errorsOf(8, 16, 8.0, 2, -1.0)); }

TEST(Discs, ObjectsTurnWithTheImage) {
  const std::vector<Ellipse> discs = discGrid(413, 376, 6, 20, 7);
  image<float> img = drawn(413, 376, discs);
  addNoise(img, 6.0, 3);
  const int nx = img.nx();
  const int ny = img.ny();
  const float right = static_cast<float>(nx - 1);
  const float bottom = static_cast<float>(ny - 1);
  image<float> half(nx, ny, 1, 1, 1);
  image<float> quarter(ny, nx, 1, 1, 1);
  for (int y = 0; y < ny; ++y) {
    for (int x = 0; x < nx; ++x) {
      const float v = img.pixels()[y * nx + x];
      half.pixels()[(ny - 1 - y) * nx + nx - 1 - x] = v;
      quarter.pixels()[x * ny + ny - 1 - y] = v;
    }
  }
  const std::vector<Object> upright = found(img);
  const std::vector<Object> turnedHalf = found(half);
  const std::vector<Object> turnedQuarter = found(quarter);
  ASSERT_GE(upright.size(), discs.size() * 95 / 100);
  std::size_t same = 0;
  for (const Object& o : upright) {
    const Object* h = nearest(turnedHalf, right - o.x, bottom - o.y);
    const Object* q = nearest(turnedQuarter, bottom - o.y, o.x);
    if (h != nullptr && std::hypot(h->x - (right - o.x), h->y - (bottom - o.y)) <= 0.25) ++same;
    if (q != nullptr && std::hypot(q->x - (bottom - o.y), q->y - o.x) <= 0.25) ++same;
  }
  EXPECT_GE(same, upright.size() * 2 * 98 / 100);
}

TEST(Discs, ElongatedOnesAreOneObjectEach) {
  std::vector<Ellipse> ellipses;
  for (int i = 0; i < 24; ++i) {
    ellipses.push_back({40.0 + 60 * (i % 6), 40.0 + 60 * (i / 6), 20, 10, 0.26 * i, 100.0});
  }
  image<float> img = drawn(380, 260, ellipses);
  addNoise(img, 5.0, 11);
  const std::vector<Object> objects = found(img);
  EXPECT_EQ(objects.size(), ellipses.size());
  for (const Ellipse& e : ellipses) {
    const Object* o = nearest(objects, e.x, e.y);
    ASSERT_NE(o, nullptr);
    EXPECT_LE(std::hypot(o->x - e.x, o->y - e.y), 0.5) << e.angle;
    EXPECT_NEAR(o->radius, std::sqrt(e.a * e.b), 0.7) << e.angle;
  }
}

TEST(Discs, CutOnesAreFoundAtTheBorder) {
  // Half discs at the four sides, and whole ones so that there is a context.
  const std::vector<Ellipse> cut{disc(-0.5, 100, 15), disc(199.5, 60, 15), disc(100, -0.5, 15),
                                 disc(60, 199.5, 15)};
  std::vector<Ellipse> all = cut;
  all.push_back(disc(60, 60, 15));
  all.push_back(disc(140, 130, 15));
  image<float> img = drawn(200, 200, all);
  addNoise(img, 4.0, 5);
  const std::vector<Object> objects = found(img);
  EXPECT_EQ(objects.size(), all.size());
  const double centroid = 4 * 15 / (3 * 3.14159265);  // of a half disc, from its straight side
  for (const Ellipse& e : cut) {
    const double x = e.x < 0 ? e.x + centroid : e.x > 199 ? e.x - centroid : e.x;
    const double y = e.y < 0 ? e.y + centroid : e.y > 199 ? e.y - centroid : e.y;
    const Object* o = nearest(objects, x, y);
    ASSERT_NE(o, nullptr);
    EXPECT_LE(std::hypot(o->x - x, o->y - y), 1.0) << e.x << ' ' << e.y;
  }
}

TEST(Discs, TouchingOnesStayApart) {
  image<float> img =
      drawn(220, 120, {disc(50, 60, 14), disc(79, 60, 14), disc(150, 50, 14), disc(170, 70, 14)});
  addNoise(img, 4.0, 6);
  EXPECT_EQ(found(img).size(), 4U);
}

TEST(Discs, EqualSceneGivesEqualBits) {
  image<float> img = drawn(260, 240, discGrid(260, 240, 6, 14, 3));
  addNoise(img, 6.0, 4);
  const std::vector<Object> first = found(img);
  const std::vector<Object> second = found(img);
  ASSERT_EQ(first.size(), second.size());
  for (std::size_t i = 0; i < first.size(); ++i) {
    EXPECT_EQ(first[i].x, second[i].x);
    EXPECT_EQ(first[i].y, second[i].y);
    EXPECT_EQ(first[i].radius, second[i].radius);
    EXPECT_EQ(first[i].score, second[i].score);
  }
}

TEST(Discs, ScoresDescend) {
  image<float> img = drawn(260, 240, discGrid(260, 240, 6, 14, 3));
  addNoise(img, 20.0, 4);
  const std::vector<Object> objects = found(img);
  ASSERT_FALSE(objects.empty());
  for (std::size_t i = 1; i < objects.size(); ++i) {
    EXPECT_GE(objects[i - 1].score, objects[i].score);
  }
}

}  // namespace
}  // namespace orva::test
