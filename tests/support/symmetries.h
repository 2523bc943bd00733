// Images flipped, transposed, with their planes reordered, or framed by a background.
#ifndef ORVA_TESTS_SUPPORT_SYMMETRIES_H
#define ORVA_TESTS_SUPPORT_SYMMETRIES_H

#include <algorithm>
#include <numeric>
#include <utility>
#include <vector>

#include "tests/support/images.h"

namespace orva::test {

inline Shape shapeOf(const Image& img) {
  return {img.nx(), img.ny(), img.nz(), img.nc(), img.nt()};
}

// An image of the given shape whose pixel (x, y, frame) is source(x, y, frame).
template <class T, class Source>
image<T> composed(const Shape& shape, const Source& source) {
  image<T> result = blank<T>(shape);
  for (int f = 0, i = 0; f < result.nframes(); ++f) {
    for (int y = 0; y < result.ny(); ++y) {
      for (int x = 0; x < result.nx(); ++x, ++i) result.pixels()[i] = source(x, y, f);
    }
  }
  return result;
}

// Pixel (x, y) of a frame.
template <class T>
T pixelAt(const image<T>& img, int x, int y, int frame) {
  return img.pixels()[x + img.nx() * y + std::ptrdiff_t{img.frameSize()} * frame];
}

// Every frame with its columns in reverse order.
template <class T>
image<T> flipped(const image<T>& img) {
  return composed<T>(shapeOf(img),
                     [&](int x, int y, int f) { return pixelAt(img, img.nx() - 1 - x, y, f); });
}

// Every frame with its rows in reverse order.
template <class T>
image<T> upsideDown(const image<T>& img) {
  return composed<T>(shapeOf(img),
                     [&](int x, int y, int f) { return pixelAt(img, x, img.ny() - 1 - y, f); });
}

// Every frame with rows and columns exchanged.
template <class T>
image<T> transposed(const image<T>& img) {
  Shape shape = shapeOf(img);
  std::swap(shape.nx, shape.ny);
  return composed<T>(shape, [&](int x, int y, int f) { return pixelAt(img, y, x, f); });
}

// Frame i of the result is frame order[i].
template <class T>
image<T> reordered(const image<T>& img, const std::vector<int>& order) {
  return composed<T>(shapeOf(img), [&](int x, int y, int f) {
    return pixelAt(img, x, y, order.at(static_cast<std::size_t>(f)));
  });
}

inline std::vector<int> shuffledFrames(Random& random, const Image& img) {
  std::vector<int> order(static_cast<std::size_t>(img.nframes()));
  std::iota(order.begin(), order.end(), 0);
  std::shuffle(order.begin(), order.end(), random);
  return order;
}

// All frames in reverse order.
template <class T>
image<T> backToFront(const image<T>& img) {
  return composed<T>(
      shapeOf(img), [&](int x, int y, int f) { return pixelAt(img, x, y, img.nframes() - 1 - f); });
}

// A volume with columns and planes exchanged.
template <class T>
image<T> transposedXZ(const image<T>& img) {
  Shape shape = shapeOf(img);
  std::swap(shape.nx, shape.nz);
  return composed<T>(shape, [&](int x, int y, int f) { return pixelAt(img, f, y, x); });
}

// The symmetries of an operation without a preferred direction, each its own inverse.
template <class T>
using Symmetry = image<T> (*)(const image<T>&);
template <class T>
std::vector<Symmetry<T>> planeSymmetries() {
  return {flipped<T>, upsideDown<T>, transposed<T>};
}
template <class T>
std::vector<Symmetry<T>> volumeSymmetries() {
  return {flipped<T>, upsideDown<T>, transposed<T>, backToFront<T>};
}

// The image on a background of `value`, with its first pixel at (dx, dy) of every frame.
template <class T>
image<T> framed(const image<T>& img, int nx, int ny, int dx, int dy, T value) {
  Shape shape = shapeOf(img);
  shape.nx = nx;
  shape.ny = ny;
  return composed<T>(shape, [&](int x, int y, int f) {
    const bool inside = x >= dx && y >= dy && x < dx + img.nx() && y < dy + img.ny();
    return inside ? pixelAt(img, x - dx, y - dy, f) : value;
  });
}

// Undoes framed().
template <class T>
image<T> unframed(const image<T>& img, int nx, int ny, int dx, int dy) {
  Shape shape = shapeOf(img);
  shape.nx = nx;
  shape.ny = ny;
  return composed<T>(shape, [&](int x, int y, int f) { return pixelAt(img, x + dx, y + dy, f); });
}

}  // namespace orva::test

#endif
