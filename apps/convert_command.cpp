#include "apps/convert_command.h"

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "apps/input_file.h"
#include "formats/chosen_images.h"
#include "formats/file_error.h"
#include "formats/image_file.h"
#include "formats/image_source.h"
#include "formats/image_writer.h"
#include "formats/plane_choice.h"

namespace orva::apps {

ConvertCommand::ConvertCommand(CommandLine& line)
    : Subcommand(line.addSubcommand(
          "convert", "Write an image in another file format",
          "PGM, PPM and PNG hold one plane; TIFF, IHT, UIF and ICS hold stacks. PGM, PPM and "
          "UIF\n"
          "hold whole numbers from 0 to 255, PNG up to 65535. PGM, IHT and UIF hold no colour; it "
          "becomes\n"
          "luminance.\n"
          "Example: a 16-bit image as a picture to look at\n"
          "  orva convert --stretch nuclei.tif nuclei.png")) {
  options().add("in", input_, kImageFiles).required().valueText("IN REQUIRED");
  options()
      .add("out", output_,
           "File to write: .pgm, .ppm, .png, .tif, .iht, .uif or .ics; or - for standard output")
      .required()
      .check(writableFile({}))
      .valueText("OUT REQUIRED");
  options()
      .add("--format", format_,
           "Format of standard output: pgm, ppm, png, tif, ome.tif, iht or uif; default tif")
      .check(oneOf({"pgm", "ppm", "png", "tif", "ome.tif", "iht", "uif"}))
      .valueText("NAME");
  addPlaneOptions(planes_, kSlicesKept);
  options().addFlag("--stretch", stretch_,
                    "Map the range of grey pixels to 0..255, whatever the format");
  options().addFlag("--keep-type", keepsType_,
                    "Keep unsigned 16 bits in PNG, too, where the values would fit 8 bits");
  addThreadsOption();
}

// The name of the file, or one of the format that standard output has.
std::string ConvertCommand::nameOfResult() const {
  return isStandardStream(output_) ? output_ + extension() : output_;
}

std::string ConvertCommand::extension() const {
  return std::string(".").append(format_.value_or("tif"));
}

void ConvertCommand::writeColour16(const Colour16& colour, const ImageAxes& axes) const {
  std::vector<FileContent> files =
      encodeColour16(nameOfResult(), colour.pixels, colour.nx, colour.ny, axes);
  files.front().path = output_;
  writeResults(std::move(files));
}

void ConvertCommand::writeGreyOrBytes(const orva::Image& img, const ImageAxes& axes,
                                      bool isUnsigned16) const {
  writeResults(encodeResult(output_, extension(), img, stretch_ ? Fit::kStretched : Fit::kExactly,
                            {axes, isUnsigned16, keepsType_}));
}

void ConvertCommand::convertFrame(const std::string& file, ColourUse colour) const {
  const int frame = *planes_.frame;
  const std::optional<Raster> raster = readFrameRaster(file, frame);
  const ChosenImages place(file, planes_.chosen());
  if (raster && Colour16::holds(*raster) && !stretch_ && holdsColour16(nameOfResult())) {
    Colour16 all;
    all.add(*raster);
    writeColour16(all, place.axesOf(all.nx, all.ny));
    return;
  }
  const auto img = raster ? raster->toImage(colour) : readImageFile(file, frame, colour);
  writeGreyOrBytes(*img, place.axesOf(*img), raster && raster->type() == SampleType::kUint16);
}

void ConvertCommand::convert() const {
  const std::string name = nameOfResult();
  const ColourUse colour = holdsColour(name) ? ColourUse::kKept : ColourUse::kKeptIfBytes;
  const InputFile file(input_);
  if (planes_.frame) {
    convertFrame(file.path(), colour);
    return;
  }
  const ImageSource source(file.path(), planes_.series);
  KeptPlanes planes = keepPlanes(source.axes(), planes_.chosen().planes);
  const auto keepSizeAt = [&](int nx, int ny) {
    const PixelSize size = source.pixelSizeOf(nx, ny);
    planes.kept.pixelSize.x = size.x;
    planes.kept.pixelSize.y = size.y;
  };
  if (!stretch_ && holdsColour16(name) && source.isColour16() && planes.images.front().z) {
    const auto planesInColour = colourPlanes<std::uint16_t>(source, planes, planes_.level);
    keepSizeAt(planesInColour.nx, planesInColour.ny);
    writeColour16(planesInColour, planes.kept);
    return;
  }
  PlaneStack stack;
  for (const PlanarImage& image : planes.images) {
    stack.add(readPlanar(source, planes.axes, image, planes_.level, colour));
  }
  const std::unique_ptr<Image> img = stack.take();
  keepSizeAt(img->nx(), img->ny());
  writeGreyOrBytes(*img, planes.kept, source.isUnsigned16());
}

int ConvertCommand::run() {
  if (format_ && !isStandardStream(output_)) {
    throw UsageError("--format", "is for standard output (-); the name of a file has an extension");
  }
  requireSeparate({input_}, filesOf(output_));
  return statusOf(input_, [this] { convert(); });
}

}  // namespace orva::apps
