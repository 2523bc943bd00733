#include <algorithm>
#include <array>
#include <cstddef>
#include <limits>
#include <vector>

#include "orva/bip/bip.h"

namespace orva::bip {
namespace {

// Index differences to the eight neighbours in the plane, row by row.
std::array<std::ptrdiff_t, 8> neighbourOffsets(int nx) {
  const std::ptrdiff_t row = nx;
  return {-row - 1, -row, -row + 1, -1, 1, row - 1, row, row + 1};
}

// In a stack the whole of plane 0 is border; this is intended.
//
// Sets to `cleared` the pixels of plane 0 that are objects and lie at the border or have a
// neighbour for which differs(neighbour, pixel) holds; all are judged before the first is set.
template <class T, class IsObject, class Differs>
void erodePlane(image<T>& img, T cleared, IsObject isObject, Differs differs) {
  if (img.isNull()) return;
  const auto offsets = neighbourOffsets(img.nx());
  const std::vector<bool> inside = img.interior();
  T* pixels = img.pixels();
  std::vector<std::ptrdiff_t> outer;
  for (std::ptrdiff_t i = 0; i < std::ptrdiff_t{img.nx()} * img.ny(); ++i) {
    if (!isObject(pixels[i])) continue;
    const bool atEdge = !inside[static_cast<std::size_t>(i)] ||
                        std::any_of(offsets.begin(), offsets.end(), [&](std::ptrdiff_t d) {
                          return differs(pixels[i + d], pixels[i]);
                        });
    if (atEdge) outer.push_back(i);
  }
  for (const std::ptrdiff_t i : outer) pixels[i] = cleared;
}

// Edge pixels of plane 0: at most seven of the 3x3 box, the centre counted, equal the centre.
template <class T>
image<unsigned char> edgeOf(const image<T>& img) {
  constexpr int kMostEqual = 7;
  image<unsigned char> edges(img.nx(), img.ny(), 1, 1, 1);
  const std::ptrdiff_t row = img.nx();
  for (std::ptrdiff_t y = 1; y < img.ny() - 1; ++y) {
    for (std::ptrdiff_t i = y * row + 1; i < y * row + row - 1; ++i) {
      const T* centre = img.pixels() + i;
      int equal = 0;
      for (const T* middle : {centre - row, centre, centre + row}) {
        for (std::ptrdiff_t dx = -1; dx <= 1; ++dx) equal += middle[dx] == *centre ? 1 : 0;
      }
      if (equal <= kMostEqual) edges.pixels()[i] = 255;
    }
  }
  return edges;
}

// edgeOf(img) if img has pixels of type T, else the empty image.
template <class T>
image<unsigned char> edgeAs(const Image& img) {
  const auto* typed = dynamic_cast<const image<T>*>(&img);
  return typed != nullptr ? edgeOf(*typed) : image<unsigned char>(0, 1, 1, 1, 1);
}

}  // namespace

void erode(image<short>& labels) {
  erodePlane(
      labels, short{-1}, [](short v) { return v >= 0; }, [](short a, short b) { return a != b; });
}

void erode(image<unsigned char>& mask) {
  erodePlane(
      mask, static_cast<unsigned char>(0), [](unsigned char v) { return v == 255; },
      [](unsigned char a, unsigned char) { return a < 255; });
}

void dilate(image<unsigned char>& mask) {
  if (mask.isNull()) return;
  const auto offsets = neighbourOffsets(mask.nx());
  const std::vector<bool> inside = mask.interior();
  const image<unsigned char> before = mask.duplicate();
  if (before.isNull()) return;  // sizes below zero whose product is positive
  for (std::ptrdiff_t i = 0; i < std::ptrdiff_t{mask.nx()} * mask.ny(); ++i) {
    if (before.pixels()[i] != 255 || !inside[static_cast<std::size_t>(i)]) continue;
    for (const std::ptrdiff_t d : offsets) {
      if (before.pixels()[i + d] == 0) mask.pixels()[i + d] = 255;
    }
  }
}

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
  std::vector<std::vector<Point>> lists(static_cast<std::size_t>(regionNumber(labels)));
  for (int y = 0; y < edges.ny(); ++y) {
    for (int x = 0; x < edges.nx(); ++x) {
      const std::ptrdiff_t i = x + std::ptrdiff_t{y} * edges.nx();
      const short k = labels.pixels()[i];
      if (k >= 0 && edges.pixels()[i] == 255) lists[static_cast<std::size_t>(k)].emplace_back(x, y);
    }
  }
  return lists;
}

void removeInternalStructures(image<unsigned char>& mask) {
  if (mask.isNull()) return;
  constexpr int kLargest = std::numeric_limits<int>::max() - 2;  // leaves room for the padding
  if (std::max({mask.nx(), mask.ny(), mask.nz()}) > kLargest) out_of_memory();
  const int nx = mask.nx();
  const int zOffset = mask.nz() == 1 ? 0 : 1;
  image<unsigned char> padded(nx + 2, mask.ny() + 2, mask.nz() + 2 * zOffset, 1, 1);
  // Row y of plane z of the mask, and its place in the padded image.
  const auto forEachRow = [&](auto copy) {
    for (int z = 0; z < mask.nz(); ++z) {
      for (int y = 0; y < mask.ny(); ++y) {
        const std::ptrdiff_t row = std::ptrdiff_t{z + zOffset} * padded.ny() + y + 1;
        copy(mask.pixels() + (std::ptrdiff_t{z} * mask.ny() + y) * nx,
             padded.pixels() + row * padded.nx() + 1);
      }
    }
  };
  forEachRow([nx](const unsigned char* m, unsigned char* p) { std::copy_n(m, nx, p); });

  int n = 0;
  const image<short> labels = regions(padded, n, 0, 1, NEIGHBORHOOD_4);
  // The frame's region comes first in raster order, and no other has a larger bounding box.
  constexpr short kBackground = 0;
  std::transform(labels.pixels(), labels.pixels() + labels.npix(), padded.pixels(),
                 [](short k) { return static_cast<unsigned char>(k == kBackground ? 0 : 255); });

  forEachRow([nx](unsigned char* m, const unsigned char* p) { std::copy_n(p, nx, m); });
}

}  // namespace orva::bip
