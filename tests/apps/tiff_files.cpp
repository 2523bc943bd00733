#include "tests/apps/tiff_files.h"

#include <algorithm>
#include <bit>
#include <stdexcept>

namespace orva::test {
namespace {

template <class Sample>
void append(std::vector<unsigned char>& bytes, double value) {
  const auto sample = static_cast<Sample>(value);
  const auto* from = reinterpret_cast<const unsigned char*>(&sample);
  bytes.insert(bytes.end(), from, from + sizeof sample);
}

// In the machine's byte order; libtiff turns it into the file's.
void appendSample(std::vector<unsigned char>& bytes, double value, const TiffForm& form) {
  if (form.format == SAMPLEFORMAT_IEEEFP) {
    if (form.bits == 16) return append<std::uint16_t>(bytes, 0x3C00);  // 1, whatever the value
    return form.bits == 64 ? append<double>(bytes, value) : append<float>(bytes, value);
  }
  const bool isSigned = form.format == SAMPLEFORMAT_INT;
  if (form.bits == 64) return append<std::int64_t>(bytes, value);
  if (form.bits == 8)
    return append<std::uint8_t>(bytes, isSigned && value < 0 ? value + 256 : value);
  if (form.bits == 16) {
    return append<std::uint16_t>(bytes, isSigned && value < 0 ? value + 65536 : value);
  }
  return isSigned ? append<std::int32_t>(bytes, value) : append<std::uint32_t>(bytes, value);
}

// Several samples a byte, the first in the highest bits.
std::vector<unsigned char> packed(const std::vector<double>& row, unsigned bits) {
  std::vector<unsigned char> bytes((row.size() * bits + 7) / 8);
  for (std::size_t i = 0; i < row.size(); ++i) {
    const std::size_t at = i * bits;
    const auto value = static_cast<unsigned>(row[i]);
    bytes[at / 8] = static_cast<unsigned char>(bytes[at / 8] | (value << (8 - bits - at % 8)));
  }
  return bytes;
}

// The samples of one strip or tile; outside the picture there are zeros.
std::vector<unsigned char> block(const Picture& picture, const TiffForm& form, int x0, int y0,
                                 int width, int height, int plane) {
  const bool apart = form.planar == PLANARCONFIG_SEPARATE;
  std::vector<unsigned char> bytes;
  for (int y = y0; y < y0 + height; ++y) {
    std::vector<double> row;
    for (int x = x0; x < x0 + width; ++x) {
      for (int s = 0; s < picture.samples; ++s) {
        if (apart && s != plane) continue;
        const bool inside = x < picture.width && y < picture.height;
        const int at = s + picture.samples * (x + picture.width * y);
        row.push_back(inside ? picture.values[static_cast<std::size_t>(at)] : 0.0);
      }
    }
    if (form.bits < 8) {
      const auto line = packed(row, form.bits);
      bytes.insert(bytes.end(), line.begin(), line.end());
    } else {
      for (const double v : row) appendSample(bytes, v, form);
    }
  }
  return bytes;
}

void require(bool good) {
  if (!good) throw std::runtime_error("libtiff could not write");
}

}  // namespace

TiffFile::TiffFile(const std::filesystem::path& path, const std::string& mode)
    : tiff_(TIFFOpen(path.c_str(), mode.c_str())) {
  require(tiff_ != nullptr);
}

void TiffFile::page(const Picture& picture, const TiffForm& form) {
  TIFF* tiff = tiff_.get();
  TIFFSetField(tiff, TIFFTAG_IMAGEWIDTH, picture.width);
  TIFFSetField(tiff, TIFFTAG_IMAGELENGTH, picture.height);
  TIFFSetField(tiff, TIFFTAG_SAMPLESPERPIXEL, picture.samples);
  TIFFSetField(tiff, TIFFTAG_BITSPERSAMPLE, form.bits);
  TIFFSetField(tiff, TIFFTAG_SAMPLEFORMAT, form.format);
  TIFFSetField(tiff, TIFFTAG_PHOTOMETRIC, form.photometric);
  TIFFSetField(tiff, TIFFTAG_PLANARCONFIG, form.planar);
  TIFFSetField(tiff, TIFFTAG_COMPRESSION, form.compression);
  const std::size_t entries = std::size_t{1} << form.bits % 32U;
  if (!form.palette.empty()) {
    const std::uint16_t* red = form.palette.data();
    TIFFSetField(tiff, TIFFTAG_COLORMAP, red, red + entries, red + 2 * entries);
  }
  if (!form.extraSamples.empty()) {
    TIFFSetField(tiff, TIFFTAG_EXTRASAMPLES, static_cast<int>(form.extraSamples.size()),
                 form.extraSamples.data());
  }
  if (form.depth > 1) TIFFSetField(tiff, TIFFTAG_IMAGEDEPTH, form.depth);
  if (!form.description.empty()) {
    TIFFSetField(tiff, TIFFTAG_IMAGEDESCRIPTION, form.description.c_str());
  }
  if (form.subIfds > 0) {
    const std::vector<std::uint64_t> places(form.subIfds);  // libtiff enters them
    TIFFSetField(tiff, TIFFTAG_SUBIFD, form.subIfds, places.data());
  }
  if (form.subfileType != 0) TIFFSetField(tiff, TIFFTAG_SUBFILETYPE, form.subfileType);
  if (form.perCentimetre > 0) {
    TIFFSetField(tiff, TIFFTAG_RESOLUTIONUNIT, RESUNIT_CENTIMETER);
    TIFFSetField(tiff, TIFFTAG_XRESOLUTION, form.perCentimetre);
    TIFFSetField(tiff, TIFFTAG_YRESOLUTION, form.perCentimetre);
  }
  const bool tiled = form.tileWidth != 0;
  const int width = tiled ? static_cast<int>(form.tileWidth) : picture.width;
  const int height = tiled ? static_cast<int>(form.tileHeight)
                           : std::min(static_cast<int>(form.rowsPerStrip), picture.height);
  if (tiled) {
    TIFFSetField(tiff, TIFFTAG_TILEWIDTH, form.tileWidth);
    TIFFSetField(tiff, TIFFTAG_TILELENGTH, form.tileHeight);
  } else {
    TIFFSetField(tiff, TIFFTAG_ROWSPERSTRIP, height);
  }
  const int planes = form.planar == PLANARCONFIG_SEPARATE ? picture.samples : 1;
  std::uint32_t index = 0;
  for (int plane = 0; plane < planes; ++plane) {
    for (int y = 0; y < picture.height; y += height) {
      for (int x = 0; x < picture.width; x += width, ++index) {
        const int rows = tiled ? height : std::min(height, picture.height - y);
        auto bytes = block(picture, form, x, y, width, rows, plane);
        const auto size = static_cast<tmsize_t>(bytes.size());
        require((tiled ? TIFFWriteEncodedTile(tiff, index, bytes.data(), size)
                       : TIFFWriteEncodedStrip(tiff, index, bytes.data(), size)) == size);
      }
    }
  }
  require(TIFFWriteDirectory(tiff) == 1);
}

std::string rawTiff(const std::vector<TiffTag>& tags, const std::string& pixels) {
  constexpr std::size_t kPixelStart = 512;
  std::string file("II*\0\x8\0\0\0", 8);
  const auto number = [&file](std::uint32_t value, int bytes) {
    for (int i = 0; i < bytes; ++i) file += static_cast<char>(value >> (8 * i));
  };
  number(static_cast<std::uint32_t>(tags.size()), 2);
  for (const TiffTag& tag : tags) {
    number(tag.name, 2);
    number(tag.type, 2);
    number(tag.count, 4);
    number(tag.value, 4);
  }
  number(0, 4);
  file.resize(kPixelStart);
  return file + pixels;
}

}  // namespace orva::test
