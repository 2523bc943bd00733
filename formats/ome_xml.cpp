#include "formats/ome_xml.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <pugixml.hpp>
#include <set>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

#include "formats/file_error.h"
#include "formats/length_unit.h"
#include "formats/text.h"

namespace orva::formats {
namespace {

using pugi::xml_node;

constexpr std::size_t kMaxText = std::size_t{256} << 20U;

[[noreturn]] void fail(const std::string& what) {
  throw FileError("is an OME-TIFF file whose OME-XML is wrong: " + what);
}

[[noreturn]] void failForValue(const char* name, std::string_view value) {
  constexpr std::size_t kShown = 40;
  fail(std::string(name) + " is \"" + firstCharacters(value, kShown) + '"');
}

// The name without the prefix of its namespace.
std::string_view localName(const xml_node& node) {
  const std::string_view name = node.name();
  return name.substr(name.find(':') + 1);  // npos + 1 is 0
}

std::string nameOf(const xml_node& node) { return printableUtf8(node.attribute("Name").value()); }

std::vector<xml_node> childrenOf(const xml_node& node, std::string_view name) {
  std::vector<xml_node> children;
  for (const xml_node& child : node) {
    if (localName(child) == name) children.push_back(child);
  }
  return children;
}

// A whole number in min .. max; none where the attribute is missing.
std::optional<int> numberOf(const xml_node& node, const char* name, int min, int max) {
  const pugi::xml_attribute attribute = node.attribute(name);
  if (!attribute) return std::nullopt;
  const std::string_view text = attribute.value();
  const std::optional<int> value = parsedNumber<int>(text);
  if (!value || *value < min || *value > max) failForValue(name, text);
  return value;
}

int sizeOf(const xml_node& pixels, const char* name) {
  const auto size = numberOf(pixels, name, 1, std::numeric_limits<int>::max());
  if (!size) fail(std::string(name) + " is missing");
  return *size;
}

std::optional<double> pixelSizeOf(const xml_node& pixels, const std::string& axis) {
  const std::string name = "PhysicalSize" + axis;
  const std::string_view text = pixels.attribute(name.c_str()).value();
  const std::optional<double> size = parsedNumber<double>(text);
  const pugi::xml_attribute unit = pixels.attribute((name + "Unit").c_str());
  return size ? micrometres(*size, unit ? unit.value() : "um") : std::nullopt;
}

// The sizes of one image, in planes.
struct Sizes {
  int nc;
  int nz;
  int nt;
  int samples;  // of each plane

  int planes() const { return nc * nz * nt; }
};

// `samplesOfPage` are those of the image's first page.
Sizes sizesOf(const xml_node& pixels, const std::vector<xml_node>& channels, int samplesOfPage) {
  const int sizeC = sizeOf(pixels, "SizeC");
  Sizes s{sizeC, sizeOf(pixels, "SizeZ"), sizeOf(pixels, "SizeT"), 1};
  if (static_cast<double>(s.nc) * s.nz * s.nt > kMaxPlanes) fail("it has too many planes");
  for (const xml_node& channel : channels) {
    const int samples = numberOf(channel, "SamplesPerPixel", 1, sizeC).value_or(1);
    if (&channel != &channels.front() && samples != s.samples) {
      throw FileError(
          "is an OME-TIFF file whose channels differ in SamplesPerPixel, which is not "
          "read; save each channel as a page of its own");
    }
    s.samples = samples;
  }
  // Some writers state no channel for colour.
  if (s.samples == 1 && samplesOfPage > 1 && sizeC % samplesOfPage == 0) s.samples = samplesOfPage;
  if (sizeC % s.samples != 0) fail("SizeC does not fit SamplesPerPixel");
  s.nc = sizeC / s.samples;
  return s;
}

// The axes that vary from page to page, the fastest first: of "XYCZT" these are "CZT".
std::string_view orderOf(const xml_node& pixels) {
  const std::string_view order = pixels.attribute("DimensionOrder").value();
  std::string sorted(order.substr(0, 8));
  std::sort(sorted.begin(), sorted.end());
  if (!order.starts_with("XY") || sorted != "CTXYZ") {
    failForValue("DimensionOrder", order);
  }
  return order.substr(2);
}

// The number of a plane in the order of the pages, and back.
class PageOrder {
 public:
  PageOrder(std::string_view order, const Sizes& sizes) {
    for (std::size_t i = 0; i < 3; ++i) {
      size_[i] = order[i] == 'C' ? sizes.nc : order[i] == 'Z' ? sizes.nz : sizes.nt;
      place_[order[i] == 'C' ? 0 : order[i] == 'Z' ? 1 : 2] = i;
    }
  }

