// The command's readers on any file: PGM behind its check, PPM, PNG and TIFF, told apart by their
// first bytes. The first byte of an input chooses a frame or all; colour is asked for in each way,
// and planes and projections by the axes that the file states.
#include <cstdint>
#include <optional>
#include <string>

#include "formats/file_error.h"
#include "formats/image_file.h"
#include "formats/image_source.h"
#include "formats/plane_choice.h"
#include "tests/fuzz/command_read.h"
#include "tests/fuzz/operations/compare.h"
#include "tests/support/reference/image.h"

namespace orva::test {
namespace {

using Frame = std::optional<int>;

// Pixels of an image that is read once only: a few bytes of a file may hold very many.
constexpr int kLarge = 1 << 20;

class Reader {
 public:
  explicit Reader(std::string_view content) : file_(content) {}

  CommandRead read(Frame frame, formats::ColourUse colour) const {
    return commandRead([&] { return formats::readImageFile(file_.name(), frame, colour); });
  }

 private:
  ContentFile file_;
};

// Grey stays as it is, and colour becomes its brightness.
void requireBrightness(const Image& img, const Image& kept) {
  if (kept.format() != RGB) {
    return requireSameImage(img, kept, "grey whatever is asked of colour");
  }
  require(img.format() == FLOAT && isSameShape(img, kept), "brightness in floats");
  const auto* brightness = static_cast<const float*>(img.data());
  const auto* colours = static_cast<const reference::Rgb*>(kept.data());
  for (int i = 0; i < kept.npix(); ++i) {
    // The reference implementation weighs blue, green, red; a file's colour begins with red.
    const float expected =
        reference::Typed<reference::Rgb>::toFloat({colours[i].c2, colours[i].c1, colours[i].c0});
    require(isSame(brightness[i], expected), "the brightness of the colour that is kept");
  }
}

// The three uses of colour agree on a frame or a stack. Gives the image with its colours.
CommandRead readInEachWay(const Reader& reader, Frame frame) {
  CommandRead kept = reader.read(frame, formats::ColourUse::kKept);
  if (kept.img && kept.img->npix() > kLarge) return kept;
  const CommandRead brightness = reader.read(frame, formats::ColourUse::kLuminance);
  const CommandRead either = reader.read(frame, formats::ColourUse::kKeptIfBytes);
  if (kept.img) {
    require(brightness.img && either.img, "an image in each way");
    requireBrightness(*brightness.img, *kept.img);
    requireSameImage(*either.img, *kept.img, "colour of bytes kept");
  } else if (kept.failure == "has colour of other samples than bytes, which can not be kept") {
    // Pages of a stack may fit together in one way and not in another.
    if (!frame) return kept;
    require(brightness.img && either.img, "the brightness of wide colour");
    require(brightness.img->format() == FLOAT, "the brightness of wide colour in floats");
    requireSameImage(*either.img, *brightness.img, "the brightness of colour that is not kept");
  } else if (frame) {
    require(brightness.failure == kept.failure && either.failure == kept.failure,
            "one failure in each way");
  }
  return kept;
}

// Frame k is plane k of all, and there are no others.
void requirePlane(const Reader& reader, const Image& all, int k) {
  const CommandRead one = reader.read(k, formats::ColourUse::kKept);
  require((one.img != nullptr) == (k < all.nz()), "a frame for each plane");
  if (!one.img) return;
  const std::string planes = reference::pixelBytes(all);
  const std::size_t bytes = planes.size() / static_cast<std::size_t>(all.nz());
  require(one.img->format() == all.format() && one.img->nx() == all.nx() &&
              one.img->ny() == all.ny() && one.img->nframes() == 1,
          "the size and pixel type of a plane");
  require(
      reference::pixelBytes(*one.img) == planes.substr(static_cast<std::size_t>(k) * bytes, bytes),
      "the pixels of a plane");
}

// Planes and projections of the file as the axes that it states, at two levels: an image of one
// size or an error.
void readPlanes(const std::string& content) {
  const ContentFile file(content);
  try {
    const formats::ImageSource source(file.name());
    if (std::int64_t{source.nx()} * source.ny() > kLarge) return;
    for (const auto projection : {formats::Projection::kMax, formats::Projection::kMean}) {
      formats::PlaneChoice choice;
      choice.channel = source.axes().areKnown ? std::optional<std::string>("0") : std::nullopt;
      choice.projection = projection;
      const formats::PlaneSelection selection = formats::selectPlanes(source.axes(), choice);
      for (const int level : {0, 1}) {
        const CommandRead read = commandRead([&] {
          return formats::readPlanar(source, selection.axes, selection.images.front(), level);
        });
        if (!read.img) continue;
        require(read.img->nx() <= source.nx() && read.img->ny() <= source.ny(),
                "levels of at most the full size");
        if (level > 0) continue;
        require(read.img->nx() == source.nx() && read.img->ny() == source.ny(), "the full size");
      }
    }
  } catch (const formats::FileError&) {
  }
}

}  // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  Input input(data, size);
  const int choice = input.take<std::uint8_t>();
  const std::string content(input.rest());
  const Reader reader(content);
  readPlanes(content);
  const int k = choice / 2 % 16;
  if (choice % 2 == 1) {
    readInEachWay(reader, k);
    return 0;
  }
  const CommandRead all = readInEachWay(reader, std::nullopt);
  const bool isPgm = content.starts_with("P5");
  if (isPgm || content.starts_with("P6")) {
    requireSamePnm(all, readPnm(content, isPgm ? 1 : 3), isPgm ? BYTE : RGB);
  }
  if (!all.img || all.img->npix() > kLarge) return 0;
  requirePlane(reader, *all.img, k);
  requirePlane(reader, *all.img, all.img->nz() - 1);
  requirePlane(reader, *all.img, all.img->nz());
  return 0;
}

}  // namespace orva::test
