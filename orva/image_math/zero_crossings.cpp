#include <cstddef>
#include <numeric>
#include <vector>

#include "orva/bip/bip.h"
#include "orva/image/bad_alloc.h"
#include "orva/image_math/image_math.h"
#include "orva/util/cpu_path.h"
#include "orva/util/parallel_for.h"

namespace orva::image_math {
namespace {

// The edges of the image thresholded at 0.
image<unsigned char> signEdges(const Image& img) { return bip::edge(bip::threshold(img, 0.0F)); }

// The edge pixels of plane 0, column by column.
std::vector<Point> pointsOf(const image<unsigned char>& edges) {
  // Two passes in memory order: count the points of each column, then place each point.
  const std::ptrdiff_t nx = edges.nx();
  std::vector<std::ptrdiff_t> places(static_cast<std::size_t>(nx));
  std::ptrdiff_t* place = places.data();
  for (int y = 0; y < edges.ny(); ++y) {
    const unsigned char* row = edges.pixels() + y * nx;
    onWidestPath([=] {
      ORVA_INDEPENDENT
      for (std::ptrdiff_t x = 0; x < nx; ++x) place[x] += row[x] > 254 ? 1 : 0;
    });
  }
  std::vector<Point> points(
      static_cast<std::size_t>(std::accumulate(places.begin(), places.end(), std::ptrdiff_t{0})));
  std::exclusive_scan(places.begin(), places.end(), places.begin(), std::ptrdiff_t{0});
  for (int y = 0; y < edges.ny(); ++y) {
    const unsigned char* row = edges.pixels() + y * nx;
    for (int x = 0; x < nx; ++x) {
      if (row[x] > 254) points[static_cast<std::size_t>(place[x]++)] = Point(x, y);
    }
  }
  return points;
}

}  // namespace

std::vector<Point> findZeros(const Image& img) {
  return exitOnBadAlloc([&] { return pointsOf(signEdges(img)); });
}

std::vector<Point> findZeros(const Image& a, const Image& b) {
  if (!a.equalSize(b)) return {};
  const image<unsigned char> edgesA = signEdges(a);
  const image<unsigned char> edgesB = signEdges(b);
  if (!edgesA.equalSize(edgesB)) return {};  // sizes below zero whose product is positive
  unsigned char* both = edgesA.pixels();
  const unsigned char* others = edgesB.pixels();
  parallelPixels(edgesA.npix(), [=](std::ptrdiff_t begin, std::ptrdiff_t end) {
    onWidestPath([=] {
      ORVA_INDEPENDENT
      for (std::ptrdiff_t i = begin; i < end; ++i) both[i] &= others[i];
    });
  });
  return exitOnBadAlloc([&] { return pointsOf(edgesA); });
}

}  // namespace orva::image_math