  int numberOf(const PlaneIndex& p) const {
    const std::array<int, 3> index{p.c, p.z, p.t};
    std::array<int, 3> inOrder{};
    for (std::size_t axis = 0; axis < 3; ++axis) inOrder[place_[axis]] = index[axis];
    return inOrder[0] + size_[0] * (inOrder[1] + size_[1] * inOrder[2]);
  }

  PlaneIndex planeOf(int number) const {
    const std::array<int, 3> inOrder{number % size_[0], number / size_[0] % size_[1],
                                     number / size_[0] / size_[1]};
    return {inOrder[place_[0]], inOrder[place_[1]], inOrder[place_[2]]};
  }

 private:
  std::array<int, 3> size_{};
  std::array<std::size_t, 3> place_{};  // of c, z and t in the order
};

// Refuses a set of files. A file may name itself in every TiffData element.
void requireOneFile(const xml_node& ome, const std::vector<xml_node>& parts) {
  for (const xml_node& only : childrenOf(ome, "BinaryOnly")) {
    throw FileError("is one file of an OME-TIFF set whose description is in " +
                    std::string(only.attribute("MetadataFile").value()) +
                    "; save the set as a single file");
  }
  const std::string_view own = ome.attribute("UUID").value();
  std::set<std::string> others;
  std::set<std::string> names;
  for (const xml_node& part : parts) {
    for (const xml_node& uuid : childrenOf(part, "UUID")) {
      const std::string_view id = uuid.text().get();
      if (!own.empty() && id == own) continue;
      others.emplace(id);
      names.emplace(uuid.attribute("FileName").value());
    }
  }
  // Without a name of its own, the only file that is named is this one.
  if (others.empty() || (own.empty() && others.size() == 1)) return;
  std::string list;
  constexpr std::size_t kNamed = 3;
  std::size_t n = 0;
  for (const std::string& name : names) {
    if (n++ == kNamed) break;
    list += (list.empty() ? "" : ", ") + name;
  }
  throw FileError("is one file of an OME-TIFF set, with planes in " + list +
                  (names.size() > kNamed ? " and others" : "") + "; save the set as a single file");
}

// The first page of an image.
int firstPageOf(const std::vector<xml_node>& parts, int pages) {
  return parts.empty() ? 0 : numberOf(parts.front(), "IFD", 0, pages - 1).value_or(0);
}

std::vector<int> pagesOf(const xml_node& pixels, const Sizes& sizes,
                         const std::vector<xml_node>& parts, int pagesOfFile) {
  const PageOrder order(orderOf(pixels), sizes);
  std::vector<int> pages(static_cast<std::size_t>(sizes.planes()), -1);
  const auto assign = [&](int firstPage, int firstPlane, int count) {
    for (int i = 0; i < count; ++i) {
      pages[placeOf(order.planeOf(firstPlane + i), sizes.nc, sizes.nz)] = firstPage + i;
    }
  };
  if (parts.empty()) {
    assign(0, 0, std::min(sizes.planes(), pagesOfFile));
    return pages;
  }
  for (const xml_node& part : parts) {
    const auto page = numberOf(part, "IFD", 0, pagesOfFile - 1);
    const int c = numberOf(part, "FirstC", 0, sizes.nc * sizes.samples - 1).value_or(0);
    const int z = numberOf(part, "FirstZ", 0, sizes.nz - 1).value_or(0);
    const int t = numberOf(part, "FirstT", 0, sizes.nt - 1).value_or(0);
    const int firstPage = page.value_or(0);
    const int firstPlane = order.numberOf({c / sizes.samples, z, t});
    const int maxCount = std::min(pagesOfFile - firstPage, sizes.planes() - firstPlane);
    const auto count = numberOf(part, "PlaneCount", 0, kMaxPlanes);
    if (count && *count > maxCount) {
      fail("it describes " + std::to_string(*count) + " planes from page " +
           std::to_string(firstPage) + " on, and the file has " + std::to_string(pagesOfFile) +
           " pages");
    }
    assign(firstPage, firstPlane, count ? *count : page ? 1 : maxCount);
  }
  return pages;
}

std::string listOf(const std::vector<xml_node>& images) {
  return numberedList(images.size(), [&](std::size_t i) {
    const std::vector<xml_node> pixels = childrenOf(images[i], "Pixels");
    std::string text = quotedName(nameOf(images[i]));
    if (!pixels.empty()) {
      text += std::string(" (") + pixels[0].attribute("SizeX").value() + " x " +
              pixels[0].attribute("SizeY").value() + ')';
    }
    return text;
  });
}

xml_node imageOf(const xml_node& ome, std::optional<int> series) {
  const std::vector<xml_node> images = childrenOf(ome, "Image");
  if (images.empty()) fail("it has no Image");
  if (!series && images.size() > 1) {
    throw FileError("holds " + std::to_string(images.size()) + " images: " + listOf(images) +
                    "; choose one with --series");
  }
  const auto chosen = static_cast<std::size_t>(series.value_or(0));
  if (chosen >= images.size()) {
    throw FileError("has no image " + std::to_string(chosen) + "; there are " + listOf(images));
  }
  return images[chosen];
}

// A parsed text.
class Document {
 public:
  explicit Document(std::string_view xml) {
    if (xml.size() > kMaxText) fail("it is too long");
    const pugi::xml_parse_result parsed =
        document_.load_buffer(xml.data(), xml.size(), pugi::parse_minimal | pugi::parse_escapes,
                              isUtf8(xml) ? pugi::encoding_utf8 : pugi::encoding_latin1);
    if (!parsed) {
      fail(std::string(parsed.description()) + " at byte " + std::to_string(parsed.offset));
    }
    if (childrenOf(document_, "OME").size() != 1) fail("it has no OME element");
  }

