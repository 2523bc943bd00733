#include "formats/tiff_writer.h"

#include <cstdint>

#include "formats/tiff_handle.h"

namespace orva::formats {
namespace {

struct SampleForm {
  int bits;
  int format;
  int samples = 1;
};

SampleForm formOf(const orva::Image& img) {
  switch (img.format()) {
    case orva::SHORT:
      return {16, SAMPLEFORMAT_INT};
    case orva::INT:
      return {32, SAMPLEFORMAT_INT};
    case orva::UINT:
      return {32, SAMPLEFORMAT_UINT};
    case orva::FLOAT:
      return {32, SAMPLEFORMAT_IEEEFP};
    case orva::RGB:
      return {8, SAMPLEFORMAT_UINT, 3};
    default:
      return {8, SAMPLEFORMAT_UINT};
  }
}

void describePage(const TiffHandle& out, const orva::Image& img) {
  TIFF* tiff = out.handle();
  const SampleForm form = formOf(img);
  TIFFSetField(tiff, TIFFTAG_IMAGEWIDTH, static_cast<std::uint32_t>(img.nx()));
  TIFFSetField(tiff, TIFFTAG_IMAGELENGTH, static_cast<std::uint32_t>(img.ny()));
  TIFFSetField(tiff, TIFFTAG_BITSPERSAMPLE, form.bits);
  TIFFSetField(tiff, TIFFTAG_SAMPLESPERPIXEL, form.samples);
  TIFFSetField(tiff, TIFFTAG_SAMPLEFORMAT, form.format);
  TIFFSetField(tiff, TIFFTAG_PHOTOMETRIC,
               form.samples == 3 ? PHOTOMETRIC_RGB : PHOTOMETRIC_MINISBLACK);
  TIFFSetField(tiff, TIFFTAG_PLANARCONFIG, PLANARCONFIG_CONTIG);
  TIFFSetField(tiff, TIFFTAG_COMPRESSION, COMPRESSION_NONE);
  TIFFSetField(tiff, TIFFTAG_ROWSPERSTRIP, TIFFDefaultStripSize(tiff, 0));
}

}  // namespace

void writeTiffFile(const std::string& path, const orva::Image& img) {
  const std::int64_t bytes = std::int64_t{img.npix()} * img.pixelSize();
  constexpr std::int64_t kMostClassic = 4000000000;  // with room for the directories
  const TiffHandle out(path, bytes < kMostClassic ? "w" : "w8");
  const std::ptrdiff_t rowBytes = std::ptrdiff_t{img.nx()} * img.pixelSize();
  // libtiff takes rows without const and leaves them alone.
  auto* row = static_cast<unsigned char*>(img.data());
  for (int page = 0; page < img.nframes(); ++page) {
    describePage(out, img);
    for (int y = 0; y < img.ny(); ++y, row += rowBytes) {
      if (TIFFWriteScanline(out.handle(), row, static_cast<std::uint32_t>(y), 0) < 0) out.fail();
    }
    if (TIFFWriteDirectory(out.handle()) == 0) out.fail();
  }
}

}  // namespace orva::formats
