#include <algorithm>
#include <cstddef>
#include <vector>

#include "orva/bip/bip.h"
#include "orva/util/cpu_path.h"

namespace orva::bip {
namespace {

// In a stack the whole of plane 0 is border; this is intended.
bool hasInterior(const Image& img) { return img.nframes() == 1 && img.nx() > 2 && img.ny() > 2; }

// Changes every row of plane 0 from the values that it and the rows beside it had before:
// change(above, row, below, to) with copies of the first two. The rows beside the first and the
// last are null.
template <class T, class Change>
void changeRows(image<T>& img, Change change) {
  const std::ptrdiff_t nx = img.nx();
  if (nx < 1) return;
  std::vector<T> above(static_cast<std::size_t>(nx));
  std::vector<T> row(above.size());
  for (int y = 0; y < img.ny(); ++y) {
    T* to = img.pixels() + y * nx;
    std::swap(above, row);
    std::copy_n(to, nx, row.data());
    change(y > 0 ? above.data() : nullptr, row.data(), y < img.ny() - 1 ? to + nx : nullptr, to);
  }
}

// All bits of a T, or none.
template <class T>
T maskOf(bool holds) {
  return static_cast<T>(holds ? -1 : 0);
}

// Sets to `cleared` the pixels of plane 0 that are objects and lie at the border or have a
// neighbour that differs from them. Answers are masks, which take as many lanes as the pixels:
//   isObject(pixel);
//   mark(above, pixel, below) of a column, for
//   isWhole(row, marks), which tells from what is around them whether a pixel's box is alike.
template <class T, class IsObject, class Mark, class IsWhole>
void erodePlane(image<T>& img, T cleared, IsObject isObject, Mark mark, IsWhole isWhole) {
  if (img.isNull()) return;
  const bool interior = hasInterior(img);
  const std::ptrdiff_t nx = img.nx();
  std::vector<T> columns(static_cast<std::size_t>(nx));
  changeRows(img, [&](const T* above, const T* row, const T* below, T* to) {
    T* marks = columns.data();
    const auto put = [=](std::ptrdiff_t x, T whole) {
      const T outer = static_cast<T>(isObject(row[x]) & ~whole);
      to[x] = static_cast<T>((row[x] & ~outer) | (cleared & outer));
    };
    if (!interior || above == nullptr || below == nullptr) {
      for (std::ptrdiff_t x = 0; x < nx; ++x) put(x, 0);
      return;
    }
    onWidestPath([=] {
#pragma GCC ivdep
      for (std::ptrdiff_t x = 0; x < nx; ++x) marks[x] = mark(above[x], row[x], below[x]);
#pragma GCC ivdep
      for (std::ptrdiff_t x = 1; x < nx - 1; ++x) put(x, isWhole(row + x, marks + x));
    });
    put(0, 0);
    put(nx - 1, 0);
  });
}

}  // namespace

void erode(image<short>& labels) {
  erodePlane(
      labels, short{-1}, [](short v) { return maskOf<short>(v >= 0); },
      [](short a, short v, short b) {
        return static_cast<short>(maskOf<short>(a == v) & maskOf<short>(b == v));
      },
      [](const short* v, const short* alike) {
        return static_cast<short>(maskOf<short>(v[-1] == v[0]) & maskOf<short>(v[1] == v[0]) &
                                  alike[-1] & alike[0] & alike[1]);
      });
}

void erode(image<unsigned char>& mask) {
  using Byte = unsigned char;
  erodePlane(
      mask, Byte{0}, [](Byte v) { return maskOf<Byte>(v == 255); },
      [](Byte a, Byte v, Byte b) { return static_cast<Byte>(a & v & b); },
      [](const Byte*, const Byte* all) {
        return maskOf<Byte>((all[-1] & all[0] & all[1]) == 255);
      });
}

void dilate(image<unsigned char>& mask) {
  if (mask.isNull() || !hasInterior(mask)) return;
  using Byte = unsigned char;
  const std::ptrdiff_t nx = mask.nx();
  std::vector<Byte> columns(static_cast<std::size_t>(nx + 2));  // with one before and one behind
  int y = 0;
  changeRows(mask, [&](const Byte* above, const Byte* row, const Byte* below, Byte* to) {
    // Rows at the border spread nothing; another that spreads stands in for them.
    const Byte* a = y > 1 ? above : nullptr;
    const Byte* b = y > 0 && y < mask.ny() - 1 ? row : nullptr;
    const Byte* c = y < mask.ny() - 2 ? below : nullptr;
    if (b == nullptr) b = c != nullptr ? c : a;
    if (a == nullptr) a = b;
    if (c == nullptr) c = b;
    ++y;
    Byte* marks = columns.data() + 1;
    onWidestPath([=] {
#pragma GCC ivdep
      for (std::ptrdiff_t x = 1; x < nx - 1; ++x) {
        marks[x] = std::max({a[x], b[x], c[x]}) == 255 ? 255 : 0;
      }
#pragma GCC ivdep
      for (std::ptrdiff_t x = 0; x < nx; ++x) {
        const auto any = static_cast<Byte>(marks[x - 1] | marks[x] | marks[x + 1]);
        to[x] = row[x] == 0 ? any : row[x];
      }
    });
  });
}

}  // namespace orva::bip