  xml_node ome() const { return childrenOf(document_, "OME").front(); }

 private:
  pugi::xml_document document_;
};

}  // namespace

bool isOmeXml(std::string_view description) {
  const std::size_t end = description.find_last_not_of(std::string_view(" \t\r\n\0", 5));
  if (end == std::string_view::npos) return false;
  description = description.substr(0, end + 1);
  return description.starts_with('<') || description.starts_with("\xef\xbb\xbf<")
             ? description.ends_with("OME>") || description.find("<OME ") < 1000
             : false;
}

std::vector<std::string> omeImages(std::string_view xml) {
  const Document document(xml);
  std::vector<std::string> names;
  for (const xml_node& image : childrenOf(document.ome(), "Image")) {
    names.push_back(nameOf(image));
  }
  return names;
}

ImageAxes omeAxes(std::string_view xml, std::optional<int> series, int pages,
                  const std::function<int(int page)>& samplesOf) {
  const Document document(xml);
  const xml_node ome = document.ome();
  requireOneFile(ome, {});
  const std::vector<xml_node> pixelsOfImage = childrenOf(imageOf(ome, series), "Pixels");
  if (pixelsOfImage.size() != 1) fail("its image has no Pixels");
  const xml_node& pixels = pixelsOfImage.front();
  const std::vector<xml_node> parts = childrenOf(pixels, "TiffData");
  requireOneFile(ome, parts);
  // Otherwise it would begin at the page of the first image.
  const bool namesPages = !parts.empty() && parts.front().attribute("IFD");
  if (series.value_or(0) > 0 && !namesPages) {
    fail("its image " + std::to_string(*series) + " does not name its pages (TiffData, IFD)");
  }
  const std::vector<xml_node> channels = childrenOf(pixels, "Channel");
  const Sizes sizes = sizesOf(pixels, channels, samplesOf(firstPageOf(parts, pages)));
  const int width = sizeOf(pixels, "SizeX");
  const int height = sizeOf(pixels, "SizeY");

  ImageAxes axes;
  axes.nc = sizes.nc;
  axes.nz = sizes.nz;
  axes.nt = sizes.nt;
  axes.channelNames.resize(static_cast<std::size_t>(sizes.nc));
  for (std::size_t c = 0; c < std::min(channels.size(), axes.channelNames.size()); ++c) {
    axes.channelNames[c] = nameOf(channels[c]);
  }
  axes.pixelSize = {pixelSizeOf(pixels, "X"), pixelSizeOf(pixels, "Y"), pixelSizeOf(pixels, "Z")};
  axes.bitDepth = numberOf(pixels, "SignificantBits", 1, 64);
  axes.pages = pagesOf(pixels, sizes, parts, pages);
  axes.statedSize = {width, height};
  if (!channels.empty() && sizes.samples > 1) axes.statedSamples = sizes.samples;
  return axes;
}

std::string omeXml(const ImageAxes& axes, int nx, int ny, const char* type, int samples) {
  pugi::xml_document document;
  pugi::xml_node declaration = document.append_child(pugi::node_declaration);
  declaration.append_attribute("version") = "1.0";
  declaration.append_attribute("encoding") = "UTF-8";
  pugi::xml_node ome = document.append_child("OME");
  const std::string schema = "http://www.openmicroscopy.org/Schemas/OME/2016-06";
  ome.append_attribute("xmlns") = schema.c_str();
  ome.append_attribute("xmlns:xsi") = "http://www.w3.org/2001/XMLSchema-instance";
  ome.append_attribute("xsi:schemaLocation") = (schema + ' ' + schema + "/ome.xsd").c_str();
  pugi::xml_node image = ome.append_child("Image");
  image.append_attribute("ID") = "Image:0";
  pugi::xml_node pixels = image.append_child("Pixels");
  pixels.append_attribute("ID") = "Pixels:0";
  pixels.append_attribute("DimensionOrder") = "XYCZT";
  pixels.append_attribute("Type") = type;
  pixels.append_attribute("SizeX") = nx;
  pixels.append_attribute("SizeY") = ny;
  pixels.append_attribute("SizeC") = axes.nc * samples;
  pixels.append_attribute("SizeZ") = axes.nz;
  pixels.append_attribute("SizeT") = axes.nt;
  if (axes.bitDepth) pixels.append_attribute("SignificantBits") = *axes.bitDepth;
  const auto addSize = [&](const std::string& axis, const std::optional<double>& size) {
    if (!size) return;
    const std::string name = "PhysicalSize" + axis;
    pixels.append_attribute(name.c_str()) = shortestDecimal(*size).c_str();
    pixels.append_attribute((name + "Unit").c_str()) = "\u00b5m";
  };
  addSize("X", axes.pixelSize.x);
  addSize("Y", axes.pixelSize.y);
  addSize("Z", axes.pixelSize.z);
  for (int c = 0; c < axes.nc; ++c) {
    pugi::xml_node channel = pixels.append_child("Channel");
    channel.append_attribute("ID") = ("Channel:0:" + std::to_string(c)).c_str();
    const auto i = static_cast<std::size_t>(c);
    if (i < axes.channelNames.size() && !axes.channelNames[i].empty()) {
      channel.append_attribute("Name") = printableUtf8(axes.channelNames[i]).c_str();
    }
    channel.append_attribute("SamplesPerPixel") = samples;
  }
  pugi::xml_node data = pixels.append_child("TiffData");
  data.append_attribute("IFD") = 0;
  data.append_attribute("PlaneCount") = axes.nc * axes.nz * axes.nt;
  std::ostringstream text;
  document.save(text, "", pugi::format_raw, pugi::encoding_utf8);
  return std::move(text).str();
}

}  // namespace orva::formats
