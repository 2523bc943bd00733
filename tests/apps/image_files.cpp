#include "tests/apps/image_files.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <fstream>
#include <iterator>
#include <sstream>
#include <stdexcept>

#include "tests/apps/png_files.h"
#include "tests/apps/tiff_files.h"

namespace orva::test {
namespace {

namespace fs = std::filesystem;

void require(bool good, const std::string& what) {
  if (!good) throw std::runtime_error(what);
}

std::string bytesOfFile(const fs::path& path) {
  std::ifstream in(path, std::ios::binary);
  require(in.is_open(), "cannot read " + path.string());
  return {std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>()};
}

template <class Sample>
void encode(const Content& content, std::string& bytes) {
  for (const double v : content.values) {
    const auto sample = static_cast<Sample>(v);
    bytes.append(reinterpret_cast<const char*>(&sample), sizeof sample);
  }
}

template <class Sample>
void decode(const std::string& bytes, std::vector<double>& values) {
  for (std::size_t at = 0; at + sizeof(Sample) <= bytes.size(); at += sizeof(Sample)) {
    Sample sample{};
    std::memcpy(&sample, bytes.data() + at, sizeof sample);
    values.push_back(static_cast<double>(sample));
  }
}

// Calls `use` with a sample of the type.
template <class Use>
void withSample(ImageFormat type, Use use) {
  switch (type) {
    case USHORT:
      return use(std::uint16_t{});
    case SHORT:
      return use(std::int16_t{});
    case INT:
      return use(std::int32_t{});
    case UINT:
      return use(std::uint32_t{});
    case FLOAT:
      return use(float{});
    default:
      return use(std::uint8_t{});
  }
}

std::string pixelsOf(const Content& content) {
  std::string bytes;
  withSample(content.type, [&](auto sample) { encode<decltype(sample)>(content, bytes); });
  return bytes;
}

// All of `bytes`, which must be as many as the sizes say.
void takePixels(Content& content, const std::string& bytes) {
  std::size_t size = 0;
  withSample(content.type, [&](auto sample) {
    size = sizeof sample;
    decode<decltype(sample)>(bytes, content.values);
  });
  const auto count = static_cast<std::size_t>(content.width) *
                     static_cast<std::size_t>(content.height) *
                     static_cast<std::size_t>(content.planes * content.samples());
  require(bytes.size() == count * size, "not as many pixels as the sizes say");
}

std::string pnm(const char* magic, const Content& content) {
  return magic + std::string("\n") + std::to_string(content.width) + ' ' +
         std::to_string(content.height) + "\n255\n" + pixelsOf(content);
}

Content readPnm(const fs::path& path, const std::string& magic, ImageFormat type) {
  std::istringstream in(bytesOfFile(path));
  std::string start;
  Content content{type, 0, 0, 1, {}};
  int maxValue = 0;
  in >> start >> content.width >> content.height >> maxValue;
  require(in.good() && start == magic && maxValue == 255 && in.get() == '\n',
          "not a file " + magic);
  takePixels(content, {std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>()});
  return content;
}

std::vector<std::int32_t> fieldsOf(const std::string& file, std::size_t count) {
  require(file.size() >= 4 * count, "no header");
  std::vector<std::int32_t> fields(count);
  std::memcpy(fields.data(), file.data(), 4 * count);
  return fields;
}

Content readIht(const fs::path& path) {
  const std::string file = bytesOfFile(path);
  const auto f = fieldsOf(file, 10);
  require(f[2] == 0 && f[3] == 0 && f[4] == f[0] && f[5] == f[1] && f[8] == f[0] * f[1] * f[7],
          "not an IHT header");
  Content content{static_cast<ImageFormat>(f[6]), f[1], f[0], f[7], {}};
  takePixels(content, file.substr(40));
  return content;
}

Content readUif(const fs::path& path) {
  const std::string file = bytesOfFile(path);
  const auto f = fieldsOf(file, 5);
  require(f[3] == 1 && f[4] == BYTE, "not a UIF header of bytes");
  Content content{BYTE, f[0], f[1], f[2], {}};
  takePixels(content, file.substr(20));
  return content;
}

// libpng ends the process on an error here, as no other end is prepared.
Content readPng(const fs::path& path) {
  std::FILE* file = std::fopen(path.c_str(), "rb");
  require(file != nullptr, "cannot read " + path.string());
  png_structp png = png_create_read_struct(PNG_LIBPNG_VER_STRING, nullptr, nullptr, nullptr);
  png_infop info = png_create_info_struct(png);
  png_init_io(png, file);
  png_read_png(png, info, PNG_TRANSFORM_SWAP_ENDIAN, nullptr);
  const int depth = png_get_bit_depth(png, info);
  const int colours = png_get_color_type(png, info);
  Content content{colours == PNG_COLOR_TYPE_RGB ? RGB
                  : depth == 16                 ? USHORT
                                                : BYTE,
                  static_cast<int>(png_get_image_width(png, info)),
                  static_cast<int>(png_get_image_height(png, info)),
                  1,
                  {}};
  std::string bytes;
  for (int y = 0; y < content.height; ++y) {
    bytes.append(reinterpret_cast<const char*>(png_get_rows(png, info)[y]),
                 png_get_rowbytes(png, info));
  }
  png_destroy_read_struct(&png, &info, nullptr);
  std::fclose(file);
  require((depth == 8 || depth == 16) && colours != PNG_COLOR_TYPE_PALETTE &&
              (colours & PNG_COLOR_MASK_ALPHA) == 0 && (colours == 0 || depth == 8),
          "a PNG file of another kind");
  takePixels(content, bytes);
  return content;
}

ImageFormat typeOfPage(TIFF* tiff) {
  std::uint16_t bits = 0;
  std::uint16_t format = 0;
  std::uint16_t samples = 0;
  std::uint16_t photometric = 0;
  TIFFGetFieldDefaulted(tiff, TIFFTAG_BITSPERSAMPLE, &bits);
  TIFFGetFieldDefaulted(tiff, TIFFTAG_SAMPLEFORMAT, &format);
  TIFFGetFieldDefaulted(tiff, TIFFTAG_SAMPLESPERPIXEL, &samples);
  require(TIFFGetField(tiff, TIFFTAG_PHOTOMETRIC, &photometric) == 1, "no photometric");
  if (bits == 8 && format == SAMPLEFORMAT_UINT && samples == 3 && photometric == PHOTOMETRIC_RGB) {
    return RGB;
  }
  require(samples == 1 && photometric == PHOTOMETRIC_MINISBLACK, "a TIFF page of another kind");
  if (bits == 8 && format == SAMPLEFORMAT_UINT) return BYTE;
  if (bits == 16 && format == SAMPLEFORMAT_UINT) return USHORT;
  if (bits == 16 && format == SAMPLEFORMAT_INT) return SHORT;
  if (bits == 32 && format == SAMPLEFORMAT_INT) return INT;
  if (bits == 32 && format == SAMPLEFORMAT_UINT) return UINT;
  require(bits == 32 && format == SAMPLEFORMAT_IEEEFP, "a TIFF page of another kind");
  return FLOAT;
}

Content readTiff(const fs::path& path) {
  const std::unique_ptr<TIFF, void (*)(TIFF*)> tiff(TIFFOpen(path.c_str(), "r"), TIFFClose);
  require(tiff != nullptr, "no TIFF file");
  Content content{};
  std::string bytes;
  do {
    std::uint32_t width = 0;
    std::uint32_t height = 0;
    TIFFGetField(tiff.get(), TIFFTAG_IMAGEWIDTH, &width);
    TIFFGetField(tiff.get(), TIFFTAG_IMAGELENGTH, &height);
    const Content page{typeOfPage(tiff.get()),
                       static_cast<int>(width),
                       static_cast<int>(height),
                       content.planes,
                       {}};
    require(content.planes == 0 || (page.type == content.type && page.width == content.width &&
                                    page.height == content.height),
            "unlike pages");
    content = page;
    ++content.planes;
    std::string row(static_cast<std::size_t>(TIFFScanlineSize(tiff.get())), '\0');
    for (std::uint32_t y = 0; y < height; ++y) {
      require(TIFFReadScanline(tiff.get(), row.data(), y, 0) == 1, "a row is missing");
      bytes += row;
    }
  } while (TIFFReadDirectory(tiff.get()) == 1);
  takePixels(content, bytes);
  return content;
}

void writeTiff(const fs::path& path, const Content& content) {
  TiffForm form;
  withSample(content.type, [&](auto sample) { form.bits = std::uint16_t{8 * sizeof sample}; });
  if (content.type == SHORT || content.type == INT) form.format = SAMPLEFORMAT_INT;
  if (content.type == FLOAT) form.format = SAMPLEFORMAT_IEEEFP;
  if (content.type == RGB) form.photometric = PHOTOMETRIC_RGB;
  TiffFile file(path);
  for (int k = 0; k < content.planes; ++k) {
    const Content page = content.plane(k);
    file.page({page.width, page.height, page.samples(), page.values}, form);
  }
}

// The values behind a keyword of two words, tabs between them.
std::vector<std::string> valuesOf(const std::string& header, const std::string& keyword) {
  const std::string start = '\n' + keyword + '\t';
  const std::size_t at = header.find(start);
  require(at != std::string::npos, "no " + keyword);
  std::istringstream line(
      header.substr(at + start.size(), header.find('\n', at + 1) - at - start.size()));
  std::vector<std::string> values;
  for (std::string value; std::getline(line, value, '\t');) values.push_back(value);
  return values;
}

Content readIcs(const fs::path& path) {
  const std::string header = bytesOfFile(path);
  require(valuesOf(header, "layout\torder") ==
              std::vector<std::string>{"bits", "x", "y", "z", "c", "t"},
          "another order");
  require(valuesOf(header, "filename") == std::vector{path.stem().string()}, "another name");
  const auto sizes = valuesOf(header, "layout\tsizes");
  require(sizes.size() == 6 && sizes[4] == "1" && sizes[5] == "1", "other sizes");
  const std::string format = valuesOf(header, "representation\tformat").at(0);
  Content content{BYTE, std::stoi(sizes[1]), std::stoi(sizes[2]), std::stoi(sizes[3]), {}};
  if (format == "integer" && sizes[0] == "16") content.type = SHORT;
  if (format == "integer" && sizes[0] == "32") content.type = INT;
  if (format == "unint") content.type = UINT;
  if (format == "float") content.type = FLOAT;
  if (format == "rgb") content.type = RGB;
  takePixels(content, bytesOfFile(fs::path(path).replace_extension(".ids")));
  return content;
}

}  // namespace

Content Content::plane(int k) const {
  const std::ptrdiff_t size = std::ptrdiff_t{width} * height * samples();
  return {type, width, height, 1, {values.begin() + k * size, values.begin() + (k + 1) * size}};
}

std::ostream& operator<<(std::ostream& out, const Content& content) {
  return out << "type " << content.type << ", " << content.width << " x " << content.height << " x "
             << content.planes << ' ' << ::testing::PrintToString(content.values);
}

std::string fieldsAnd(const std::vector<std::int32_t>& fields, const std::string& rest) {
  std::string bytes(fields.size() * 4, '\0');
  std::memcpy(bytes.data(), fields.data(), bytes.size());
  return bytes + rest;
}

std::string iht(const Content& c) {
  return fieldsAnd({c.height, c.width, 0, 0, c.height, c.width, c.type, c.planes,
                    c.width * c.height * c.planes, 0},
                   pixelsOf(c));
}

std::string uif(const Content& c) {
  return fieldsAnd({c.width, c.height, c.planes, 1, c.type}, pixelsOf(c));
}

std::string ppm(const Content& colour) { return pnm("P6", colour); }

bool formatHolds(const std::string& extension, const Content& c) {
  if (c.planes > 1 && (extension == ".pgm" || extension == ".ppm" || extension == ".png")) {
    return false;
  }
  const auto isOneOf = [&c](std::initializer_list<ImageFormat> types) {
    return std::find(types.begin(), types.end(), c.type) != types.end();
  };
  if (extension == ".ppm") return isOneOf({RGB});
  if (extension == ".png") return isOneOf({BYTE, USHORT, RGB});
  if (extension == ".iht") return isOneOf({BYTE, SHORT, INT, FLOAT});
  return extension == ".tif" || c.type == BYTE;
}

void writeContent(const fs::path& path, const Content& content) {
  const std::string extension = path.extension().string();
  require(formatHolds(extension, content), "the format does not hold this");
  if (extension == ".tif") return writeTiff(path, content);
  if (extension == ".png") {
    return writePng(path, {content.width, content.height, content.samples(), content.values},
                    {.depth = content.type == USHORT ? 16 : 8,
                     .colourType = content.type == RGB ? PNG_COLOR_TYPE_RGB : PNG_COLOR_TYPE_GRAY});
  }
  std::ofstream out(path, std::ios::binary);
  if (extension == ".pgm") out << pnm("P5", content);
  if (extension == ".ppm") out << ppm(content);
  if (extension == ".iht") out << iht(content);
  if (extension == ".uif") out << uif(content);
  out.close();
  require(out.good(), "can not write " + path.string());
}

Content readContent(const fs::path& path) {
  const std::string extension = path.extension().string();
  if (extension == ".pgm") return readPnm(path, "P5", BYTE);
  if (extension == ".ppm") return readPnm(path, "P6", RGB);
  if (extension == ".png") return readPng(path);
  if (extension == ".tif") return readTiff(path);
  if (extension == ".iht") return readIht(path);
  if (extension == ".uif") return readUif(path);
  require(extension == ".ics", "unknown extension");
  return readIcs(path);
}

namespace {

template <class T>
std::shared_ptr<Image> imageFrom(const Content& c) {
  auto img = std::make_shared<image<T>>(c.width, c.height, c.planes, 1, 1);
  std::transform(c.values.begin(), c.values.end(), img->pixels(),
                 [](double v) { return static_cast<T>(v); });
  return img;
}

std::shared_ptr<Image> imageFrom(const Content& c) {
  switch (c.type) {
    case BYTE:
      return imageFrom<unsigned char>(c);
    case SHORT:
      return imageFrom<short>(c);
    case USHORT:
    case INT:
      return imageFrom<int>(c);
    case UINT:
      return imageFrom<unsigned int>(c);
    case FLOAT:
      return imageFrom<float>(c);
    default:
      throw std::runtime_error("colour");
  }
}

}  // namespace

AsImage::AsImage(const Content& content) : image_(imageFrom(content)) {}

}  // namespace orva::test
