#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <utility>
#include <vector>

#include "orva/bip/bip.h"
#include "orva/image/bad_alloc.h"
#include "orva/util/cpu_path.h"

namespace orva::bip {
namespace {

using Byte = unsigned char;

// In a stack the whole of plane 0 is border; this is intended.
bool hasInterior(const Image& img) { return img.nframes() == 1 && img.nx() > 2 && img.ny() > 2; }

// `count` zeros, with one more on either side, aligned to a cache line: a vector access across two
// lines takes twice as long.
template <class T>
class Line {
 public:
  explicit Line(std::ptrdiff_t count)
      : memory_(exitOnBadAlloc(
            [count] { return std::vector<T>(static_cast<std::size_t>(count) + 2 * kBeside); })) {}
  T* begin() {
    const std::size_t past = reinterpret_cast<std::uintptr_t>(memory_.data()) / sizeof(T) % kBeside;
    return memory_.data() + (kBeside - past);
  }

 private:
  static constexpr std::size_t kBeside = 64 / sizeof(T);
  std::vector<T> memory_;
};

// Each pixel of plane 0 that is `changing` becomes 255 where join() of all pixels of its box is
// 255, and else 0. Pixels outside the plane count as 0, and so do its border pixels unless
// `withBorder` is set.
//
// No row is copied: the next row needs this one only through their join, which is computed before
// either changes.
template <class Join>
void changeMask(image<Byte>& mask, Byte changing, bool withBorder, Join join) {
  const std::ptrdiff_t nx = mask.nx();
  const int ny = mask.ny();
  if (nx < 1) return;
  Line<Byte> blackRow(nx);
  Line<Byte> firstPairs(nx);
  Line<Byte> secondPairs(nx);
  Line<Byte> marks(nx);
  Byte* above = firstPairs.begin();   // the row joined with that above it
  Byte* below = secondPairs.begin();  // the row joined with that below it
  Byte* columns = marks.begin();      // whether all three joined are 255
  const Byte* black = blackRow.begin();
  const auto rowAt = [=, &mask](int y) {
    const bool counts = withBorder ? y < ny : y > 0 && y < ny - 1;
    return counts ? mask.pixels() + y * nx : black;
  };
  for (int y = 0; y < ny; ++y) {
    const Byte* row = rowAt(y);
    const Byte* next = rowAt(y + 1);
    Byte* to = mask.pixels() + y * nx;
    onWidestPath([=] {
      ORVA_INDEPENDENT
      for (std::ptrdiff_t x = 0; x < nx; ++x) {
        below[x] = join(row[x], next[x]);
        columns[x] = join(above[x], below[x]) == 255 ? 255 : 0;
      }
      if (!withBorder) columns[0] = columns[nx - 1] = 0;
      ORVA_INDEPENDENT
      for (std::ptrdiff_t x = 0; x < nx; ++x) {
        const Byte box = join(join(columns[x - 1], columns[x]), columns[x + 1]);
        to[x] = to[x] == changing ? box : to[x];
      }
    });
    std::swap(above, below);
  }
}

// All bits set, or none.
short maskOf(bool holds) { return static_cast<short>(holds ? -1 : 0); }

}  // namespace

void erode(image<short>& labels) {
  if (labels.isNull()) return;
  const bool interior = hasInterior(labels);
  const std::ptrdiff_t nx = labels.nx();
  // Rows as they were before the erosion.
  Line<short> rowAbove(nx);
  Line<short> rowItself(nx);
  Line<short> marks(nx);
  short* above = rowAbove.begin();
  short* row = rowItself.begin();
  short* columns = marks.begin();  // whether the three pixels of a column are equal
  for (int y = 0; y < labels.ny(); ++y) {
    short* to = labels.pixels() + y * nx;
    std::swap(above, row);
    std::copy_n(to, nx, row);
    const bool isBorder = !interior || y == 0 || y == labels.ny() - 1;
    const short* below = isBorder ? to : to + nx;
    onWidestPath([=] {
      ORVA_INDEPENDENT
      for (std::ptrdiff_t x = 0; x < nx; ++x) {
        columns[x] = static_cast<short>(maskOf(above[x] == row[x]) & maskOf(below[x] == row[x]));
      }
      if (isBorder) std::fill_n(columns, nx, short{0});
      ORVA_INDEPENDENT
      for (std::ptrdiff_t x = 0; x < nx; ++x) {
        const int alike = maskOf(row[x - 1] == row[x]) & maskOf(row[x + 1] == row[x]) &
                          columns[x - 1] & columns[x] & columns[x + 1];
        to[x] = static_cast<short>(row[x] | (maskOf(row[x] >= 0) & ~alike));  // -1 has all bits
      }
    });
  }
}

void erode(image<Byte>& mask) {
  if (mask.isNull()) return;
  if (mask.nframes() == 1) {
    changeMask(mask, 255, true, [](Byte a, Byte b) { return std::min(a, b); });
  } else {
    const std::ptrdiff_t plane = std::ptrdiff_t{mask.nx()} * mask.ny();
    std::replace(mask.pixels(), mask.pixels() + plane, Byte{255}, Byte{0});
  }
}

void dilate(image<Byte>& mask) {
  if (mask.isNull() || !hasInterior(mask)) return;
  changeMask(mask, 0, false, [](Byte a, Byte b) { return std::max(a, b); });
}

}  // namespace orva::bip
