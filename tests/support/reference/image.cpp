#include "tests/support/reference/image.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstring>

namespace orva::reference {
namespace {

// v truncated toward zero and held within low .. high; a NaN is 0.
std::int64_t truncated(float v, std::int64_t low, std::int64_t high) {
  if (std::isnan(v)) return 0;
  const double whole = std::trunc(double{v});
  if (whole <= static_cast<double>(low)) return low;
  if (whole >= static_cast<double>(high)) return high;
  return static_cast<std::int64_t>(whole);
}

std::int64_t truncatedTo32(float v) { return truncated(v, -2147483648LL, 2147483647LL); }

unsigned char byteFrom(float v) { return static_cast<unsigned char>(truncatedTo32(v) & 0xFF); }

// A new image of which pixel (x, y, z, c, t) is source(x, y, z, c, t).
template <class T, class F>
std::unique_ptr<image<T>> filled(const test::Shape& s, F source) {
  auto result = std::make_unique<image<T>>(s.nx, s.ny, s.nz, s.nc, s.nt);
  for (int t = 0; t < s.nt; ++t)
    for (int c = 0; c < s.nc; ++c)
      for (int z = 0; z < s.nz; ++z)
        for (int y = 0; y < s.ny; ++y)
          for (int x = 0; x < s.nx; ++x)
            result->pixels()[indexOf(*result, x, y, z, c, t)] = source(x, y, z, c, t);
  return result;
}

// Sample number i of the raw data.
template <class Sample>
Sample sample(const Image& img, int i) {
  Sample v;
  const auto at = static_cast<std::size_t>(i) * sizeof v;
  std::memcpy(&v, static_cast<const unsigned char*>(img.data()) + at, sizeof v);
  return v;
}

template <class Sample>
void copyAsFloat(const Image& img, image<float>& result) {
  for (int i = 0; i < img.npix(); ++i) {
    result.pixels()[i] = static_cast<float>(sample<Sample>(img, i));
  }
}

template <class Sample>
void stretchColour(const Image& img, image<Rgb>& result) {
  image<float> f(img.nx(), img.ny(), img.nframes(), 1, 1);
  for (int i = 0; i < img.npix(); ++i) f.pixels()[i] = img.pixel(i);
  const image<unsigned char> b = reference::toByteImage(f, true);
  for (int i = 0; i < img.npix(); ++i) {
    const float k = static_cast<float>(b.pixels()[i]) / f.pixels()[i];
    const auto component = [&](int n) {
      return byteFrom(k * static_cast<float>(sample<Sample>(img, 3 * i + n)));
    };
    result.pixels()[i] = {component(0), component(1), component(2)};
  }
}

void layOverWhite(const Image& img, image<Rgb>& result) {
  for (int i = 0; i < img.npix(); ++i) {
    const float a = static_cast<float>(sample<unsigned char>(img, 4 * i + 3)) / 255.0F;
    const auto component = [&](int n) {
      const auto c = static_cast<float>(sample<unsigned char>(img, 4 * i + n));
      return byteFrom(c * a + (1.0F - a) * 255.0F);
    };
    result.pixels()[i] = {component(0), component(1), component(2)};
  }
}

template <class T>
bool isLess(T p, T q) {
  if constexpr (std::is_same_v<T, Rgb>) {
    return Typed<T>::toFloat(p) < Typed<T>::toFloat(q);
  } else {
    return p < q;
  }
}

}  // namespace

int indexOf(const Image& img, int x, int y, int z, int c, int t) {
  return x + y * img.nx() + z * img.nx() * img.ny() + c * img.nx() * img.ny() * img.nz() +
         t * img.nx() * img.ny() * img.nz() * img.nc();
}

template <class T>
float Typed<T>::toFloat(T v) {
  if constexpr (std::is_same_v<T, Rgb>) {
    return static_cast<float>(0.072169 * v.c0 + 0.71516 * v.c1 + 0.212671 * v.c2);
  } else {
    return static_cast<float>(v);
  }
}

template <class T>
T Typed<T>::fromFloat(float v) {
  if constexpr (std::is_same_v<T, float>) {
    return v;
  } else if constexpr (std::is_same_v<T, unsigned int>) {
    return static_cast<unsigned int>(truncated(v, 0, 4294967295LL));
  } else if constexpr (std::is_same_v<T, Rgb>) {
    return {byteFrom(v), byteFrom(v), byteFrom(v)};
  } else {
    return static_cast<T>(truncatedTo32(v));
  }
}

template <class T>
T Typed<T>::smallest(const image<T>& img) {
  T best = img.pixels()[0];
  for (int i = 1; i < img.npix(); ++i) {
    if (isLess(img.pixels()[i], best)) best = img.pixels()[i];
  }
  return best;
}

template <class T>
T Typed<T>::largest(const image<T>& img) {
  T best = img.pixels()[0];
  for (int i = 1; i < img.npix(); ++i) {
    if (isLess(best, img.pixels()[i])) best = img.pixels()[i];
  }
  return best;
}

template <class T>
std::unique_ptr<image<T>> Typed<T>::roi(const image<T>& img, const Point3D& p1, const Point3D& p2) {
  const int x0 = std::max<int>(p1.x, 0);
  const int x1 = std::min<int>(p2.x, img.nx() - 1);
  const int y0 = std::max<int>(p1.y, 0);
  const int y1 = std::min<int>(p2.y, img.ny() - 1);
  const int z0 = std::max<int>(p1.z, 0);
  const int z1 = std::min<int>(p2.z, img.nz() * img.nc() * img.nt() - 1);
  if (x0 > x1 || y0 > y1 || z0 > z1) return nullptr;
  return filled<T>({x1 - x0 + 1, y1 - y0 + 1, z1 - z0 + 1}, [&](int x, int y, int z, int, int) {
    return img.pixels()[(x + x0) + (y + y0) * img.nx() + (z + z0) * img.nx() * img.ny()];
  });
}

template <class T>
std::unique_ptr<image<T>> Typed<T>::frame(const image<T>& img, int f) {
  if (img.npix() == 0 || f < 0 || f >= img.nz() * img.nc() * img.nt()) return nullptr;
  return filled<T>({img.nx(), img.ny()}, [&](int x, int y, int, int, int) {
    return img.pixels()[f * img.nx() * img.ny() + x + y * img.nx()];
  });
}

template <class T>
std::unique_ptr<image<T>> Typed<T>::channel(const image<T>& img, int c, int t) {
  if (img.npix() == 0 || c < 0 || c >= img.nc() || t < 0 || t >= img.nt()) return nullptr;
  return filled<T>({img.nx(), img.ny(), img.nz()}, [&](int x, int y, int z, int, int) {
    return img.pixels()[indexOf(img, x, y, z, c, t)];
  });
}

template <class T>
std::unique_ptr<image<T>> Typed<T>::timepoint(const image<T>& img, int t) {
  if (img.npix() == 0 || t < 0 || t >= img.nt()) return nullptr;
  return filled<T>({img.nx(), img.ny(), img.nz(), img.nc()}, [&](int x, int y, int z, int c, int) {
    return img.pixels()[indexOf(img, x, y, z, c, t)];
  });
}

template <class T>
std::unique_ptr<image<T>> Typed<T>::scale(const image<T>& img, int sx, int sy, int sz) {
  const int frames = img.nz() * img.nc() * img.nt();
  if (sx < 0) sx = img.nx();
  if (sy < 0) sy = img.ny();
  if (sz < 0) sz = frames;
  return filled<T>({sx, sy, sz}, [&](int x, int y, int z, int, int) {
    const int column = (x * img.nx()) / sx;
    const int row = (y * img.ny()) / sy;
    const int plane = (z * frames) / sz;
    return img.pixels()[column + row * img.nx() + plane * img.nx() * img.ny()];
  });
}

std::vector<bool> interior(int nx, int ny, int nz) {
  std::vector<bool> mask;
  for (int z = 0; z < nz; ++z)
    for (int y = 0; y < ny; ++y)
      for (int x = 0; x < nx; ++x) {
        const bool border =
            x == 0 || x == nx - 1 || y == 0 || y == ny - 1 || (nz != 1 && (z == 0 || z == nz - 1));
        mask.push_back(!border);
      }
  return mask;
}

int round_double(double v) {
  const double whole = std::trunc(v);
  return static_cast<int>(v - whole >= 0.5 ? whole + 1 : whole);
}

image<unsigned char> toByteImage(const Image& img, bool scale) {
  if (img.format() < 0 || img.format() > RGBA) return {0, 1, 1, 1, 1};
  return convertToByteImage(img, scale);
}

image<unsigned char> convertToByteImage(const Image& img, bool scale) {
  if (img.npix() == 0) return {0, 1, 1, 1, 1};
  if (img.format() == BYTE && !scale) {
    image<unsigned char> same(img.nx(), img.ny(), img.nz(), img.nc(), img.nt());
    for (int i = 0; i < img.npix(); ++i) same.pixels()[i] = byteFrom(img.pixel(i));
    return same;
  }
  image<unsigned char> result(img.nx(), img.ny(), img.nframes(), 1, 1);
  float mn = img.pixel(0);
  float mx = mn;
  for (int i = 1; i < img.npix(); ++i) {
    const float v = img.pixel(i);
    if (mn > v) {
      mn = v;
    } else {
      mx = std::max(v, mx);
    }
  }
  const float difference = std::fabs(mn - mx);
  if (difference < 0.0001) return result;
  for (int i = 0; i < img.npix(); ++i) {
    const float v = img.pixel(i);
    if (mn >= 0 && mx <= 255 && !scale) {
      result.pixels()[i] = byteFrom(v);
    } else if (v == mx) {
      result.pixels()[i] = 255;
    } else {
      result.pixels()[i] = byteFrom((v - mn) * 255.0F / (mx - mn));
    }
  }
  return result;
}

image<float> toFloatImage(const Image& img) {
  const image<float> none(0, 1, 1, 1, 1);
  if (img.npix() == 0) return none;
  image<float> result(img.nx(), img.ny(), img.nz(), img.nc(), img.nt());
  switch (img.format()) {
    case BYTE:
      copyAsFloat<unsigned char>(img, result);
      break;
    case SHORT:
      copyAsFloat<short>(img, result);
      break;
    case INT:
      copyAsFloat<int>(img, result);
      break;
    case USHORT:
      copyAsFloat<unsigned short>(img, result);
      break;
    case UINT:
      copyAsFloat<unsigned int>(img, result);
      break;
    case FLOAT:
      std::memcpy(result.data(), img.data(), sizeof(float) * static_cast<std::size_t>(img.npix()));
      break;
    case RGB:
    case SHORTRGB:
    case INTRGB:
    case FLOATRGB:
      for (int i = 0; i < img.npix(); ++i) result.pixels()[i] = img.pixel(i);
      break;
    default:
      return none;
  }
  return result;
}

image<Rgb> toRgbImage(const Image& img) {
  const image<Rgb> none(0, 1, 1, 1, 1);
  if (img.npix() == 0) return none;
  image<Rgb> result(img.nx(), img.ny(), img.nz(), img.nc(), img.nt());
  switch (img.format()) {
    case BYTE:
    case INT:
    case USHORT:
    case SHORT:
    case FLOAT:
    case UINT: {
      const image<unsigned char> b = reference::toByteImage(img, true);
      for (int i = 0; i < img.npix(); ++i) {
        result.pixels()[i] = {b.pixels()[i], b.pixels()[i], b.pixels()[i]};
      }
      break;
    }
    case RGB:
      std::memcpy(result.data(), img.data(), 3 * static_cast<std::size_t>(img.npix()));
      break;
    case RGBA:
      layOverWhite(img, result);
      break;
    case SHORTRGB:
      stretchColour<short>(img, result);
      break;
    case INTRGB:
      stretchColour<int>(img, result);
      break;
    case FLOATRGB:
      stretchColour<float>(img, result);
      break;
    default:
      return none;
  }
  return result;
}

template struct Typed<unsigned char>;
template struct Typed<short>;
template struct Typed<int>;
template struct Typed<unsigned int>;
template struct Typed<float>;
template struct Typed<Rgb>;

}  // namespace orva::reference
