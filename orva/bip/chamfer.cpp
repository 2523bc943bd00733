#include <algorithm>
#include <cstddef>
#include <iostream>
#include <vector>

#include "orva/bip/bip.h"
#include "orva/bip/chamfer_passes.h"
#include "orva/bip/neighbour_box.h"
#include "orva/image/bad_alloc.h"
#include "orva/image/float_conversion.h"
#include "orva/image/uninitialized_image.h"
#include "orva/image_io/image_io.h"
#include "orva/util/cpu_path.h"
#include "orva/util/parallel_for.h"

namespace orva::bip {
namespace {

constexpr float kBackgroundDistance = 0.0F;
constexpr float kBoundaryDistance = 1.0F;
constexpr float kUnreached = 9999.0F;

// Calls visit(first, y, z) for the rows begin .. end - 1 of the first volume, in linear order, with
// the index of the first pixel.
template <class Visit>
void forEachRow(const Image& img, std::ptrdiff_t begin, std::ptrdiff_t end, Visit visit) {
  for (std::ptrdiff_t row = begin; row < end; ++row) {
    visit(row * img.nx(), static_cast<int>(row % img.ny()), static_cast<int>(row / img.ny()));
  }
}

// The rows of the first volume, cut for several threads.
Parts rowsOf(const Image& img) { return rowParts(img.nx(), std::ptrdiff_t{img.ny()} * img.nz()); }

void initFromBytes(const Image& mask, image<float>& distance) {
  const std::ptrdiff_t nx = distance.nx();
  parallelParts(rowsOf(distance), [&](std::ptrdiff_t begin, std::ptrdiff_t end) {
    PixelFloats pixels(mask);
    forEachRow(distance, begin, end, [&](std::ptrdiff_t first, int, int) {
      const float* from = pixels.read(first, nx);
      float* to = distance.pixels() + first;
      onWidestPath([=] {
        ORVA_INDEPENDENT
        for (std::ptrdiff_t x = 0; x < nx; ++x) {
          to[x] = from[x] != 0.0F ? kUnknownDistance : kBackgroundDistance;
        }
      });
    });
  });
}

// The pixels of the first volume as labels.
image<short> labelsOf(const Image& in) {
  if (const auto* own = ownImage<short>(in)) return *own;
  image<short> labels(in.nx(), in.ny(), in.nz(), 1, 1);
  for (int i = 0; i < labels.npix(); ++i) labels.setPixel(i, in.pixel(i));
  return labels;
}

void initRowsFromLabels(const image<short>& labels, std::ptrdiff_t begin, std::ptrdiff_t end,
                        image<float>& distance) {
  const std::ptrdiff_t nx = distance.nx();
  // Whether the three (or nine) pixels of a column of the box are equal.
  std::vector<short> columns(static_cast<std::size_t>(nx));
  forEachRow(distance, begin, end, [&](std::ptrdiff_t first, int y, int z) {
    const short* row = labels.pixels() + first;
    float* to = distance.pixels() + first;
    short* alike = columns.data();
    std::fill(columns.begin(), columns.end(), short{-1});
    forEachRowOfBox(distance, y, z, [&](std::ptrdiff_t other) {
      const short* beside = labels.pixels() + other;
      if (beside == row) return;
      onWidestPath([=] {
        ORVA_INDEPENDENT
        for (std::ptrdiff_t x = 0; x < nx; ++x) {
          alike[x] = static_cast<short>(alike[x] & (beside[x] == row[x] ? -1 : 0));
        }
      });
    });
    const auto put = [=](std::ptrdiff_t x, std::ptrdiff_t left, std::ptrdiff_t right) {
      const bool sameRow = (row[left] == row[x]) & (row[right] == row[x]);
      const bool isWhole = sameRow & ((alike[left] & alike[x] & alike[right]) != 0);
      const float object = isWhole ? kUnknownDistance : kBoundaryDistance;
      to[x] = row[x] < 0 ? kBackgroundDistance : object;
    };
    onWidestPath([=] {
      ORVA_INDEPENDENT
      for (std::ptrdiff_t x = 1; x < nx - 1; ++x) put(x, x - 1, x + 1);
    });
    put(0, 0, std::min(std::ptrdiff_t{1}, nx - 1));
    put(nx - 1, std::max(nx - 2, std::ptrdiff_t{0}), nx - 1);
  });
}

void initFromLabels(const Image& in, image<float>& distance) {
  const image<short> labels = labelsOf(in);
  exitOnBadAlloc([&] {
    parallelParts(rowsOf(distance), [&](std::ptrdiff_t begin, std::ptrdiff_t end) {
      initRowsFromLabels(labels, begin, end, distance);
    });
  });
}

bool anyUnreached(const float* row, std::ptrdiff_t n) {
  int any = 0;
  for (std::ptrdiff_t x = 0; x < n; ++x) any |= row[x] >= kUnreached ? 1 : 0;
  return any != 0;
}

bool anyReached(const float* row, std::ptrdiff_t n) {
  int any = 0;
  for (std::ptrdiff_t x = 0; x < n; ++x) any |= row[x] < kUnreached ? 1 : 0;
  return any != 0;
}

// Pixels that the two passes did not reach, above all the border, take the smallest distance among
// their neighbours plus 1, also along diagonals; this is intended.
void repair(image<float>& distance) {
  constexpr int kRowsPerCheckpoint = 64;
  float* d = distance.pixels();
  const std::ptrdiff_t nx = distance.nx();
  forEachRow(distance, 0, std::ptrdiff_t{distance.ny()} * distance.nz(),
             [&](std::ptrdiff_t first, int y, int z) {
               if (y % kRowsPerCheckpoint == 0) checkpoint();
               bool hasReached = false;
               if (!anyUnreached(d + first, nx)) return;
               // Without a reached neighbour they stay as they are.
               forEachRowOfBox(distance, y, z, [&](std::ptrdiff_t other) {
                 hasReached = hasReached || anyReached(d + other, nx);
               });
               if (!hasReached) return;
               for (std::ptrdiff_t x = 0; x < nx; ++x) {
                 float& own = d[first + x];
                 if (own < kUnreached) continue;
                 anyInBox(distance, static_cast<int>(x), y, z, [&](std::ptrdiff_t j) {
                   own = std::min(own, d[j] + 1.0F);
                   return false;
                 });
               }
             });
}

}  // namespace

image<float> fchamfer(const Image& in) {
  const bool supported = !in.isNull() && (in.format() == BYTE || in.format() == SHORT);
  if (!supported) {
    std::cerr << "In bip::chamfer\n"
              << "   Warning: input is " << (in.isNull() ? "empty" : "not BYTE or SHORT image")
              << ", return null image\n";
    return image<float>(0, 1, 1, 1, 1);
  }
  image<float> distance = uninitializedImage<float>(in.nx(), in.ny(), in.nz(), 1, 1);
  if (distance.isNull()) return distance;  // sizes below zero whose product is positive
  const Step all("distances", 0, 1);
  if (in.format() == BYTE) {
    initFromBytes(in, distance);
  } else {
    initFromLabels(in, distance);
  }
  {
    const Step step("distances", 0.1, 0.5);
    chamferPass(distance, Pass::kForward);
  }
  {
    const Step step("distances", 0.5, 0.9);
    chamferPass(distance, Pass::kBackward);
  }
  repair(distance);
  return distance;
}

image<unsigned char> chamfer(const Image& in, bool invert) {
  image<unsigned char> bytes = image_io::convertToByteImage(fchamfer(in), true);
  if (invert) reverse(bytes);
  return bytes;
}

}  // namespace orva::bip
