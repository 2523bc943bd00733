#include "formats/image_writer.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cmath>
#include <locale>
#include <memory>
#include <new>
#include <sstream>
#include <utility>

#include "formats/file_error.h"
#include "formats/png_encoder.h"
#include "formats/raster.h"
#include "formats/text.h"
#include "formats/tiff_writer.h"
#include "orva/image_io/encode.h"
#include "orva/image_io/image_io.h"

namespace orva::formats {
namespace {

namespace fs = std::filesystem;
using Bytes = image<unsigned char>;
using Rgb = GenericRgb<unsigned char>;
using Files = std::vector<FileContent>;
using ImagePointer = std::unique_ptr<Image>;

constexpr int kMaxSample = 65535;  // of 16 bits

const image<Rgb>* asColour(const Image& img) { return dynamic_cast<const image<Rgb>*>(&img); }

[[noreturn]] void failForPlanes(int planes, const char* format) {
  throw FileError("has " + std::to_string(planes) + " planes and " + format +
                  " holds one; choose one with --frame");
}

void requireOnePlane(const Image& img, const char* format) {
  if (img.nframes() != 1) failForPlanes(img.nframes(), format);
}

// The brightness of a colour image.
image<float> luminanceOf(const image<Rgb>& img) {
  image<float> grey(img.nx(), img.ny(), img.nframes(), 1, 1);
  std::transform(img.pixels(), img.pixels() + img.npix(), grey.pixels(),
                 brightnessOf<unsigned char>);
  return grey;
}

// True when every pixel is a whole number from 0 to `max`.
bool fits(const Image& img, float max) {
  for (int i = 0; i < img.npix(); ++i) {
    const float v = img.pixel(i);
    if (!(v >= 0.0F && v <= max) || v != std::trunc(v)) return false;
  }
  return true;
}

Bytes copyOf(const Image& img) {
  Bytes bytes(img.nx(), img.ny(), img.nframes(), 1, 1);
  for (int i = 0; i < bytes.npix(); ++i) bytes.setPixel(i, img.pixel(i));
  return bytes;
}

Bytes greyBytes(const Image& img, Fit fit) {
  if (const auto* colour = asColour(img)) {
    image<float> grey = luminanceOf(*colour);
    std::transform(grey.pixels(), grey.pixels() + grey.npix(), grey.pixels(),
                   [](float v) { return std::round(v); });
    return greyBytes(grey, fit);
  }
  if (fit == Fit::kStretched) return image_io::convertToByteImage(img, true);
  if (!fits(img, 255.0F)) {
    throw FileError("has pixels that do not fit 8 bits; --stretch maps their range to 0..255");
  }
  return copyOf(img);
}

// The bytes that write(stream) writes.
template <class Write>
std::string encoded(Write write) {
  std::ostringstream out;
  out.imbue(std::locale::classic());
  write(out);
  if (!out) throw std::bad_alloc();  // a stream in memory has no other way to fail
  return std::move(out).str();
}

Files pgmFiles(const fs::path& path, const Image& img, Fit fit) {
  requireOnePlane(img, "PGM");
  const Bytes bytes = greyBytes(img, fit);
  std::string file =
      "P5\n" + std::to_string(bytes.nx()) + ' ' + std::to_string(bytes.ny()) + "\n255\n";
  file.append(reinterpret_cast<const char*>(bytes.pixels()),
              static_cast<std::size_t>(bytes.npix()));
  return {{path, std::move(file)}};
}

// The library's writer takes colour as three planes.
Bytes colourPlanes(const image<Rgb>& img) {
  Bytes planes(img.nx(), img.ny(), 3, 1, 1);
  unsigned char* plane = planes.pixels();
  for (int i = 0; i < img.npix(); ++i) {
    plane[i] = img.pixels()[i].c0;
    plane[i + img.npix()] = img.pixels()[i].c1;
    plane[i + 2 * std::ptrdiff_t{img.npix()}] = img.pixels()[i].c2;
  }
  return planes;
}

Files ppmFiles(const fs::path& path, const Image& img, Fit fit) {
  requireOnePlane(img, "PPM");
  const auto* colour = asColour(img);
  const Bytes planes = colour != nullptr ? colourPlanes(*colour) : greyBytes(img, fit);
  return {{path, encoded([&](std::ostream& out) { image_io::encodePpm(out, planes); })}};
}

// Of pixels that fit 16 bits.
std::vector<std::uint16_t> samplesOf(const Image& img) {
  std::vector<std::uint16_t> samples(static_cast<std::size_t>(img.npix()));
  for (int i = 0; i < img.npix(); ++i) {
    samples[static_cast<std::size_t>(i)] = static_cast<std::uint16_t>(img.pixel(i));
  }
  return samples;
}

Files pngFiles(const fs::path& path, const Image& img, Fit fit, const Origin& origin) {
  requireOnePlane(img, "PNG");
  if (const auto* colour = asColour(img)) {
    return {{path, encodePng(colour->pixels(), img.nx(), img.ny())}};
  }
  const bool isWide = origin.isUnsigned16 && origin.keepsType;
  if (fit == Fit::kStretched || (!isWide && fits(img, 255.0F))) {
    return {{path, encodePng(greyBytes(img, fit).pixels(), img.nx(), img.ny())}};
  }
  if (!fits(img, kMaxSample)) {
    throw FileError("has pixels that do not fit 16 bits; --stretch maps their range to 0..255");
  }
  return {{path, encodePng(samplesOf(img).data(), img.nx(), img.ny())}};
}

// In one of the pixel types that IHT files are read with.
ImagePointer forIht(const Image& img) {
  if (const auto* colour = asColour(img)) {
    return std::make_unique<image<float>>(luminanceOf(*colour));
  }
  const auto* wide = dynamic_cast<const image<unsigned int>*>(&img);
  if (wide == nullptr) return ImagePointer(img.copy());
  auto narrow = std::make_unique<image<int>>(img.nx(), img.ny(), img.nframes(), 1, 1);
  for (int i = 0; i < img.npix(); ++i) {
    narrow->pixels()[i] = static_cast<int>(wide->pixels()[i]);
    if (narrow->pixels()[i] < 0) throw FileError("has pixels above 2147483647, too large for IHT");
  }
  return narrow;
}

Files ihtFiles(const fs::path& path, const Image& img, Fit fit) {
  const ImagePointer result =
      fit == Fit::kStretched ? std::make_unique<Bytes>(greyBytes(img, fit)) : forIht(img);
  return {{path, encoded([&](std::ostream& out) { image_io::encodeIht(out, *result); })}};
}

// In bytes, the only pixels that UIF files are read with.
Files uifFiles(const fs::path& path, const Image& img, Fit fit) {
  const Bytes bytes = greyBytes(img, fit);
  return {{path, encoded([&](std::ostream& out) { image_io::encodeUif(out, bytes); })}};
}

// In colour as it is.
ImagePointer stretchedIfAsked(const Image& img, Fit fit) {
  if (fit == Fit::kExactly || asColour(img) != nullptr) return ImagePointer(img.copy());
  return std::make_unique<Bytes>(greyBytes(img, fit));
}

int sampleBytes(const Image& img) {
  return img.format() == orva::RGB ? img.pixelSize() / 3 : img.pixelSize();
}

// This machine's byte order as ICS states it: the bytes' numbers, of which 1 is the least
// significant.
std::string nativeByteOrder(int bytes) {
  std::string order;
  for (int i = 1; i <= bytes; ++i) {
    if (i > 1) order += '\t';
    order += std::to_string(std::endian::native == std::endian::little ? i : bytes + 1 - i);
  }
  return order;
}

Files icsFiles(const fs::path& path, const Image& img, Fit fit) {
  const ImagePointer result = stretchedIfAsked(img, fit);
  const std::vector<fs::path> names = filesOf(path.string());
  return {{names[0], encoded([&](std::ostream& out) {
             image_io::encodeIcsHeader(out, path.string(), *result,
                                       nativeByteOrder(sampleBytes(*result)));
           })},
          {names[1], encoded([&](std::ostream& out) { image_io::encodePixels(out, *result); })}};
}

bool isTiffName(const std::string& path) {
  return extensionOf(path) == ".tif" || extensionOf(path) == ".tiff";
}

Description descriptionFor(const fs::path& path) {
  return isOmeName(path.string()) ? Description::kOme : Description::kImageJ;
}

Files tiffFiles(const fs::path& path, const Image& img, Fit fit, const Origin& origin) {
  const Description description = descriptionFor(path);
  if (origin.isUnsigned16 && fit == Fit::kExactly && fits(img, kMaxSample)) {
    return {{path, encodeTiff(samplesOf(img).data(), img.nx(), img.ny(), img.nframes(), origin.axes,
                              description)}};
  }
  ImageAxes axes = origin.axes;
  if (fit == Fit::kStretched) axes.bitDepth.reset();
  return {{path, encodeTiff(*stretchedIfAsked(img, fit), axes, description)}};
}

using Encoder = Files (*)(const fs::path&, const Image&, Fit, const Origin&);

// For a format that keeps pixels only.
template <Files (*encode)(const fs::path&, const Image&, Fit)>
Files pixelsAlone(const fs::path& path, const Image& img, Fit fit, const Origin& /*origin*/) {
  return encode(path, img, fit);
}

struct Format {
  const char* extension;
  Encoder encoder;
};

constexpr std::array kFormats{Format{".pgm", pixelsAlone<pgmFiles>},
                              Format{".ppm", pixelsAlone<ppmFiles>},
                              Format{".png", pngFiles},
                              Format{".tif", tiffFiles},
                              Format{".tiff", tiffFiles},
                              Format{".iht", pixelsAlone<ihtFiles>},
                              Format{".uif", pixelsAlone<uifFiles>},
                              Format{".ics", pixelsAlone<icsFiles>}};

// Null for an extension that is not known.
Encoder encoderFor(const std::string& path) {
  // The library knows ICS names in small letters only.
  if (fs::path(path).extension() != ".ics" && extensionOf(path) == ".ics") return nullptr;
  for (const Format& format : kFormats) {
    if (extensionOf(path) == format.extension) return format.encoder;
  }
  return nullptr;
}

}  // namespace

std::vector<FileContent> encodeImage(const std::string& path, const Image& img, Fit fit,
                                     const Origin& origin) {
  return encoderFor(path)(path, img, fit, origin);
}

void writeImageFile(const std::string& path, const Image& img, Fit fit, const Origin& origin) {
  writeFiles(encodeImage(path, img, fit, origin));
}

std::vector<FileContent> encodeColour16(const std::string& path,
                                        const std::vector<GenericRgb<std::uint16_t>>& pixels,
                                        int width, int height, const ImageAxes& axes) {
  const std::size_t plane = static_cast<std::size_t>(width) * static_cast<std::size_t>(height);
  const auto count = static_cast<int>(pixels.size() / plane);
  if (isTiffName(path)) {
    return {{path, encodeTiff(pixels.data(), width, height, count, axes, descriptionFor(path))}};
  }
  if (count > 1) failForPlanes(count, "PNG");
  return {{path, encodePng(pixels.data(), width, height)}};
}

std::string encodeLabels(const std::string& path, const image<int>& labels,
                         const PixelSize& pixelSize) {
  ImageAxes axes;
  axes.pixelSize = pixelSize;
  const Description description = descriptionFor(path);
  const int* const begin = labels.pixels();
  const int* const end = begin + labels.npix();
  const bool isTiff = extensionOf(path) != ".png";
  if (begin != end && *std::max_element(begin, end) > kMaxSample) {
    if (isTiff) return encodeTiff(labels, axes, description);
    throw FileError(
        "has more than 65535 objects, the labels that a PNG file holds; name a TIFF "
        "file");
  }
  const std::vector<std::uint16_t> samples(begin, end);
  return isTiff ? encodeTiff(samples.data(), labels.nx(), labels.ny(), 1, axes, description)
                : encodePng(samples.data(), labels.nx(), labels.ny());
}

std::vector<fs::path> filesOf(const std::string& path) {
  if (extensionOf(path) != ".ics") return {path};
  return {path, fs::path(path).replace_extension(".ids")};
}

bool holdsColour(const std::string& path) {
  const std::string extension = extensionOf(path);
  return extension != ".pgm" && extension != ".iht" && extension != ".uif";
}

bool holdsColour16(const std::string& path) {
  return isTiffName(path) || extensionOf(path) == ".png";
}

std::vector<std::string> writableExtensions() {
  std::vector<std::string> extensions;
  extensions.reserve(kFormats.size());
  for (const Format& format : kFormats) extensions.emplace_back(format.extension);
  return extensions;
}

bool isWritable(const std::string& path) { return encoderFor(path) != nullptr; }

}  // namespace orva::formats
