#include "tests/support/reference/image_io.h"

#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <set>

#include "orva/image/image.h"

namespace orva::reference {
namespace {

unsigned char byteAt(const std::string& text, std::size_t i) {
  return i < text.size() ? static_cast<unsigned char>(text[i]) : 0;
}

// Number `field` of a header of the machine's own 32-bit numbers.
int fieldOf(const std::string& content, std::size_t field) {
  unsigned char bytes[4];
  for (std::size_t i = 0; i < 4; ++i) bytes[i] = byteAt(content, 4 * field + i);
  std::int32_t v = 0;
  std::memcpy(&v, bytes, sizeof v);
  return v;
}

template <class T>
std::unique_ptr<Image> pixelsFrom(const std::string& content, std::size_t start, int width,
                                  int height, int planes) {
  auto img = std::make_unique<image<T>>(width, height, planes, 1, 1);
  auto* bytes = static_cast<unsigned char*>(img->data());
  const std::size_t count = static_cast<std::size_t>(img->npix()) * sizeof(T);
  for (std::size_t i = 0; i < count; ++i) bytes[i] = byteAt(content, start + i);
  return img;
}

bool mayBeSizes(int width, int height, int planes) {
  if (width < 0 || height < 0 || planes < 0) return false;
  const double count = double{1} * width * height * planes;
  return count <= double{std::numeric_limits<std::int32_t>::max()};
}

// How many samples a pixel has and how many bytes a sample; bytes for all that is not listed.
struct Layout {
  std::size_t samples;
  std::size_t bytes;
};

Layout layoutOf(int format) {
  switch (format) {
    case 1:
    case 4:
    case 5:
      return {1, 4};
    case 2:
    case 3:
      return {1, 2};
    case 7:
      return {3, 2};
    case 8:
    case 9:
      return {3, 4};
    default:
      return {1, 1};
  }
}

}  // namespace

std::string reversedBytes(int format, const std::string& bytes) {
  const std::size_t n = layoutOf(format).bytes;
  std::string result = bytes;
  for (std::size_t i = 0; i < bytes.size(); ++i) {
    const std::size_t sample = i / n;
    result[i] = bytes.at(sample * n + (n - 1 - i % n));
  }
  return result;
}

std::string int32Bytes(int v) {
  const std::int32_t field = v;
  char bytes[4];
  std::memcpy(bytes, &field, sizeof field);
  return {bytes, 4};
}

std::string pixelBytes(const Image& img) {
  if (img.npix() < 1) return "";
  const auto count = static_cast<std::size_t>(img.npix());
  return {static_cast<const char*>(img.data()), count * static_cast<std::size_t>(img.pixelSize())};
}

std::string fileUIF(const Image& img) {
  return int32Bytes(img.nx()) + int32Bytes(img.ny()) + int32Bytes(img.nz() * img.nc() * img.nt()) +
         int32Bytes(img.pixelSize()) + int32Bytes(img.format()) + pixelBytes(img);
}

std::string fileIHT(const Image& img) {
  return int32Bytes(img.ny()) + int32Bytes(img.nx()) + int32Bytes(0) + int32Bytes(0) +
         int32Bytes(img.ny()) + int32Bytes(img.nx()) + int32Bytes(img.format()) +
         int32Bytes(img.nz() * img.nc() * img.nt()) + int32Bytes(img.npix()) + int32Bytes(0) +
         pixelBytes(img);
}

RawRead readUIF(const std::string& content) {
  const int width = fieldOf(content, 0);
  const int height = fieldOf(content, 1);
  const int planes = fieldOf(content, 2);
  const int format = fieldOf(content, 4);
  if (!mayBeSizes(width, height, planes)) return {nullptr, true};
  if (format != 0 && format != 1 && format != 3 && format != 4) return {};
  return {pixelsFrom<unsigned char>(content, 20, width, height, planes)};
}

RawRead readIHT(const std::string& content) {
  const int height = fieldOf(content, 0);
  const int width = fieldOf(content, 1);
  const int format = fieldOf(content, 6);
  const int planes = fieldOf(content, 7);
  if (!mayBeSizes(width, height, planes)) return {nullptr, true};
  if (format == 0) return {pixelsFrom<unsigned char>(content, 40, width, height, planes)};
  if (format == 1) return {pixelsFrom<int>(content, 40, width, height, planes)};
  if (format == 3) return {pixelsFrom<short>(content, 40, width, height, planes)};
  if (format == 4) return {pixelsFrom<float>(content, 40, width, height, planes)};
  return {};
}

StackCount stackCount(const std::string& content) {
  const bool little = byteAt(content, 0) == 'I';
  const auto two = [&](std::size_t i) {
    const int first = byteAt(content, i);
    const int second = byteAt(content, i + 1);
    return little ? first + 256 * second : 256 * first + second;
  };
  const auto four = [&](std::size_t i) {
    const std::size_t a = static_cast<std::size_t>(two(i));
    const std::size_t b = static_cast<std::size_t>(two(i + 2));
    return little ? a + 65536 * b : 65536 * a + b;
  };
  const auto holds = [&](std::size_t end) { return end <= content.size(); };

  StackCount result;
  result.printed = little ? "lsb1\n" : "lsb0\n";
  if (!holds(8)) return result;
  std::set<std::size_t> seen;
  int page = 0;
  for (std::size_t at = four(4); seen.count(at) == 0;) {
    seen.insert(at);
    if (!holds(at + 2)) return result;
    std::size_t entries = static_cast<std::size_t>(two(at));
    std::size_t entry = at + 2;
    for (; entries > 0; --entries, entry += 12) {
      if (!holds(entry + 12)) return result;
      if (two(entry) != 33629) continue;
      const int low = little ? two(entry + 4) : two(entry + 6);
      result.count = low < 32768 ? low : low - 65536;
    }
    if (!holds(entry + 4)) return result;
    at = four(entry);
    result.printed += std::to_string(page) + "\n";
    ++page;
    if (at == 0) return result;
  }
  return result;
}

}  // namespace orva::reference
