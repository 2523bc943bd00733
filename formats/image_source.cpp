#include "formats/image_source.h"

#include <algorithm>
#include <array>
#include <string>
#include <vector>

#include "formats/file_error.h"
#include "formats/ome_xml.h"
#include "formats/text.h"
#include "formats/tiff_file.h"

namespace orva::formats {
namespace {

std::string sizeText(int nx, int ny) { return std::to_string(nx) + " x " + std::to_string(ny); }

// For a file of one image.
void requireOneImage(std::optional<int> series) {
  if (series.value_or(0) == 0) return;
  throw FileError("has no image " + std::to_string(*series) + "; there is only one");
}

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
  requireOneImage(series);
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
  axes_ = axesOfPages({planes});
}

ImageSource::~ImageSource() = default;

void ImageSource::openTiff(const std::string& path, std::optional<int> series) {
  tiff_ = std::make_unique<TiffFile>(path);
  const PageFacts facts{tiff_->pages(), tiff_->xResolution(), tiff_->yResolution(),
                        tiff_->resolutionUnit()};
  const std::string& text = tiff_->description();
  if (isOmeXml(text)) {
    description_ = "OME";
    axes_ = omeAxes(text, series, facts.pages,
                    [this](int page) { return tiff_->sizeOf(page).samples; });
  } else {
    requireOneImage(series);
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
  const auto failFor = [page](const std::string& stated, const std::string& actual) {
    throw FileError("is an OME-TIFF file whose OME-XML is wrong: it states " + stated +
                    ", and page " + std::to_string(page) + " has " + actual);
  };
  if (axes_.statedSize && *axes_.statedSize != std::array<int, 2>{nx_, ny_}) {
    const auto [statedX, statedY] = *axes_.statedSize;
    failFor(sizeText(statedX, statedY) + " pixels", sizeText(nx_, ny_));
  }
  if (axes_.statedSamples && *axes_.statedSamples > size.stored) {
    failFor(std::to_string(*axes_.statedSamples) + " samples per pixel",
            std::to_string(size.stored));
  }
  levels_ = tiff_->levels(page);
}

void ImageSource::requireLevel(int page, int level) const {
  if (level == 0) return;
  const int levels = tiff_ ? tiff_->levels(page) : 1;
  if (level > 0 && level < levels) return;
  throw FileError("has no level " + std::to_string(level) + "; " + numbersBelow(levels));
}

void ImageSource::requireSizeOfFirst(std::size_t nx, std::size_t ny, int level) const {
  if (level > 0) return;
  if (nx != static_cast<std::size_t>(nx_) || ny != static_cast<std::size_t>(ny_)) failForPages();
}

std::unique_ptr<orva::Image> ImageSource::read(int page, ColourUse colour, int level) const {
  requireLevel(page, level);
  if (raster_) return raster_->toImage(colour);
  if (image_) return std::unique_ptr<orva::Image>(image_->frame(page));
  std::unique_ptr<orva::Image> img = tiff_->read(page, level).toImage(colour);
  requireSizeOfFirst(static_cast<std::size_t>(img->nx()), static_cast<std::size_t>(img->ny()),
                     level);
  return img;
}

std::unique_ptr<Raster> ImageSource::readRaster(int page, int level) const {
  requireLevel(page, level);
  if (tiff_) {
    auto raster = std::make_unique<Raster>(tiff_->read(page, level));
    requireSizeOfFirst(raster->width(), raster->height(), level);
    return raster;
  }
  return raster_ ? std::make_unique<Raster>(raster_->copy()) : nullptr;
}

PixelSize ImageSource::pixelSizeOf(int nx, int ny) const {
  PixelSize size = axes_.pixelSize;
  if (size.x) *size.x *= static_cast<double>(nx_) / nx;
  if (size.y) *size.y *= static_cast<double>(ny_) / ny;
  return size;
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
