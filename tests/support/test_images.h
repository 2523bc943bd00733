// Images with a content for tests: drawn as text, regular patterns, discs, and random labels.
#ifndef ORVA_TESTS_SUPPORT_TEST_IMAGES_H
#define ORVA_TESTS_SUPPORT_TEST_IMAGES_H

#include <algorithm>
#include <string>
#include <vector>

#include "tests/support/images.h"

namespace orva::test {

// '#' is 255, '.' is 0, a digit d stands for the value 10 * d.
inline Mask maskOf(const std::vector<std::string>& rows) {
  Mask mask =
      blank<unsigned char>({static_cast<int>(rows.at(0).size()), static_cast<int>(rows.size())});
  int i = 0;
  for (const std::string& row : rows) {
    for (const char c : row) {
      const int v = c == '#' ? 255 : c == '.' ? 0 : 10 * (c - '0');
      mask.pixels()[i++] = static_cast<unsigned char>(v);
    }
  }
  return mask;
}

// '.' is -1, a digit is its label.
inline image<short> labelsOf(const std::vector<std::string>& rows) {
  image<short> labels =
      blank<short>({static_cast<int>(rows.at(0).size()), static_cast<int>(rows.size())});
  int i = 0;
  for (const std::string& row : rows) {
    for (const char c : row) labels.pixels()[i++] = static_cast<short>(c == '.' ? -1 : c - '0');
  }
  return labels;
}

// Labels -1 .. max, in patches that often touch.
inline image<short> randomLabels(Random& random, const Shape& shape, int max) {
  image<short> labels = blank<short>(shape);
  short current = -1;
  for (int i = 0; i < labels.npix(); ++i) {
    if (randomInt(random, 0, 3) == 0) current = static_cast<short>(randomInt(random, -1, max));
    const bool asAbove = i >= shape.nx && randomInt(random, 0, 2) > 0;
    labels.pixels()[i] = asAbove ? labels.pixels()[i - shape.nx] : current;
  }
  return labels;
}

// Every pixel 255.
inline Mask fullMask(const Shape& shape) {
  Mask mask = blank<unsigned char>(shape);
  std::fill_n(mask.pixels(), mask.npix(), static_cast<unsigned char>(255));
  return mask;
}

// 255 where x + y is even.
inline Mask chessboard(int nx, int ny) {
  image<unsigned char> board = blank<unsigned char>({nx, ny});
  for (int i = 0; i < board.npix(); ++i) {
    board.pixels()[i] = (i % nx + i / nx) % 2 == 0 ? 255 : 0;
  }
  return board;
}

// A path one pixel wide that winds inward, with one pixel between its turns.
inline Mask spiral(int size) {
  Mask mask = blank<unsigned char>({size, size});
  int x = 0;
  int y = 0;
  int left = 0;
  int top = 2;
  int right = size - 1;
  int bottom = size - 1;
  const auto go = [&](int toX, int toY) {
    const int dx = (toX > x) - (toX < x);
    const int dy = (toY > y) - (toY < y);
    mask.pixels()[x + y * size] = 255;
    while (x != toX || y != toY) {
      x += dx;
      y += dy;
      mask.pixels()[x + y * size] = 255;
    }
  };
  for (;;) {
    go(right, y);
    if (y + 2 > bottom) return mask;
    go(x, bottom);
    right -= 2;
    if (x - 2 < left) return mask;
    go(left, y);
    bottom -= 2;
    if (y - 2 < top) return mask;
    go(x, top);
    left += 2;
    top += 2;
    if (x + 2 > right) return mask;
  }
}

// An image of few grey levels, so that differences are often exactly 0.
inline image<float> imageWithTies(Random& random, const Shape& shape) {
  image<float> img = blank<float>(shape);
  std::generate_n(img.pixels(), img.npix(),
                  [&random] { return static_cast<float>(randomInt(random, 0, 2)); });
  return img;
}

// Every pixel times `factor`.
inline image<float> scaled(const image<float>& img, float factor) {
  image<float> result = img.duplicate();
  for (int i = 0; i < img.npix(); ++i) result.pixels()[i] *= factor;
  return result;
}

struct Disc {
  int x;
  int y;
  int radius;
};

// Discs of `inside` on a background of `outside`, in every frame.
template <class T>
image<T> discImage(const Shape& shape, const std::vector<Disc>& discs, float inside,
                   float outside) {
  image<T> img = blank<T>(shape);
  for (int i = 0; i < img.npix(); ++i) {
    const int x = i % img.nx();
    const int y = i / img.nx() % img.ny();
    float v = outside;
    for (const Disc& d : discs) {
      if ((x - d.x) * (x - d.x) + (y - d.y) * (y - d.y) <= d.radius * d.radius) v = inside;
    }
    img.setPixel(i, v);
  }
  return img;
}

inline image<float> oneDisc() { return discImage<float>({40, 36}, {{21, 17, 8}}, 100.0F, 0.0F); }

}  // namespace orva::test

#endif
