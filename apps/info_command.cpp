#include "apps/info_command.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstdlib>
#include <limits>
#include <memory>
#include <vector>

#include "apps/input_file.h"
#include "formats/file_error.h"
#include "formats/image_file.h"
#include "formats/image_source.h"
#include "formats/text.h"
#include "orva/image_io/icsparser.h"

namespace orva::apps {
namespace {

std::string line(const std::string& name, const std::string& value) {
  return name + ": " + value + '\n';
}

std::string line(const std::string& name, int value) { return line(name, std::to_string(value)); }

const char* nameOf(FileKind kind) {
  constexpr std::array kNames{"PGM", "PPM", "PNG", "TIFF", "IHT", "UIF", "ICS"};
  return kNames.at(static_cast<std::size_t>(kind));
}

const char* typeOf(const orva::Image& img) {
  constexpr std::array kNames{"BYTE", "INT", "USHORT", "SHORT", "FLOAT", "UINT", "RGB"};
  return kNames.at(static_cast<std::size_t>(img.format()));
}

// The minimum and maximum of many samples.
class Range {
 public:
  void add(const orva::Image& img) {
    if (img.format() == orva::FLOAT) hasFloats_ = true;
    if (const auto* colour = dynamic_cast<const orva::image<Rgb>*>(&img)) {
      for (int i = 0; i < colour->npix(); ++i) {
        const Rgb& p = colour->pixels()[i];
        add(std::min({p.c0, p.c1, p.c2}));
        add(std::max({p.c0, p.c1, p.c2}));
      }
    } else if (const auto* whole = dynamic_cast<const orva::image<int>*>(&img)) {
      // Image::pixel() rounds what a float does not hold.
      std::for_each(whole->pixels(), whole->pixels() + whole->npix(), [this](int v) { add(v); });
    } else if (const auto* wide = dynamic_cast<const orva::image<unsigned int>*>(&img)) {
      std::for_each(wide->pixels(), wide->pixels() + wide->npix(), [this](unsigned v) { add(v); });
    } else {
      for (int i = 0; i < img.npix(); ++i) add(img.pixel(i));
    }
  }

  // Without the pixels that are no numbers.
  std::string text() const { return min_ > max_ ? "none" : textOf(min_) + " to " + textOf(max_); }

 private:
  using Rgb = orva::GenericRgb<unsigned char>;

  void add(double v) {
    if (v < min_) min_ = v;
    if (v > max_) max_ = v;
  }

  std::string textOf(double v) const {
    return hasFloats_ ? shortestDecimal(static_cast<float>(v))
                      : std::to_string(static_cast<std::int64_t>(v));
  }

