#include "formats/chosen_images.h"

#include <array>
#include <cstdio>

#include "formats/file_error.h"
#include "formats/image_file.h"

namespace orva::formats {

ChosenImages::ChosenImages(const std::string& path, const FileChoice& choice, Slices slices)
    : path_(path), frame_(choice.frame), level_(choice.level) {
  if (frame_) {
    selection_.images.emplace_back();
    return;
  }
  source_.emplace(path, choice.series);
  PlaneChoice planes = choice.planes;
  if (slices == Slices::kVolume && !planes.z && !planes.projection) {
    isVolume_ = true;
    planes.eachSlice = false;
    // One image per time; pages of unknown meaning are slices unless the choice says otherwise.
    if (source_->axes().areKnown || !(planes.channel || planes.hasTimes())) {
      planes.projection = Projection::kMax;
    }
  }
  selection_ = selectPlanes(source_->axes(), planes);
}

ChosenImages::Place ChosenImages::placeOf(std::size_t i) const {
  if (frame_) return {{}, {}, *frame_, {}};
  const auto several = [](int n, std::optional<int> k) { return n > 1 ? k : std::nullopt; };
  const PlanarImage& image = selection_.images[i];
  const bool isProjected = selection_.axes.nz > 1 && !image.z && !isVolume_;
  const char* of = image.projection == Projection::kMean ? "mean" : "max";
  const char* projection = isProjected ? of : "";
  return {selection_.variesInT ? std::optional(image.t) : std::nullopt,
          selection_.variesInZ ? image.z : std::nullopt,
          selection_.axes.pageOf({image.c, image.z.value_or(0), image.t}),
          {several(selection_.axes.nc, image.c), several(selection_.axes.nz, image.z),
           several(selection_.axes.nt, image.t),
           (selection_.axes.nc > 1) + (selection_.axes.nz > 1) + (selection_.axes.nt > 1) > 1},
          projection,
          level_};
}

PixelSize ChosenImages::pixelSizeOf(int nx, int ny) const {
  if (source_) return source_->pixelSizeOf(nx, ny);
  if (kindOf(path_) != FileKind::kTiff) return {};
  try {
    // The page may be another image, or a smaller size of the one that is described.
    const ImageSource described(path_);
    const bool isOfItsSize = described.nx() == nx && described.ny() == ny;
    return isOfItsSize ? described.axes().pixelSize : PixelSize{};
  } catch (const FileError&) {
    return {};  // --frame reads a page whatever the file says of its axes
  }
}

ImageAxes ChosenImages::axesOf(const orva::Image& img) const {
  return axesOf(img.nx(), img.ny(), img.nframes());
}

ImageAxes ChosenImages::axesOf(int nx, int ny, int nz) const {
  ImageAxes axes;
  axes.nz = nz;
  axes.areKnown = axes.nz == 1 || (source_ && source_->axes().areKnown);
  axes.pixelSize = pixelSizeOf(nx, ny);
  if (axes.nz == 1) axes.pixelSize.z.reset();
  return axes;
}

double ChosenImages::reductionOf(const orva::Image& img) const {
  return source_ ? static_cast<double>(source_->nx()) / img.nx() : 1.0;
}

std::unique_ptr<orva::Image> ChosenImages::read(std::size_t i) const {
  if (frame_) {
    return readImageFile(path_, *frame_, ColourUse::kLuminance);
  }
  if (isVolume_) {
    return readVolume(*source_, selection_.axes, selection_.images[i], level_);
  }
  return readPlanar(*source_, selection_.axes, selection_.images[i], level_);
}

bool ChosenImages::isUnsigned16() const {
  if (source_) return source_->isUnsigned16();
  const std::optional<Raster> samples = readFrameRaster(path_, *frame_);
  return samples && samples->type() == SampleType::kUint16;
}

std::unique_ptr<orva::Image> ChosenImages::readOfChannel(std::size_t i,
                                                         const std::string& channel) const {
  PlanarImage image = selection_.images[i];
  image.c = numberOfChannel(selection_.axes, channel);
  return readPlanar(*source_, selection_.axes, image, level_);
}

std::string endingOf(const ChosenImages::Place& place) {
  const auto part = [](char axis, std::optional<int> index) {
    if (!index) return std::string();
    std::array<char, 16> text{};
    std::snprintf(text.data(), text.size(), "_%c%04d", axis, *index);
    return std::string(text.data());
  };
  return part('t', place.t) + part('z', place.z);
}

std::string fragmentOf(const ChosenImages::Place& place) {
  std::string fragment;
  const auto append = [&fragment](const char* name, std::optional<int> index) {
    if (!index) return;
    fragment += fragment.empty() ? '#' : '&';
    fragment += name + std::to_string(*index);
  };
  append("t=", place.t);
  append("z=", place.z);
  return fragment;
}

}  // namespace orva::formats
