#include "tests/support/reference/scalespace.h"

#include <cmath>

namespace orva::reference {

namespace {

using LineFilter = std::vector<float> (*)(const std::vector<float>&, const Kernel&);

// Filters every line along one axis: `length` samples that lie `stride` apart.
void filterLines(image<float>& img, int length, int stride, LineFilter filter,
                 const Kernel& kernel) {
  std::vector<float> line(static_cast<std::size_t>(length));
  float* pixels = img.pixels();
  for (int first = 0; first < img.npix(); ++first) {
    if ((first / stride) % length != 0) continue;
    for (int i = 0; i < length; ++i) line[static_cast<std::size_t>(i)] = pixels[first + i * stride];
    const std::vector<float> filtered = filter(line, kernel);
    for (int i = 0; i < length; ++i)
      pixels[first + i * stride] = filtered[static_cast<std::size_t>(i)];
  }
}

image<float> separable(const Image& img, LineFilter filter, Triple sigma, Orders order) {
  image<float> result = toFloat(img);
  if (img.isNull()) return result;
  if (img.nx() >= 2) filterLines(result, img.nx(), 1, filter, gaussianKernel(sigma.x, order.x));
  if (img.ny() >= 2)
    filterLines(result, img.ny(), img.nx(), filter, gaussianKernel(sigma.y, order.y));
  if (img.nframes() >= 2)
    filterLines(result, img.nframes(), img.nx() * img.ny(), filter,
                gaussianKernel(sigma.z, order.z));
  return result;
}

}  // namespace

std::vector<float> dog(int order, float sigma) {
  const float s2 = sigma * sigma;
  std::vector<float> c(static_cast<std::size_t>(order + 1), 0.0F);
  c[0] = static_cast<float>(std::sqrt(1.0 / (static_cast<double>(s2) * 6.2831854)));
  const double slope = -1.0 / static_cast<double>(s2);
  for (int step = 0; step < order; ++step) {
    const auto at = [&c, order](int j) {
      return j < 0 || j > order ? 0.0 : static_cast<double>(c[static_cast<std::size_t>(j)]);
    };
    std::vector<float> next(c.size());
    for (int j = 0; j <= order; ++j)
      next[static_cast<std::size_t>(j)] =
          static_cast<float>((j + 1.0) * at(j + 1) + at(j - 1) * slope);
    c = next;
  }
  return c;
}

float polyval(const std::vector<float>& c, float x) {
  float sum = 0;
  float power = 1;
  for (const float coefficient : c) {
    sum += power * coefficient;
    power *= x;
  }
  return sum;
}

Kernel gaussianKernel(float sigma, int order) {
  Kernel kernel;
  const float r = sigma * 4.0F;
  // False for a NaN too. 2^31 is the first radius that is no 32-bit number.
  kernel.radius = r >= 3.0F && r < 2147483648.0F ? static_cast<int>(r) : 2;
  const std::vector<float> c = dog(order, sigma);
  const double s = static_cast<double>(sigma);
  const double d = s * (s + s);
  for (long long i = -kernel.radius; i <= kernel.radius; ++i) {
    const float negatedSquare = -static_cast<float>(i * i);
    const double bell = std::exp(static_cast<double>(negatedSquare) / d);
    kernel.taps.push_back(
        static_cast<float>(static_cast<double>(polyval(c, static_cast<float>(i))) * bell));
  }
  return kernel;
}

std::vector<float> convolveRepeated(const std::vector<float>& line, const Kernel& kernel) {
  const int n = static_cast<int>(line.size());
  std::vector<float> out;
  for (int i = 0; i < n; ++i) {
    float sum = 0;
    for (int k = -kernel.radius; k <= kernel.radius; ++k) {
      const int j = i - k;
      const float sample = j < 0 ? line.front() : j >= n ? line.back() : line[std::size_t(j)];
      sum += kernel.tap(k) * sample;
    }
    out.push_back(sum);
  }
  return out;
}

std::vector<float> convolveDropped(const std::vector<float>& line, const Kernel& kernel) {
  const int n = static_cast<int>(line.size());
  std::vector<float> out;
  for (int i = 0; i < n; ++i) {
    float sum = 0;
    float lost = 0;
    for (int k = -kernel.radius; k <= kernel.radius; ++k) {
      const int j = i - k;
      if (j >= 0 && j < n)
        sum += kernel.tap(k) * line[std::size_t(j)];
      else
        lost += kernel.tap(k);
    }
    out.push_back(sum / (1.0F - lost));
  }
  return out;
}

image<float> toFloat(const Image& img) {
  if (img.isNull()) return image<float>(0, 1, 1, 1, 1);
  image<float> result(img.nx(), img.ny(), img.nz(), img.nc(), img.nt());
  for (int i = 0; i < img.npix(); ++i) result.setPixel(i, img.pixel(i));
  return result;
}

image<float> gaussian(const Image& img, Triple sigma, Orders order) {
  return separable(img, convolveRepeated, sigma, order);
}

image<float> smooth(const Image& img, Triple sigma) {
  return separable(img, convolveDropped, sigma, {0, 0, 0});
}

image<float> laplacian(const Image& img, float sigma) {
  const Triple all{sigma, sigma, sigma};
  image<float> sum = gaussian(img, all, {2, 0, 0});
  const image<float> gyy = gaussian(img, all, {0, 2, 0});
  for (int i = 0; i < sum.npix(); ++i) sum.pixels()[i] += gyy.pixels()[i];
  if (img.nframes() > 1) {
    const image<float> gzz = gaussian(img, all, {0, 0, 2});
    for (int i = 0; i < sum.npix(); ++i) sum.pixels()[i] += gzz.pixels()[i];
  }
  return sum;
}

image<float> gradient(const Image& img, float sigma, float ratio) {
  const Triple all{sigma, sigma, sigma};
  image<float> gx = gaussian(img, all, {1, 0, 0});
  const image<float> gy = gaussian(img, all, {0, 1, 0});
  const bool stack = img.nframes() > 1;
  const float s = ratio == 0.0F ? sigma : sigma / ratio;
  const image<float> gz = stack ? gaussian(img, {s, s, s}, {0, 0, 1}) : image<float>(0, 1, 1, 1, 1);
  for (int i = 0; i < gx.npix(); ++i) {
    const float x = gx.pixels()[i];
    const float y = gy.pixels()[i];
    float square = x * x + y * y;
    if (stack) square += gz.pixels()[i] * gz.pixels()[i];
    gx.pixels()[i] = std::sqrt(square);
  }
  return gx;
}

namespace {

float degrees(float y, float x) {
  if (x == 0.0F && y == 0.0F) return 0;
  return static_cast<float>(static_cast<double>(std::atan2(y, x)) * 57.2958);
}

int directionCode(float d) {
  if (d < 0) {
    if (d >= -22.5F) return 0;
    if (d >= -67.5F) return 7;
    if (d >= -112.5F) return 6;
    if (d >= -157.5F) return 5;
    return d >= -180.0F ? 4 : 5;
  }
  if (d <= 22.5F) return 0;
  if (d <= 67.5F) return 1;
  if (d <= 112.5F) return 2;
  return d <= 157.5F ? 3 : 4;
}

// The result of `f` for each pixel of a and the pixels of the others at its place.
template <class T, class F, class... Images>
image<T> pixelwise(F f, const Image& a, const Images&... others) {
  if (!(a.equalSize(others) && ...)) return image<T>(0, 1, 1, 1, 1);
  image<T> result(a.nx(), a.ny(), a.nframes(), 1, 1);
  for (int i = 0; i < result.npix(); ++i) result.setPixel(i, f(a.pixel(i), others.pixel(i)...));
  return result;
}

}  // namespace

image<short> gradient(const Image& a, const Image& b) {
  return pixelwise<short>([](float x, float y) { return std::sqrt(x * x + y * y); }, a, b);
}

image<short> gradient(const Image& a, const Image& b, const Image& c) {
  return pixelwise<short>(
      [](float x, float y, float z) { return std::sqrt(x * x + y * y + z * z); }, a, b, c);
}

image<unsigned char> direction(const Image& a, const Image& b) {
  return pixelwise<unsigned char>(
      [](float y, float x) { return static_cast<float>(directionCode(degrees(y, x))); }, a, b);
}

image<short> angle(const Image& a, const Image& b) { return pixelwise<short>(degrees, a, b); }

image<float> angleInRadian(const Image& a, const Image& b) {
  return pixelwise<float>([](float y, float x) { return std::atan2(y, x); }, a, b);
}

void laplaceEquation(image<float>& f, const image<unsigned char>& mask) {
  const int nx = f.nx();
  const int ny = f.ny();
  for (int step = 0; step < 50; ++step) {
    const image<float> old = f.duplicate();
    for (int y = 1; y <= ny - 2; ++y) {
      for (int x = 1; x <= nx - 2; ++x) {
        if (mask.pixel(x, y) <= 254.0F) continue;
        const float sum =
            old.pixel(x - 1, y) + old.pixel(x + 1, y) + old.pixel(x, y - 1) + old.pixel(x, y + 1);
        f.setPixel(x, y, 0.25F * sum);
      }
    }
  }
}

image<float> harmonicCut(const Image& img, float sigma, bool bright, int iterations) {
  image<float> r(img.nx(), img.ny(), 1, 1, 1);
  for (int i = 0; i < img.nx() * img.ny(); ++i) r.setPixel(i, img.pixel(i));
  for (int step = 0; step < iterations; ++step)
    laplaceEquation(r, features(r, sigma, bright ? HESSIAN_MAXIMUM : HESSIAN_MINIMUM, 1.0F));
  return r;
}

image<unsigned char> hcut(const Image& img, float sigma1, float sigma2) {
  return features(harmonicCut(img, sigma1, true, 10), sigma2, LAPLACIAN_NEGATIVE, 1.0F);
}

int reducedSize(int size, float factor) {
  const float product = static_cast<float>(size) * factor;
  return product >= 2.0F ? static_cast<int>(product) : 1;
}

}  // namespace orva::reference
