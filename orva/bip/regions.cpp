#include <algorithm>
#include <cstddef>
#include <iostream>
#include <limits>
#include <optional>
#include <vector>

#include "orva/bip/bip.h"
#include "orva/bip/connected_components.h"
#include "orva/bip/flood_fill.h"
#include "orva/bip/silent.h"
#include "orva/image/bad_alloc.h"
#include "orva/image/uninitialized_image.h"

namespace orva::bip {
namespace {

constexpr int kMaxRegions = std::numeric_limits<short>::max() + 1;

// The memory that labelling may take beside the label image: half of that, or 8 KiB.
std::size_t scratchBytes(const image<short>& labels) {
  constexpr std::size_t kMin = 8192;
  return std::max(static_cast<std::size_t>(labels.npix()) * sizeof(short) / 2, kMin);
}

// Labels the pixels equal to `value`, or all for a negative one.
template <class Pixel>
std::ptrdiff_t flood(const Pixel* in, int value, int reach, NeighborhoodType type,
                     image<short>& labels) {
  std::transform(in, in + labels.npix(), labels.pixels(),
                 [value](Pixel v) { return value < 0 || v == value ? kUnvisited : kBackground; });
  return FloodFill(in, labels, reach, type, scratchBytes(labels)).run(kMaxRegions);
}

silent::Regions withCount(const image<short>& labels, std::ptrdiff_t found) {
  return {labels, static_cast<int>(std::min<std::ptrdiff_t>(found, kMaxRegions)),
          found <= kMaxRegions};
}

silent::Regions labelled(const image<unsigned char>& in, int value, int reach,
                         NeighborhoodType type) {
  image<short> labels = uninitializedImage<short>(in.nx(), in.ny(), in.nz(), 1, 1);
  std::optional<std::ptrdiff_t> found;
  if (value > 255) {
    std::fill_n(labels.pixels(), labels.npix(), kBackground);
    found = 0;
  } else if (reach == 1 && (type == NEIGHBORHOOD_4 || type == NEIGHBORHOOD_8)) {
    const Connectivity by = type == NEIGHBORHOOD_4 ? Connectivity::Axes : Connectivity::Box;
    const std::size_t bytes = scratchBytes(labels);
    found = value < 0 ? labelAreas(in.pixels(), by, kMaxRegions, bytes, labels)
                      : labelObjects(in.pixels(), static_cast<unsigned char>(value), by,
                                     kMaxRegions, bytes, labels);
  }
  if (!found) found = flood(in.pixels(), value, reach, type, labels);
  return withCount(labels, *found);
}

silent::Regions labelled(const image<short>& in) {
  image<short> labels = uninitializedImage<short>(in.nx(), in.ny(), in.nz(), 1, 1);
  std::optional<std::ptrdiff_t> found =
      labelAreas(in.pixels(), Connectivity::Box, kMaxRegions, scratchBytes(labels), labels);
  constexpr int kAll = -1;
  if (!found) found = flood(in.pixels(), kAll, 1, NEIGHBORHOOD_8, labels);
  return withCount(labels, *found);
}

image<short> reported(const silent::Regions& result, int& n) {
  n = result.n;
  if (!result.areAllLabelled) reportIgnoredRegions();
  return result.labels;
}

}  // namespace

void reportIgnoredRegions() {
  std::cerr << "In bip::regions\n"
            << "   Warning: more than 32768 regions, the rest are ignored\n";
}

silent::Regions silent::regions(const image<unsigned char>& in, int value, int reach,
                                NeighborhoodType type) {
  if (in.isNull()) return {image<short>(0, 1, 1, 1, 1)};
  return exitOnBadAlloc([&] { return labelled(in, value, reach, type); });
}

image<short> regions(const image<unsigned char>& in, int& n, int value, int reach,
                     NeighborhoodType type) {
  if (in.isNull()) return image<short>(0, 1, 1, 1, 1);
  return reported(silent::regions(in, value, reach, type), n);
}

image<short> regions(const image<unsigned char>& in) {
  int n = 0;
  return regions(in, n, 255, 1, NEIGHBORHOOD_4);
}

image<short> regions(const image<short>& in, int& n) {
  if (in.isNull()) return image<short>(0, 1, 1, 1, 1);
  return reported(exitOnBadAlloc([&] { return labelled(in); }), n);
}

image<short> regions(const image<short>& in) {
  int n = 0;
  return regions(in, n);
}

int regionNumber(const image<short>& labels) {
  return labels.isNull() ? 0 : std::max<int>(labels.max(), -1) + 1;
}

void relabel(image<short>& labels) {
  const int n = regionNumber(labels);
  auto numbers =
      exitOnBadAlloc([n] { return std::vector<short>(static_cast<std::size_t>(n), kBackground); });
  short* first = labels.pixels();
  short* last = first + labels.npix();
  std::for_each(first, last, [&](short k) {
    if (k >= 0) numbers[static_cast<std::size_t>(k)] = 0;
  });
  short next = 0;
  for (short& number : numbers) {
    if (number == 0) number = next++;
  }
  std::for_each(first, last, [&](short& k) {
    if (k >= 0) k = numbers[static_cast<std::size_t>(k)];
  });
}

}  // namespace orva::bip
