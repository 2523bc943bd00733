#include "tests/fuzz/operations/pictures.h"

#include <algorithm>
#include <type_traits>
#include <utility>
#include <vector>

#include "tests/support/raw_image.h"

namespace orva::test {
namespace {

// A whole number as a pixel; a type that is too narrow keeps the low bits.
template <class T>
T pixelOf(int v) {
  if constexpr (std::is_same_v<T, Rgb>) {
    return {static_cast<unsigned char>(v), static_cast<unsigned char>(v / 2),
            static_cast<unsigned char>(v ^ 85)};
  } else {
    return static_cast<T>(v);
  }
}

template <class T>
T takeOdd(Input& in) {
  if constexpr (std::is_same_v<T, float>) {
    return takeFloat(in);
  } else {
    return pixelOf<T>(takeInt(in));
  }
}

template <class T>
T takePixel(Input& in) {
  switch (in.between(0, 3)) {
    case 0:
      return in.take<T>();
    case 1:
      return takeOdd<T>(in);
    default:
      return pixelOf<T>(in.between(0, 255));
  }
}

template <class T>
std::vector<T> takePixels(Input& in, int max) {
  std::vector<T> pixels(static_cast<std::size_t>(in.between(1, max)));
  for (T& v : pixels) v = takeOdd<T>(in);
  return pixels;
}

Random takeRandom(Input& in) { return Random(in.take<std::uint16_t>()); }

// source(x, y, plane) for every pixel.
template <class T, class Source>
void fill(image<T>& img, Source source) {
  for (int i = 0; i < img.npix(); ++i) {
    const int row = i / img.nx();
    img.pixels()[i] = source(i % img.nx(), row % img.ny(), row / img.ny());
  }
}

// The bytes of the pixels are a short piece of the input, over and over.
template <class T>
void repeatBytes(Input& in, image<T>& img) {
  std::vector<unsigned char> bytes(static_cast<std::size_t>(in.between(1, 48)));
  for (unsigned char& b : bytes) b = in.take<unsigned char>();
  auto* to = static_cast<unsigned char*>(img.data());
  const std::size_t count = static_cast<std::size_t>(img.npix()) * sizeof(T);
  for (std::size_t i = 0; i < count; ++i) to[i] = bytes[i % bytes.size()];
}

template <class T>
void ramp(Input& in, image<T>& img) {
  const int start = takeInt(in) % 100000;
  const int dx = in.take<std::int8_t>();
  const int dy = in.take<std::int8_t>();
  const int dz = in.take<std::int8_t>();
  const int quadratic = in.between(0, 1);
  fill(img, [=](int x, int y, int z) {
    const int v = start + x * dx + y * dy + z * dz + quadratic * (x * x - x * y + y * z);
    if constexpr (std::is_same_v<T, float>) {
      return static_cast<float>(v) * 0.125F;
    } else {
      return pixelOf<T>(v);
    }
  });
}

template <class T>
void discs(Input& in, image<T>& img) {
  const T background = takePixel<T>(in);
  fill(img, [=](int, int, int) { return background; });
  for (int n = in.between(1, 6); n > 0; --n) {
    const int cx = in.between(0, img.nx() - 1);
    const int cy = in.between(0, img.ny() - 1);
    const int cz = in.between(0, img.nframes() - 1);
    const int radius = in.between(0, 12);
    const T inside = takePixel<T>(in);
    for (int i = 0; i < img.npix(); ++i) {
      const int x = i % img.nx() - cx;
      const int y = i / img.nx() % img.ny() - cy;
      const int z = i / img.nx() / img.ny() - cz;
      if (x * x + y * y + 4 * z * z <= radius * radius) img.pixels()[i] = inside;
    }
  }
}

// A share of the pixels takes one of some values, the others one of some more.
template <class T>
void mix(Input& in, image<T>& img, const std::vector<T>& some, const std::vector<T>& more) {
  Random random = takeRandom(in);
  const int share = in.between(0, 255);
  const auto any = [&random](const std::vector<T>& of) {
    return of[static_cast<std::size_t>(randomInt(random, 0, static_cast<int>(of.size()) - 1))];
  };
  fill(img, [&](int, int, int) { return any(randomInt(random, 0, 255) < share ? some : more); });
}

template <class T>
std::vector<T> upwards(int count) {
  std::vector<T> values;
  for (int v = 0; v < count; ++v) values.push_back(pixelOf<T>(v));
  return values;
}

// Samples and what a pixel of them counts.
template <class Sample, class ValueOf>
std::unique_ptr<Image> rawImage(Input& in, const Shape& s, int format, int components,
                                ValueOf valueOf) {
  const image<Sample> samples =
      takePicture<Sample>(in, {s.nx * components, s.ny, s.nz, s.nc, s.nt});
  std::vector<float> values;
  for (int i = 0; i < samples.npix(); i += components) {
    values.push_back(valueOf(samples.pixels() + i));
  }
  return std::make_unique<RawImage>(s, format, pixelsOf(samples), std::move(values));
}

template <class Sample>
float luminanceAt(const Sample* p) {
  return luminance(GenericRgb<Sample>{p[0], p[1], p[2]});
}

}  // namespace

template <class T>
image<T> takePicture(Input& in, const Shape& shape) {
  image<T> img = blank<T>(shape);
  if (img.isNull()) return img;
  switch (in.between(0, 8)) {
    case 0: {
      const T some = takePixel<T>(in);
      const T more = takePixel<T>(in);
      mix<T>(in, img, {some}, {more});
      break;
    }
    case 1:
      repeatBytes(in, img);
      break;
    case 2:
      ramp(in, img);
      break;
    case 3:
      discs(in, img);
      break;
    case 4: {
      Random random = takeRandom(in);
      return randomImage<T>(random, shape);
    }
    case 5: {
      const std::vector<T> some = takePixels<T>(in, 8);
      const int count = in.between(1, 255);
      mix(in, img, some, upwards<T>(count));
      break;
    }
    case 6: {
      const int count = in.between(3, 40);
      mix(in, img, upwards<T>(2), upwards<T>(count));
      break;
    }
    case 7: {  // in order, over and over
      const std::vector<T> values = takePixels<T>(in, 16);
      for (int i = 0; i < img.npix(); ++i) {
        img.pixels()[i] = values[static_cast<std::size_t>(i) % values.size()];
      }
      break;
    }
    default: {
      const T value = takePixel<T>(in);
      fill(img, [=](int, int, int) { return value; });
      // Some pixels apart.
      for (int n = in.between(0, 5); n > 0; --n) {
        const int at = in.take<std::uint16_t>() % img.npix();
        img.pixels()[at] = takeOdd<T>(in);
      }
    }
  }
  return img;
}

template image<unsigned char> takePicture(Input& in, const Shape& shape);
template image<short> takePicture(Input& in, const Shape& shape);
template image<int> takePicture(Input& in, const Shape& shape);
template image<unsigned int> takePicture(Input& in, const Shape& shape);
template image<float> takePicture(Input& in, const Shape& shape);
template image<Rgb> takePicture(Input& in, const Shape& shape);

image<unsigned char> takeMask(Input& in, const Shape& shape) {
  const int threshold = in.between(0, 255);
  image<unsigned char> mask = takePicture<unsigned char>(in, shape);
  for (int i = 0; i < mask.npix() && threshold > 0; ++i) {
    mask.pixels()[i] = mask.pixels()[i] >= threshold ? 255 : 0;
  }
  return mask;
}

image<short> takeLabels(Input& in, const Shape& shape, int max) {
  const int kind = in.between(0, 3);
  const int low = kind == 3 ? -100 : kind == 2 ? 0 : -1;
  const int wanted = in.between(0, 255);
  const int high = wanted < 250 ? std::min(wanted < 200 ? wanted : 20 * wanted, max) : max;
  image<short> labels = takePicture<short>(in, shape);
  for (int i = 0; i < labels.npix(); ++i) {
    const int range = high - low + 1;
    const int k = ((labels.pixels()[i] - low) % range + range) % range;
    labels.pixels()[i] = static_cast<short>(low + k);
  }
  return labels;
}

std::unique_ptr<Image> takeAnyPicture(Input& in, const Shape& shape) {
  if (in.between(0, 7) == 7 && hasPixels(shape)) return takeWidePicture(in, shape);
  std::unique_ptr<Image> result;
  withPicture(in, shape, [&result](const auto& img) { result.reset(img.copy()); });
  return result;
}

std::unique_ptr<Image> takeWidePicture(Input& in, const Shape& shape) {
  switch (in.between(0, 3)) {
    case 0:
      return rawImage<short>(in, shape, USHORT, 1, [](const short* p) {
        return static_cast<float>(static_cast<unsigned short>(*p));
      });
    case 1:
      return rawImage<short>(in, shape, SHORTRGB, 3, luminanceAt<short>);
    case 2:
      return rawImage<int>(in, shape, INTRGB, 3, luminanceAt<int>);
    default:
      return rawImage<float>(in, shape, FLOATRGB, 3, luminanceAt<float>);
  }
}

std::unique_ptr<Image> takeAlphaPicture(Input& in, const Shape& shape) {
  return rawImage<unsigned char>(in, shape, RGBA, 4, luminanceAt<unsigned char>);
}

}  // namespace orva::test
