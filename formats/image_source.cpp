#include "formats/image_source.h"

#include <algorithm>
#include <array>
#include <string>
#include <vector>

#include "formats/file_error.h"
#include "formats/ome_xml.h"
#include "formats/tiff_file.h"

namespace orva::formats {
namespace {

std::string sizeText(int nx, int ny) { return std::to_string(nx) + " x " + std::to_string(ny); }

}  // namespace

std::vector<std::string> ImageSource::imagesOf(const std::string& path) {
  if (kindOf(path) != FileKind::kTiff) return {""};
  const TiffFile file(path);
  return isOmeXml(file.description()) ? omeImages(file.description())
                                      : std::vector<std::string>{""};
}

ImageSource::ImageSource(const std::string& path, std::optional<int> series) {
  const FileKind kind = kindOf(path);
  if (kind == FileKind::kTiff) {
    openTiff(path, series);
    return;
  }
  if (series.value_or(0) != 0) {
    throw FileError("has no image " + std::to_string(*series) + "; there is only one");
  }
  int planes = 1;
  if (kind == FileKind::kPng || kind == FileKind::kPpm) {
    raster_ =
        std::make_unique<Raster>(kind == FileKind::kPng ? readPngFile(path) : readPpmFile(path));
    nx_ = static_cast<int>(raster_->width());
    ny_ = static_cast<int>(raster_->height());
  } else {
    image_ = readImageFile(path, std::nullopt, ColourUse::kLuminance);
    nx_ = image_->nx();
    ny_ = image_->ny();
    planes = image_->nframes();
  }
  axes_ = axesOfPages({planes, nx_, ny_, 1});
}

ImageSource::~ImageSource() = default;

void ImageSource::openTiff(const std::string& path, std::optional<int> series) {
  tiff_ = std::make_unique<TiffFile>(path);
  const TiffFile::PageSize first = tiff_->sizeOf(0);
  const PageFacts facts{tiff_->pages(),         first.width,          first.height,
                        first.samples,          tiff_->xResolution(), tiff_->yResolution(),
                        tiff_->resolutionUnit()};
  const std::string& text = tiff_->description();
  if (isOmeXml(text)) {
    description_ = "OME";
    axes_ = omeAxes(text, series, facts);
  } else {
    if (series.value_or(0) != 0) {
      throw FileError("has no image " + std::to_string(*series) + "; there is only one");
    }
    const bool isImageJ = isImageJDescription(text);
    description_ = isImageJ ? "ImageJ" : "";
    axes_ = isImageJ ? imageJAxes(text, facts) : axesOfPages(facts);
  }
  const auto found =
      std::find_if(axes_.pages.begin(), axes_.pages.end(), [](int each) { return each >= 0; });
  const int page = found == axes_.pages.end() ? 0 : *found;
  firstPage_ = page;
  const TiffFile::PageSize size = tiff_->sizeOf(page);
  nx_ = size.width;
  ny_ = size.height;
  if (axes_.statedSize && *axes_.statedSize != std::array<int, 2>{nx_, ny_}) {
    const auto [statedX, statedY] = *axes_.statedSize;
    throw FileError("is an OME-TIFF file whose OME-XML is wrong: it states " +
                    sizeText(statedX, statedY) + " pixels, and page " + std::to_string(page) +
                    " has " + sizeText(nx_, ny_));
  }
  levels_ = tiff_->levels(page);
}

PixelSize ImageSource::pixelSizeAt(int width) const {
  PixelSize size = axes_.pixelSize;
  for (std::optional<double>* each : {&size.x, &size.y}) {
    if (*each) **each *= static_cast<double>(nx_) / width;
  }
  return size;
}

std::unique_ptr<orva::Image> ImageSource::read(int page, ColourUse colour, int level) const {
  if (level < 0 || level >= (tiff_ ? tiff_->levels(page) : 1)) {
    throw FileError("has no level " + std::to_string(level) + "; there are 0 to " +
                    std::to_string(levels_ - 1));
  }
  if (raster_) return raster_->toImage(colour);
  if (image_) return std::unique_ptr<orva::Image>(image_->frame(page));
  std::unique_ptr<orva::Image> img = tiff_->read(page, level).toImage(colour);
  if (level == 0 && (img->nx() != nx_ || img->ny() != ny_)) {
    throw FileError("its pages differ in size or pixel type; choose one with --frame");
  }
  return img;
}

std::unique_ptr<Raster> ImageSource::readRaster(int page, int level) const {
  if (tiff_) return std::make_unique<Raster>(tiff_->read(page, level));
  return raster_ ? std::make_unique<Raster>(raster_->copy()) : nullptr;
}

bool ImageSource::isUnsigned16() const {
  if (tiff_) return tiff_->isUnsigned16(firstPage_);
  return raster_ && raster_->type() == SampleType::kUint16;
}

bool ImageSource::isColour16() const {
  if (tiff_) return isUnsigned16() && tiff_->sizeOf(firstPage_).samples >= 3;
  return isUnsigned16() && raster_->isColour();
}

}  // namespace orva::formats
