#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <type_traits>
#include <vector>

#include "orva/bip/bip.h"
#include "orva/image/bad_alloc.h"
#include "orva/util/cpu_path.h"
#include "orva/util/parallel_for.h"

namespace orva::bip {
namespace {

// An unsigned integer as wide as T, so that vectors of counts and of pixels have equally many
// lanes.
template <class T>
using CountOf =
    std::conditional_t<sizeof(T) == 1, std::uint8_t,
                       std::conditional_t<sizeof(T) == 2, std::uint16_t, std::uint32_t>>;

// Marks the edge pixels of a row: those that at most seven pixels of their 3x3 box, themselves
// included, equal.
template <class T>
void findEdges(const T* row, std::ptrdiff_t stride, std::ptrdiff_t nx, unsigned char* edges) {
  constexpr CountOf<T> kMaxEqual = 7;
  onWidestPath([=] {
    const T* above = row - stride;
    const T* below = row + stride;
    ORVA_INDEPENDENT
    for (std::ptrdiff_t x = 1; x < nx - 1; ++x) {
      const T center = row[x];
      const auto isEqual = [center](T v) { return static_cast<CountOf<T>>(v == center ? 1 : 0); };
      CountOf<T> equal = isEqual(center);  // 0 for a NaN
      equal = static_cast<CountOf<T>>(equal + isEqual(above[x - 1]));
      equal = static_cast<CountOf<T>>(equal + isEqual(above[x]));
      equal = static_cast<CountOf<T>>(equal + isEqual(above[x + 1]));
      equal = static_cast<CountOf<T>>(equal + isEqual(row[x - 1]));
      equal = static_cast<CountOf<T>>(equal + isEqual(row[x + 1]));
      equal = static_cast<CountOf<T>>(equal + isEqual(below[x - 1]));
      equal = static_cast<CountOf<T>>(equal + isEqual(below[x]));
      equal = static_cast<CountOf<T>>(equal + isEqual(below[x + 1]));
      edges[x] = equal <= kMaxEqual ? 255 : 0;
    }
  });
}

template <class T>
image<unsigned char> edgeOf(const image<T>& img) {
  image<unsigned char> edges(img.nx(), img.ny(), 1, 1, 1);
  const std::ptrdiff_t nx = img.nx();
  const std::ptrdiff_t ny = img.ny();
  parallelParts(rowParts(nx, ny), [&](std::ptrdiff_t begin, std::ptrdiff_t end) {
    for (std::ptrdiff_t y = std::max<std::ptrdiff_t>(begin, 1); y < std::min(end, ny - 1); ++y) {
      findEdges(img.pixels() + y * nx, nx, nx, edges.pixels() + y * nx);
    }
  });
  return edges;
}

// edgeOf(img) if img is an image<T>, else the empty image.
template <class T>
image<unsigned char> edgeAs(const Image& img) {
  const auto* typed = dynamic_cast<const image<T>*>(&img);
  return typed != nullptr ? edgeOf(*typed) : image<unsigned char>(0, 1, 1, 1, 1);
}

// Calls visit(k, x, y) for every edge pixel of plane 0 that has a label k >= 0, row by row.
template <class Visit>
void forEachBoundaryPixel(const image<unsigned char>& edges, const image<short>& labels,
                          Visit visit) {
  for (int y = 0; y < edges.ny(); ++y) {
    for (int x = 0; x < edges.nx(); ++x) {
      const std::ptrdiff_t i = x + std::ptrdiff_t{y} * edges.nx();
      const short k = labels.pixels()[i];
      if (k >= 0 && edges.pixels()[i] == 255) visit(static_cast<std::size_t>(k), x, y);
    }
  }
}

// The edge pixels of every region, in lists without spare capacity.
std::vector<std::vector<Point>> boundaryLists(const image<unsigned char>& edges,
                                              const image<short>& labels) {
  const auto regions = static_cast<std::size_t>(regionNumber(labels));
  std::vector<std::size_t> counts(regions);
  forEachBoundaryPixel(edges, labels, [&](std::size_t k, int, int) { ++counts[k]; });
  std::vector<std::vector<Point>> lists(regions);
  for (std::size_t k = 0; k < regions; ++k) lists[k].reserve(counts[k]);
  forEachBoundaryPixel(edges, labels,
                       [&](std::size_t k, int x, int y) { lists[k].emplace_back(x, y); });
  return lists;
}

}  // namespace

image<unsigned char> edge(const Image& img) {
  const int format = img.isNull() ? -1 : img.format();
  switch (format) {
    case BYTE:
      return edgeAs<unsigned char>(img);
    case INT:
      return edgeAs<int>(img);
    case SHORT:
      return edgeAs<short>(img);
    case FLOAT:
      return edgeAs<float>(img);
    default:
      return image<unsigned char>(0, 1, 1, 1, 1);
  }
}

std::vector<std::vector<Point>> boundaries(const image<short>& labels) {
  const image<unsigned char> edges = edge(labels);
  return exitOnBadAlloc([&] { return boundaryLists(edges, labels); });
}

}  // namespace orva::bip
