// The descriptions of axes in TIFF files: OME-XML and ImageJ's text, of any content. Whatever is
// accepted describes planes that the file has.
#include <cmath>
#include <optional>
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

// What is written of the axes is read as they are.
void requireReadBack(const formats::ImageAxes& axes, int width, int height) {
  if (axes.pages.size() > 4096) return;  // a channel takes more text than a description has
  const auto again = formats::omeAxes(formats::omeXml(axes, width, height, "uint8", 1), 0,
                                      static_cast<int>(axes.pages.size()), [](int) { return 1; });
  require(again.nc == axes.nc && again.nz == axes.nz && again.nt == axes.nt, "the sizes written");
  require(again.channelNames == axes.channelNames, "the names written");
  require(again.bitDepth == axes.bitDepth, "the bit depth written");
  require(again.pixelSize == axes.pixelSize, "the size of a pixel written");
}

}  // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  Input in(data, size);
  formats::PageFacts facts{in.between(1, 40)};
  const int width = in.between(1, 40);
  const int height = in.between(1, 40);
  const int samples = in.between(1, 4);
  facts.xResolution = in.take<std::uint16_t>();
  facts.yResolution = in.take<std::uint16_t>();
  facts.resolutionUnit = in.between(0, 1) == 0 ? "inch" : "cm";
  const std::string text(in.rest());
  formats::isOmeXml(text);
  requireSound(formats::axesOfPages(facts), facts);
  requireSound(formats::imageJAxes("ImageJ=1.53t\n" + text, facts), facts);
  for (const std::optional<int> series : {std::optional<int>(), {0}, {1}, {2}}) {
    std::optional<formats::ImageAxes> axes;
    try {
      axes = formats::omeAxes(text, series, facts.pages, [&](int page) {
        require(page >= 0 && page < facts.pages, "a page of the file");
        return samples;
      });
    } catch (const formats::FileError&) {
      continue;
    }
    requireSound(*axes, facts);
    requireReadBack(*axes, width, height);
  }
  return 0;
}

}  // namespace orva::test
