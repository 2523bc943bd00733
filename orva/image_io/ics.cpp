#include <algorithm>
#include <fstream>
#include <initializer_list>
#include <iostream>
#include <locale>
#include <string_view>

#include "orva/image_io/encode.h"
#include "orva/image_io/image_io.h"
#include "orva/util/fnp.h"

namespace orva::image_io {
namespace {

struct FormatWords {
  const char* format;
  const char* sign;
};

FormatWords wordsOf(int format) {
  switch (format) {
    case BYTE:
      return {"integer", "unsigned"};
    case INT:
      return {"integer", "signed"};
    case USHORT:
      return {"unshort", "unsigned"};
    case SHORT:
      return {"integer", "signed"};
    case FLOAT:
      return {"float", "signed"};
    case UINT:
      return {"unint", "unsigned"};
    case RGB:
      return {"rgb", "unsigned"};
    case SHORTRGB:
      return {"srgb", "signed"};
    case INTRGB:
      return {"irgb", "signed"};
    case FLOATRGB:
      return {"frgb", "signed"};
    case RGBA:
      return {"rgba", "unsigned"};
    default:
      return {"unknown", "signed"};
  }
}

// The two files of a pair, and the name that messages show.
struct PairNames {
  std::string given;
  std::string header;
  std::string data;

  explicit PairNames(const std::string& name) : given(fnp::clean(name)) {
    const bool hasExtension = fnp::extension(given) == "ics";
    header = hasExtension ? given : given + ".ics";
    data = (hasExtension ? fnp::root(given) : given) + ".ids";
  }
};

void writeSizes(std::ostream& out, std::initializer_list<int> sizes) {
  out << "layout\tsizes";
  for (const int size : sizes) out << '\t' << size;
  out << '\n';
}

void writeStart(std::ostream& out, const PairNames& names) {
  out << "\t\n"
      << "ics_version\t1.0\n"
      << "filename\t" << fnp::tail(fnp::root(names.header)) << '\n';
}

void writeCoordinates(std::ostream& out, int bits) {
  out << "layout\tcoordinates\tvideo\n"
      << "layout\tsignificant_bits\t" << bits << '\n';
}

// Intended: what the public writers state whatever the machine's order is.
constexpr std::string_view kStatedByteOrder = "2\t1";

void writeRepresentation(std::ostream& out, const FormatWords& words, int planes,
                         std::string_view byteOrder) {
  out << "representation\tformat\t" << words.format << '\n'
      << "representation\tsign\t" << words.sign << '\n'
      << "representation\tcompression\tuncompressed\n"
      << "representation\tbyte_order\t" << byteOrder << '\n'
      << "representation\tSCIL_TYPE\t" << (planes < 2 ? "g2d" : "g3d") << '\n';
}

int bitsOf(const Image& img) { return img.pixelSize() * 8; }

void writePlainHeader(std::ostream& out, const PairNames& names, const Image& img,
                      std::string_view byteOrder) {
  writeStart(out, names);
  out << "layout\tparameters\t6\n"
      << "layout\torder\tbits\tx\ty\tz\tc\tt\n";
  writeSizes(out, {bitsOf(img), img.nx(), img.ny(), img.nz(), img.nc(), img.nt()});
  writeCoordinates(out, bitsOf(img));
  writeRepresentation(out, wordsOf(img.format()), img.nz(), byteOrder);
  out << "parameter\tex_filter\tUNDEFINED\n"
      << "parameter\texp_time\tUNDEFINED\n"
      << "history\tdate\tUNDEFINED\n"
      << "history\tUTC_seconds\tUNDEFINED\n";
}

// Intended: height stands before width, and all frames are planes of z.
template <class Info>
void writeRecordHeader(std::ostream& out, const PairNames& names, const Info& info,
                       const Image& img) {
  const int planes = img.nframes();
  writeStart(out, names);
  if (planes < 2) {
    out << "layout\tparameters\t3\n"
        << "layout\torder\tbits\tx\ty\n";
    writeSizes(out, {bitsOf(img), img.ny(), img.nx()});
  } else {
    out << "layout\tparameters\t4\n"
        << "layout\torder\tbits\tx\ty\tz\n";
    writeSizes(out, {bitsOf(img), img.ny(), img.nx(), planes});
  }
  writeCoordinates(out, bitsOf(img));
  writeRepresentation(out, {img.format() == FLOAT ? "float" : "integer", "signed"}, planes,
                      kStatedByteOrder);
  out << info << '\n';
}

void reportUnwritten(const std::string& file) {
  std::cerr << "In image_io::writeICS\n"
            << "   Error in writing " << file << '\n';
}

// The header as writeHeader(stream) puts it, then the pixels.
template <class WriteHeader>
void writePair(const PairNames& names, const Image& img, WriteHeader writeHeader) {
  std::ofstream header(names.header);
  if (!header) {
    std::cerr << "In image_io::writeICS\n"
              << "   Can not open file" << names.given << '\n'  // intended: without a blank
              << "   Ignored.\n";
    return;
  }
  header.imbue(std::locale::classic());
  writeHeader(header);
  header.close();
  if (!header) reportUnwritten(names.header);

  std::ofstream data(names.data, std::ios::binary | std::ios::trunc);
  if (!data) {
    // Intended: two streams, and the heading twice.
    std::cerr << "In image_io::writeICS\n";
    std::cout << "   Can not open file" << names.data << '\n';
    std::cerr << "  In image_io::writeICS\n";
    return;
  }
  encodePixels(data, img);
  data.close();
  if (!data) reportUnwritten(names.data);
}

template <class Info>
void writeWithRecord(const Info& info, const Image& img) {
  const PairNames names(info.datasetName());
  writePair(names, img, [&](std::ostream& out) { writeRecordHeader(out, names, info, img); });
}

}  // namespace

void encodeIcsHeader(std::ostream& out, const std::string& filename, const Image& img,
                     std::string_view byteOrder) {
  writePlainHeader(out, PairNames(filename), img, byteOrder.empty() ? kStatedByteOrder : byteOrder);
}

void writeICS(const std::string& filename, const Image& img) {
  const PairNames names(filename);
  writePair(names, img,
            [&](std::ostream& out) { writePlainHeader(out, names, img, kStatedByteOrder); });
}

void writeICS(const IcsInfo& info, const Image& img) { writeWithRecord(info, img); }

void writeICS(const MultiChannelIcsInfo& info, const Image& img) { writeWithRecord(info, img); }

Image* readICS(const std::string& /*filename*/) { return nullptr; }

}  // namespace orva::image_io
