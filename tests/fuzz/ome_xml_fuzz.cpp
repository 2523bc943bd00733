// The descriptions of axes in TIFF files: OME-XML and ImageJ's text, of any content. Whatever is
// accepted describes planes that the file has.
#include <cmath>
#include <string>

#include "formats/file_error.h"
#include "formats/image_axes.h"
#include "formats/ome_xml.h"
#include "formats/plane_choice.h"
#include "tests/fuzz/fuzz_target.h"

namespace orva::test {
namespace {

void requireSound(const formats::ImageAxes& axes, const formats::PageFacts& facts) {
  require(axes.nc > 0 && axes.nz > 0 && axes.nt > 0, "sizes above 0");
  const double planes = static_cast<double>(axes.nc) * axes.nz * axes.nt;
  require(planes <= formats::kMaxPlanes && static_cast<double>(axes.pages.size()) == planes,
          "a page for each plane");
  for (const int page : axes.pages) require(page >= -1 && page < facts.pages, "pages of the file");
  require(axes.channelNames.size() == static_cast<std::size_t>(axes.nc), "a name for each channel");
  for (const auto& size : {axes.pixelSize.x, axes.pixelSize.y, axes.pixelSize.z}) {
    require(!size || (*size > 0 && std::isfinite(*size)), "a size of pixels above 0");
  }
  // A file that says its axes needs no choice along z and t.
  if (axes.areKnown && planes < 4096) {
    formats::PlaneChoice choice;
    choice.channel = "0";
    require(formats::selectPlanes(axes, choice).images.size() == static_cast<std::size_t>(axes.nt),
            "an image per time");
  }
}

}  // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  Input in(data, size);
  formats::PageFacts facts{in.between(1, 40), in.between(1, 40), in.between(1, 40),
                           in.between(1, 4)};
  facts.xResolution = in.take<std::uint16_t>();
  facts.yResolution = in.take<std::uint16_t>();
  facts.resolutionUnit = in.between(0, 1) == 0 ? "inch" : "cm";
  const std::string text(in.rest());
  formats::isOmeXml(text);
  requireSound(formats::axesOfPages(facts), facts);
  requireSound(formats::imageJAxes("ImageJ=1.53t\n" + text, facts), facts);
  try {
    const auto axes = formats::omeAxes(text, {}, facts);
    requireSound(axes, facts);
    const auto again =
        formats::omeAxes(formats::omeXml(axes, facts.width, facts.height, "uint8", 1), 0,
                         {axes.nc * axes.nz * axes.nt, facts.width, facts.height, 1});
    require(again.nc == axes.nc && again.nz == axes.nz && again.nt == axes.nt, "the sizes written");
    require(again.channelNames == axes.channelNames || axes.nc > 64, "the names written");
  } catch (const formats::FileError&) {
  }
  return 0;
}

}  // namespace orva::test
