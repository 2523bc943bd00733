#include "orva/image/image.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <initializer_list>
#include <iostream>
#include <limits>
#include <new>
#include <optional>
#include <vector>

#include "orva/image/bad_alloc.h"
#include "orva/image/min_max.h"
#include "orva/image/pixel_memory.h"
#include "orva/image/pixel_traits.h"
#include "orva/image/truncate.h"
#include "orva/util/cpu_path.h"
#include "orva/util/parallel_for.h"

namespace orva {
namespace {

// The product modulo 2^32.
int wrappedProduct(std::initializer_list<int> sizes) {
  std::uint32_t product = 1;
  for (const int size : sizes) product *= static_cast<std::uint32_t>(size);
  return static_cast<int>(product);
}

// The product, if it fits an int.
std::optional<int> exactProduct(std::initializer_list<int> sizes) {
  if (std::find(sizes.begin(), sizes.end(), 0) != sizes.end()) return 0;
  std::int64_t product = 1;
  for (const int size : sizes) {
    product *= size;
    if (product != static_cast<int>(product)) return std::nullopt;
  }
  return static_cast<int>(product);
}

int clampedLast(int last, int size) { return std::min(last, size - 1); }

// floor(i * from / to) for a target position i below to.
int sourceIndex(int i, int from, int to) { return static_cast<int>(std::int64_t{i} * from / to); }

// The first of the smallest or of the largest pixels. Equal numbers may differ in the sign of 0,
// colours of equal luminance in their components.
template <bool kMin, class T>
T firstExtreme(const T* pixels, std::ptrdiff_t count) {
  return kMin ? *std::min_element(pixels, pixels + count)
              : *std::max_element(pixels, pixels + count);
}

template <bool kMin>
float firstExtreme(const float* pixels, std::ptrdiff_t count) {
  const MinMax all = findMinMax(pixels, count);
  if (all.hasNan) return firstExtreme<kMin, float>(pixels, count);
  const float v = kMin ? all.min : all.max;
  return v == 0.0F ? *std::find(pixels, pixels + count, v) : v;
}

template <bool kMin>
GenericRgb<unsigned char> firstExtreme(const GenericRgb<unsigned char>* pixels,
                                       std::ptrdiff_t count) {
  constexpr std::ptrdiff_t kBlock = 1024;
  float bright[kBlock];
  float best = luminance(pixels[0]);
  std::ptrdiff_t at = 0;
  for (std::ptrdiff_t i = 0; i < count; i += kBlock) {
    const std::ptrdiff_t n = std::min(kBlock, count - i);
    float* to = bright;
    onWidestPath([=] {
      for (std::ptrdiff_t k = 0; k < n; ++k) to[k] = luminance(pixels[i + k]);
    });
    const MinMax some = findMinMax(bright, n);
    const float v = kMin ? some.min : some.max;
    if (kMin ? v < best : best < v) {
      best = v;
      at = i + (std::find(bright, bright + n, v) - bright);
    }
  }
  return pixels[at];
}

constinit thread_local bool outOfMemoryThrows = false;

}  // namespace

int round_double(double v) {
  const int t = truncateTo<int>(v);
  return v - t >= 0.5 && t < std::numeric_limits<int>::max() ? t + 1 : t;
}

BadAllocScope::BadAllocScope(bool throws) : before_(outOfMemoryThrows) {
  outOfMemoryThrows = throws;
}

BadAllocScope::~BadAllocScope() { outOfMemoryThrows = before_; }

bool throwsBadAlloc() { return outOfMemoryThrows; }

void out_of_memory() {
  if (outOfMemoryThrows) throw std::bad_alloc();
  std::cerr << "Error: out of memory\n";
  std::exit(1);
}

ArrayData::~ArrayData() { deletePixelMemory(block_); }

Image::Image(int x, int y, int z, int c, int t)
    : nx_(std::max(x, 0)),
      ny_(std::max(y, 0)),
      nframes_(wrappedProduct({z, c, t})),
      frameSize_(wrappedProduct({x, y})),
      npix_(wrappedProduct({x, y, z, c, t})),
      nc_(std::max(c, 0)),
      nt_(std::max(t, 0)),
      nz_(std::max(z, 0)),
      volumeSize_(wrappedProduct({x, y, z})),
      timepointSize_(wrappedProduct({x, y, z, c})) {}

bool Image::equalSize(const Image& other) const {
  return nx_ == other.nx_ && ny_ == other.ny_ && nframes_ == other.nframes_;
}

Image* Image::reset(Image*& p, Image* q) {
  if (p != q) {
    delete p;
    p = q;
  }
  return p;
}

std::vector<bool> Image::interior(int nx, int ny, int nz) {
  const int count = exactProduct({nx, ny, nz}).value_or(0);
  if (count <= 0) return {};
  std::vector<bool> inside =
      exitOnBadAlloc([count] { return std::vector<bool>(static_cast<std::size_t>(count), true); });
  const auto clear = [&](std::ptrdiff_t x, std::ptrdiff_t y, std::ptrdiff_t z) {
    inside[static_cast<std::size_t>(x + nx * (y + ny * z))] = false;
  };
  for (int z = 0; z < nz; ++z) {
    if (nz != 1 && (z == 0 || z == nz - 1)) {
      for (int y = 0; y < ny; ++y) {
        for (int x = 0; x < nx; ++x) clear(x, y, z);
      }
    }
    for (int x = 0; x < nx; ++x) {
      clear(x, 0, z);
      clear(x, ny - 1, z);
    }
    for (int y = 0; y < ny; ++y) {
      clear(0, y, z);
      clear(nx - 1, y, z);
    }
  }
  return inside;
}

std::vector<bool> Image::interior() const { return interior(nx_, ny_, nframes_); }

template <class T>
image<T>::image(int x, int y, int z, int c, int t)
    : Image(x, y, z, c, t), pixelSize_(sizeof(T)), shared_(newData()) {
  const std::optional<int> count = exactProduct({x, y, z, c, t});
  allocate(count.value_or(-1), true);
}

template <class T>
image<T>::image(Uninitialized /*tag*/, int x, int y, int z, int c, int t)
    : Image(x, y, z, c, t), pixelSize_(sizeof(T)), shared_(newData()) {
  const std::optional<int> count = exactProduct({x, y, z, c, t});
  allocate(count.value_or(-1), false);
}

template <class T>
void image<T>::allocate(int count, bool zero) {
  if (count < 0) out_of_memory();
  if (count == 0) return;
  shared_->block_ = newPixelMemory(static_cast<std::size_t>(count) * sizeof(T), zero);
  if (shared_->block_ == nullptr) out_of_memory();
  data_ = reinterpret_cast<T*>(shared_->block_);
}

template <class T>
image<T>::image(const image& other)
    : Image(other), pixelSize_(other.pixelSize_), shared_(other.shared_), data_(other.data_) {
  shared_->ref();
}

template <class T>
image<T>& image<T>::operator=(const image& other) {
  other.shared_->ref();  // first, so that self-assignment keeps the pixels alive
  if (shared_->deref()) deleteData(shared_);
  Image::operator=(other);
  pixelSize_ = other.pixelSize_;
  shared_ = other.shared_;
  data_ = other.data_;
  return *this;
}

template <class T>
image<T>::~image() {
  if (shared_->deref()) deleteData(shared_);
}

template <class T>
ArrayData* image<T>::newData() {
  return exitOnBadAlloc([] { return new ArrayData; });
}

template <class T>
void image<T>::deleteData(ArrayData*& d) {
  delete d;
  d = nullptr;
}

template <class T>
image<T>* image<T>::copy() const {
  return new image(*this);
}

template <class T>
image<T>* image<T>::roi(const Point3D& p1, const Point3D& p2) const {
  const int x0 = std::max<int>(p1.x, 0);
  const int y0 = std::max<int>(p1.y, 0);
  const int z0 = std::max<int>(p1.z, 0);
  const int x1 = clampedLast(p2.x, nx());
  const int y1 = clampedLast(p2.y, ny());
  const int z1 = clampedLast(p2.z, nframes());
  if (x0 > x1 || y0 > y1 || z0 > z1) return nullptr;
  auto* box = new image(Uninitialized{}, x1 - x0 + 1, y1 - y0 + 1, z1 - z0 + 1, 1, 1);
  T* to = box->data_;
  for (int z = z0; z <= z1; ++z) {
    for (int y = y0; y <= y1; ++y) {
      to = std::copy_n(data_ + at(x0, y, z, 0, 0), box->nx(), to);
    }
  }
  return box;
}

// A one-time-point image of the given sizes with the pixels from index `first` on.
template <class T>
image<T>* image<T>::copyOfRun(int first, int x, int y, int z, int c) const {
  auto* result = new image(Uninitialized{}, x, y, z, c, 1);
  std::copy_n(data_ + first, result->npix(), result->data_);
  return result;
}

template <class T>
image<T>* image<T>::clone() const {
  auto* result = new image(Uninitialized{}, nx(), ny(), nz(), nc(), nt());
  std::copy_n(data_, result->npix(), result->data_);
  return result;
}

template <class T>
image<T>* image<T>::frame(int f) const {
  if (isNull() || f < 0 || f >= nframes()) return nullptr;
  return copyOfRun(f * nx() * ny(), nx(), ny(), 1, 1);
}

template <class T>
image<T>* image<T>::channel(int c, int t) const {
  if (isNull() || c < 0 || c >= nc() || t < 0 || t >= nt()) return nullptr;
  return copyOfRun((t * nc() + c) * volumeSize(), nx(), ny(), nz(), 1);
}

template <class T>
image<T>* image<T>::timepoint(int t) const {
  if (isNull() || t < 0 || t >= nt()) return nullptr;
  return copyOfRun(t * timepointSize(), nx(), ny(), nz(), nc());
}

template <class T>
image<T>* image<T>::scale(int sx, int sy, int sz) const {
  if (sx < 0) sx = nx();
  if (sy < 0) sy = ny();
  if (sz < 0) sz = nframes();
  auto* result = new image(sx, sy, sz, 1, 1);
  if (isNull() || result->isNull()) return result;
  auto columns = exitOnBadAlloc([sx] { return std::vector<int>(static_cast<std::size_t>(sx)); });
  for (int x = 0; x < sx; ++x) columns[static_cast<std::size_t>(x)] = sourceIndex(x, nx(), sx);
  const auto fillRows = [&](std::ptrdiff_t begin, std::ptrdiff_t end) {
    const T* previous = nullptr;  // source of the previous row
    for (std::ptrdiff_t i = begin; i < end; ++i) {
      const int y = static_cast<int>(i % sy);
      const int z = static_cast<int>(i / sy);
      const T* row = data_ + at(0, sourceIndex(y, ny(), sy), sourceIndex(z, nframes(), sz), 0, 0);
      T* to = result->data_ + i * sx;
      if (row == previous) {
        std::copy_n(to - sx, sx, to);
      } else {
        for (int x = 0; x < sx; ++x) to[x] = row[columns[static_cast<std::size_t>(x)]];
      }
      previous = row;
    }
  };
  parallelParts(rowParts(sx, std::ptrdiff_t{sy} * sz), fillRows, Interruption::Off);
  return result;
}

template <class T>
image<T> image<T>::duplicate() const {
  image result(Uninitialized{}, nx(), ny(), nz(), nc(), nt());
  std::copy_n(data_, result.npix(), result.data_);
  return result;
}

template <class T>
void* image<T>::data() const {
  return data_;
}

template <class T>
int image<T>::format() const {
  return formatOf<T>();
}

template <class T>
int image<T>::pixelSize() const {
  return pixelSize_;
}

template <class T>
int image<T>::at(int x, int y, int z, int c, int t) const {
  return x + y * nx() + z * frameSize() + c * volumeSize() + t * timepointSize();
}

template <class T>
float image<T>::pixel(int x, int y, int z, int c, int t) const {
  return image::pixel(at(x, y, z, c, t));
}

template <class T>
float image<T>::pixel(int x, int y, int z) const {
  return image::pixel(x + y * nx() + z * frameSize());
}

template <class T>
float image<T>::pixel(int x, int y) const {
  return image::pixel(x + y * nx());
}

template <class T>
float image<T>::pixel(const Point& p) const {
  return image::pixel(p.x, p.y);
}

template <class T>
float image<T>::pixel(int index) const {
  return pixelToFloat(data_[index]);
}

template <class T>
void image<T>::setPixel(int index, float v) {
  data_[index] = pixelFromFloat<T>(v);
}

template <class T>
void image<T>::setPixel(int x, int y, float v) {
  image::setPixel(x + y * nx(), v);
}

template <class T>
void image<T>::setPixel(int x, int y, int z, float v) {
  image::setPixel(x + y * nx() + z * frameSize(), v);
}

template <class T>
void image<T>::setPixel(int x, int y, int z, int c, float v) {
  image::setPixel(x + y * nx() + z * frameSize() + c * volumeSize(), v);
}

template <class T>
void image<T>::setPixel(int x, int y, int z, int c, int t, float v) {
  image::setPixel(at(x, y, z, c, t), v);
}

template <class T>
float image<T>::fmin() const {
  return pixelToFloat(min());
}

template <class T>
float image<T>::fmax() const {
  return pixelToFloat(max());
}

template <class T>
T image<T>::min() const {
  return isNull() ? T{} : firstExtreme<true>(data_, npix());
}

template <class T>
T image<T>::max() const {
  return isNull() ? T{} : firstExtreme<false>(data_, npix());
}

template class image<unsigned char>;
template class image<short>;
template class image<int>;
template class image<unsigned int>;
template class image<float>;
template class image<GenericRgb<unsigned char>>;

}  // namespace orva
