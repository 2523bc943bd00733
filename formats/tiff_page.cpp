#include "formats/tiff_page.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>

#include "formats/tiff_layout.h"

namespace orva::formats {
namespace {

// The type of the samples, if they are grey or red, green and blue of a supported width.
std::optional<SampleType> sampleTypeOf(const TiffLayout& layout) {
  const bool isRgb = layout.photometric == PHOTOMETRIC_RGB && layout.samples >= 3;
  if (!layout.isGrey() && !isRgb) return std::nullopt;
  struct Row {
    int bits;
    int format;
    SampleType type;
  };
  constexpr std::array kTypes{
      Row{8, SAMPLEFORMAT_UINT, SampleType::kUint8},
      Row{8, SAMPLEFORMAT_INT, SampleType::kInt8},
      Row{16, SAMPLEFORMAT_UINT, SampleType::kUint16},
      Row{16, SAMPLEFORMAT_INT, SampleType::kInt16},
      Row{32, SAMPLEFORMAT_UINT, SampleType::kUint32},
      Row{32, SAMPLEFORMAT_INT, SampleType::kInt32},
      Row{32, SAMPLEFORMAT_IEEEFP, SampleType::kFloat32},
  };
  const int format = layout.format == SAMPLEFORMAT_VOID ? SAMPLEFORMAT_UINT : layout.format;
  for (const Row& row : kTypes) {
    if (row.bits == layout.bits && row.format == format) return row.type;
  }
  return std::nullopt;
}

// A strip or a tile: its place in the image and its size in the file.
struct Block {
  std::size_t x;
  std::size_t y;
  std::size_t width;
  std::size_t height;
};

// Decodes all samples, block by block, into the raster's pixels; planes that lie apart in the file
// are interleaved.
class BlockDecoder {
 public:
  BlockDecoder(const TiffHandle& in, const TiffLayout& layout, std::size_t sampleBytes)
      : in_(in),
        layout_(layout),
        sampleBytes_(sampleBytes),
        planes_(layout.separatePlanes ? layout.samples : 1),
        bytes_((layout.separatePlanes ? 1 : layout.samples) * sampleBytes),
        tiled_(TIFFIsTiled(in.handle()) != 0) {}

  void decode(Raster& raster) {
    const std::size_t width = tiled_ ? in_.tag<std::uint32_t>(TIFFTAG_TILEWIDTH, 0) : layout_.width;
    const std::size_t height =
        tiled_ ? in_.tag<std::uint32_t>(TIFFTAG_TILELENGTH, 0)
               : std::min<std::size_t>(in_.tag<std::uint32_t>(TIFFTAG_ROWSPERSTRIP, 0),
                                       layout_.height);
    const auto size = tiled_ ? TIFFTileSize(in_.handle()) : TIFFStripSize(in_.handle());
    if (width == 0 || height == 0 || size <= 0 ||
        static_cast<std::size_t>(size) < width * height * bytes_) {
      in_.fail();
    }
    if (static_cast<std::size_t>(size) > kMaxBytes) throw FileError("a strip or tile is too large");
    buffer_.reset(new unsigned char[static_cast<std::size_t>(size)]);
    for (std::size_t plane = 0; plane < planes_; ++plane) {
      for (std::size_t y = 0; y < layout_.height; y += height) {
        for (std::size_t x = 0; x < layout_.width; x += width) {
          read({x, y, width, height}, plane);
          store({x, y, width, height}, plane, raster);
        }
      }
    }
  }

 private:
  void read(const Block& block, std::size_t plane) {
    const auto x = static_cast<std::uint32_t>(block.x);
    const auto y = static_cast<std::uint32_t>(block.y);
    const auto sample = static_cast<std::uint16_t>(plane);
    const std::size_t rows =
        tiled_ ? block.height : std::min(block.height, layout_.height - block.y);
    const auto wanted = static_cast<tmsize_t>(rows * block.width * bytes_);
    const tmsize_t got =
        tiled_ ? TIFFReadTile(in_.handle(), buffer_.get(), x, y, 0, sample)
               : TIFFReadEncodedStrip(in_.handle(), TIFFComputeStrip(in_.handle(), y, sample),
                                      buffer_.get(), wanted);
    if (got < wanted) in_.fail();
  }

  void store(const Block& block, std::size_t plane, Raster& raster) const {
    const std::size_t rows = std::min(block.height, layout_.height - block.y);
    const std::size_t columns = std::min(block.width, layout_.width - block.x);
    for (std::size_t y = 0; y < rows; ++y) {
      const unsigned char* from = buffer_.get() + y * block.width * bytes_;
      unsigned char* to =
          raster.row(block.y + y) + block.x * raster.pixelBytes() + plane * sampleBytes_;
      if (bytes_ == raster.pixelBytes()) {
        std::copy_n(from, columns * bytes_, to);
        continue;
      }
      for (std::size_t x = 0; x < columns; ++x) {
        std::copy_n(from + x * bytes_, bytes_, to + x * raster.pixelBytes());
      }
    }
  }

  const TiffHandle& in_;
  const TiffLayout& layout_;
  std::size_t sampleBytes_;
  std::size_t planes_;
  std::size_t bytes_;  // of one pixel in a block
  bool tiled_;
  std::unique_ptr<unsigned char[]> buffer_;
};

// Palettes, few bits, subsampled colour and the like, through libtiff's conversion to 8-bit colour.
Raster readAsColour(const TiffHandle& in, const TiffLayout& layout) {
  std::array<char, 1024> why{};
  if (TIFFRGBAImageOK(in.handle(), why.data()) == 0) {
    throw FileError(std::string("is a TIFF file of an unsupported kind: ") + why.data());
  }
  Raster raster(layout.width, layout.height, 4, ColourModel::kRgb, SampleType::kUint8);
  // Not initialised, as a raster is not.
  const std::size_t count = layout.width * layout.height;
  const std::unique_ptr<std::uint32_t[]> pixels(new std::uint32_t[count]);
  if (TIFFReadRGBAImageOriented(in.handle(), static_cast<std::uint32_t>(layout.width),
                                static_cast<std::uint32_t>(layout.height), pixels.get(),
                                ORIENTATION_TOPLEFT, 1) == 0) {
    in.fail();
  }
  unsigned char* to = raster.row(0);
  for (std::size_t i = 0; i < count; ++i) {
    const std::uint32_t pixel = pixels[i];
    *to++ = static_cast<unsigned char>(TIFFGetR(pixel));
    *to++ = static_cast<unsigned char>(TIFFGetG(pixel));
    *to++ = static_cast<unsigned char>(TIFFGetB(pixel));
    *to++ = static_cast<unsigned char>(TIFFGetA(pixel));
  }
  return raster;
}

}  // namespace

Raster readPage(const TiffHandle& in) {
  const TiffLayout layout = layoutOf(in);
  requireNothingLeftOut(in, layout);
  const std::optional<SampleType> type = sampleTypeOf(layout);
  if (!type) {
    requireKnownSamples(layout);
    return readAsColour(in, layout);
  }
  Raster raster(layout.width, layout.height, layout.samples,
                layout.photometric == PHOTOMETRIC_RGB ? ColourModel::kRgb : ColourModel::kGrey,
                *type);
  BlockDecoder(in, layout, sizeOf(*type)).decode(raster);
  if (layout.photometric == PHOTOMETRIC_MINISWHITE) raster.invert();
  return raster;
}

}  // namespace orva::formats