  bool hasFloats_ = false;
  double min_ = std::numeric_limits<double>::infinity();
  double max_ = -std::numeric_limits<double>::infinity();
};

std::string describePlane(const orva::Image& img) {
  return line("width", img.nx()) + line("height", img.ny());
}

// What a description says of the axes, and the size of a pixel; nothing for pages without one.
std::string describeAxes(const ImageSource& source) {
  const ImageAxes& axes = source.axes();
  std::string text;
  if (*source.description() != '\0') {
    text += line("description", source.description());
    text += axes.areKnown
                ? line("channels", axes.nc) + line("slices", axes.nz) + line("times", axes.nt)
                : line("axes", "do not fit the number of pages");
  }
  std::string names;
  for (std::size_t c = 0; c < axes.channelNames.size(); ++c) {
    if (axes.channelNames[c].empty()) continue;
    names += (names.empty() ? "" : ", ") + std::to_string(c) + ' ' + axes.channelNames[c];
  }
  if (!names.empty()) text += line("channel names", names);
  const PixelSize& size = axes.pixelSize;
  if (size.x && size.y) {
    // Resolution tags have the precision of floats.
    const auto shown = [](double v) { return shortestDecimal(static_cast<float>(v)); };
    text += line("pixel size", shown(*size.x) + " x " + shown(*size.y) +
                                   (size.z ? " x " + shown(*size.z) : "") + " um");
  }
  if (axes.bitDepth) text += line("bit depth", *axes.bitDepth);
  if (source.levels() > 1) text += line("levels", source.levels());
  return text;
}

// What describe() says, or the line `name` with what is wrong with the file.
template <class Describe>
std::string orError(const std::string& name, const Describe& describe) {
  try {
    return describe();
  } catch (const FileError& error) {
    return line(name, error.what());
  }
}

// The axes of each image of an OME-TIFF file. A wrong description does not hide the rest.
std::string describeImages(const std::string& file) {
  return orError("description", [&] {
    const std::vector<std::string> images = ImageSource::imagesOf(file);
    if (images.size() <= 1) return describeAxes(ImageSource(file));
    std::string text = line("images", static_cast<int>(images.size()));
    for (std::size_t i = 0; i < images.size(); ++i) {
      const std::string name = "image " + std::to_string(i);
      text += orError(name, [&] {
        const ImageSource source(file, static_cast<int>(i));
        return line(name, std::to_string(source.nx()) + " x " + std::to_string(source.ny()) +
                              (images[i].empty() ? "" : ", " + images[i])) +
               describeAxes(source);
      });
    }
    return text;
  });
}

// Pages may differ; the sizes and the type are those of the first.
std::string describeTiff(const std::string& file) {
  int pages = 0;
  std::string first;
  Range range;
  readTiffPages(file, [&](const Raster& page) {
    const auto img = page.toImage(ColourUse::kKeptIfBytes);
    if (pages == 0) first = describePlane(*img) + line("pixel type", typeOf(*img));
    ++pages;
    range.add(*img);
  });
  return line("pages", pages) + first + line("range", range.text());
}

std::string describeImage(const std::string& file) {
  const auto img = readImageFile(file, std::nullopt, ColourUse::kKeptIfBytes);
  Range range;
  range.add(*img);
  return describePlane(*img) + line("planes", img->nframes()) + line("pixel type", typeOf(*img)) +
         line("range", range.text());
}

// What parse_ics_header_file allocates.
struct FreeText {
  void operator()(char* text) const { std::free(text); }
};
using Text = std::unique_ptr<char, FreeText>;

std::string describeIcs(const std::string& file) {
  char* datasetText = nullptr;
  char* typeText = nullptr;
  int x = 0;
  int y = 0;
  int z = 0;
  int c = 0;
  int t = 0;
  int bigEndian = 0;
  const int known =
      parse_ics_header_file(file.c_str(), &datasetText, &typeText, &x, &y, &z, &c, &t, &bigEndian);
  const Text dataset(datasetText);
  const Text type(typeText);
  if (known == 0) throw FileError("is no ICS header, or its pixel type is unknown");
  if (x < 1 || y < 1 || z < 1 || c < 0 || t < 0)
    throw FileError("is a damaged ICS header: bad sizes");
  std::string text = line("width", x) + line("height", y) + line("depth", z);
  // A header may leave out these two.
  if (c > 0) text += line("channels", c);
  if (t > 0) text += line("time points", t);
  text += line("pixel type", type.get());
  text += line("byte order", bigEndian != 0 ? "big-endian" : "little-endian");
  if (dataset) text += line("data file", std::string(dataset.get()) + ".ids");
  return text;
}

std::string describe(const std::string& name) {
  const InputFile input(name);
  const std::string& file = input.path();
  const FileKind kind = kindOf(file);
  const std::string start = line("file", name) + line("format", nameOf(kind));
  if (kind == FileKind::kIcs) return start + describeIcs(file);
  if (kind == FileKind::kTiff) return start + describeTiff(file) + describeImages(file);
  return start + describeImage(file);
}

}  // namespace

InfoCommand::InfoCommand(CommandLine& line)
    : Subcommand(line.addSubcommand(
          "info", "Show the sizes, the pixel type and the range of an image",
          "Pixel types: BYTE (8-bit, unsigned), SHORT (16-bit, signed), INT and UINT "
          "(32-bit), FLOAT, RGB.\n"
          "Unsigned 16-bit pixels are held as INT. Sizes and type of a TIFF file are those "
          "of its first\n"
          "page. Of an ICS pair all is as the header states it.\n"
          "Example:\n"
          "  orva info nuclei.tif")) {
  options()
      .add("file", file_,
           "PGM, PPM, PNG, TIFF, IHT or UIF file, the header of an ICS pair, or - for standard "
           "input")
      .required();
}

int InfoCommand::run() {
  return statusOf(file_, [this] { print(describe(file_), "the description"); });
}

}  // namespace orva::apps
