#include "apps/convert_command.h"

#include <cstdint>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "apps/input_file.h"
#include "formats/file_error.h"
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
  addThreadsOption();
}

namespace {

// The pixels of planes in colour of 16 bits, which no image of the library holds.
std::vector<GenericRgb<std::uint16_t>> colour16(const ImageSource& source, const KeptPlanes& planes,
                                                int level, int& nx, int& ny) {
  std::vector<GenericRgb<std::uint16_t>> pixels;
  for (const PlanarImage& image : planes.images) {
    const int page = planes.axes.pageOf({image.c, image.z.value_or(0), image.t});
    const auto raster = source.readRaster(page, level);
    if (!raster->isColour() || raster->type() != SampleType::kUint16 ||
        (!pixels.empty() && (raster->width() != static_cast<std::size_t>(nx) ||
                             raster->height() != static_cast<std::size_t>(ny)))) {
      throw FileError("its pages differ in size or pixel type; choose one with --frame");
    }
    nx = static_cast<int>(raster->width());
    ny = static_cast<int>(raster->height());
    const std::size_t samples = raster->pixelBytes() / sizeof(std::uint16_t);
    for (std::size_t y = 0; y < raster->height(); ++y) {
      const auto* from = reinterpret_cast<const std::uint16_t*>(raster->row(y));
      for (std::size_t x = 0; x < raster->width(); ++x, from += samples) {
        pixels.push_back({from[0], from[1], from[2]});
      }
    }
  }
  return pixels;
}

}  // namespace

void ConvertCommand::convert() const {
  const Fit fit = stretch_ ? Fit::kStretched : Fit::kExactly;
  const std::string extension = std::string(".").append(format_.value_or("tif"));
  const std::string name = isStandardStream(output_) ? output_ + extension : output_;
  const ColourUse colour = holdsColour(name) ? ColourUse::kKept : ColourUse::kKeptIfBytes;
  const InputFile file(input_);
  if (planes_.frame) {
    const auto img = readImageFile(file.path(), *planes_.frame, colour);
    writeResults(encodeResult(output_, extension, *img, fit));
    return;
  }
  const ImageSource source(file.path(), planes_.series);
  const KeptPlanes planes = keepPlanes(source.axes(), planes_.chosen().planes);
  if (fit == Fit::kExactly && holdsColour16(name) && source.isColour16() &&
      planes.images.front().z) {
    int nx = 0;
    int ny = 0;
    const auto pixels = colour16(source, planes, planes_.level, nx, ny);
    std::vector<FileContent> files = encodeColour16(name, pixels, nx, ny, planes.kept);
    files.front().path = output_;
    writeResults(std::move(files));
    return;
  }
  PlaneStack stack;
  for (const PlanarImage& image : planes.images) {
    stack.add(readPlanar(source, planes.axes, image, planes_.level, colour));
  }
  writeResults(
      encodeResult(output_, extension, *stack.take(), fit, {planes.kept, source.isUnsigned16()}));
}

int ConvertCommand::run() {
  if (format_ && !isStandardStream(output_)) {
    throw UsageError("--format", "is for standard output (-); the name of a file has an extension");
  }
  requireSeparate({input_}, filesOf(output_));
  return statusOf(input_, [this] { convert(); });
}

}  // namespace orva::apps
