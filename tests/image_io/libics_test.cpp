// The ICS pairs that the library writes, read by another reader: libics.
//
// What it makes of them, version 1.6.6:
// - Sizes, their order and the significant bits are read as written. Forms with a record list
//   height before width, so their x is the height.
// - The format words that it knows are "integer" and "float". With the other words, and with
//   three or more bytes of colour, the type is Ics_unknown and the data size 0: the file opens and
//   its pixels cannot be read. (Asked for bytes nevertheless, it divides by zero.)
// - The line "byte_order 2 1" fits pixels of two bytes only, and there says that the most
//   significant byte comes first. Pixels are written in the machine's own order. So where the least
//   significant byte comes first:
//   - one byte: the line names a second byte that a pixel does not have. Every pixel comes as one
//     and the same byte out of memory that libics never set. No order of the bytes in the pixel
//     file helps; the line must say "1".
//   - two bytes: each pixel comes with its two bytes exchanged. They must be reversed, before
//     writing or after reading, or the line must say "1 2".
//   - four bytes: an order of two numbers is not complete, and the bytes come as they stand in the
//     file. Nothing is to be reversed.
#include <gtest/gtest.h>
#include <libics.h>

#include <array>
#include <bit>
#include <set>
#include <string>
#include <vector>

#include "orva/image_io/image_io.h"
#include "tests/support/files.h"
#include "tests/support/raw_image.h"
#include "tests/support/reference/image_io.h"
#include "tests/support/shapes.h"

namespace orva::test {
namespace {

constexpr bool kLittleEndian = std::endian::native == std::endian::little;

// A pair that libics has open.
class OpenPair {
 public:
  explicit OpenPair(const std::string& name) {
    EXPECT_EQ(IcsOpen(&ics_, name.c_str(), "r"), IcsErr_Ok) << name;
    int count = 0;
    std::array<std::size_t, ICS_MAXDIM> sizes{};
    EXPECT_EQ(IcsGetLayout(ics_, &type_, &count, sizes.data()), IcsErr_Ok);
    for (int i = 0; i < count; ++i) {
      sizes_.push_back(static_cast<int>(sizes[static_cast<std::size_t>(i)]));
      std::array<char, ICS_STRLEN_TOKEN> order{};
      std::array<char, ICS_STRLEN_TOKEN> label{};
      EXPECT_EQ(IcsGetOrder(ics_, i, order.data(), label.data()), IcsErr_Ok);
      order_ += order.data();
    }
  }
  OpenPair(const OpenPair&) = delete;
  OpenPair& operator=(const OpenPair&) = delete;
  ~OpenPair() { EXPECT_EQ(IcsClose(ics_), IcsErr_Ok); }

  Ics_DataType type() const { return type_; }
  const std::vector<int>& sizes() const { return sizes_; }
  const std::string& order() const { return order_; }
  std::size_t dataSize() const { return IcsGetDataSize(ics_); }
  std::size_t significantBits() const {
    std::size_t bits = 0;
    EXPECT_EQ(IcsGetSignificantBits(ics_, &bits), IcsErr_Ok);
    return bits;
  }
  std::vector<int> byteOrder() const { return {ics_->byteOrder, ics_->byteOrder + 4}; }

  std::vector<std::string> history() const {
    int count = 0;
    EXPECT_EQ(IcsGetNumHistoryStrings(ics_, &count), IcsErr_Ok);
    std::vector<std::string> lines;
    for (int i = 0; i < count; ++i) {
      std::array<char, ICS_LINE_LENGTH> line{};
      EXPECT_EQ(IcsGetHistoryString(ics_, line.data(), i == 0 ? IcsWhich_First : IcsWhich_Next),
                IcsErr_Ok);
      lines.emplace_back(line.data());
    }
    return lines;
  }

  // As many bytes as the pair says it has.
  std::string pixels() const {
    std::string bytes(dataSize(), '\0');
    EXPECT_EQ(IcsGetData(ics_, bytes.data(), bytes.size()), IcsErr_Ok);
    return bytes;
  }

 private:
  ICS* ics_ = nullptr;
  Ics_DataType type_ = Ics_unknown;
  std::vector<int> sizes_;
  std::string order_;
};

struct LibicsFormat {
  int code;
  int pixelSize;
  Ics_DataType plain;
  Ics_DataType record;
};

// Signed types stand for unsigned ones in the forms with a record, whose sign line always says so.
const std::vector<LibicsFormat> kLibicsFormats = {
    {0, 1, Ics_uint8, Ics_sint8},      {1, 4, Ics_sint32, Ics_sint32},
    {2, 2, Ics_unknown, Ics_sint16},   {3, 2, Ics_sint16, Ics_sint16},
    {4, 4, Ics_real32, Ics_real32},    {5, 4, Ics_unknown, Ics_sint32},
    {6, 3, Ics_unknown, Ics_unknown},  {7, 6, Ics_unknown, Ics_unknown},
    {8, 12, Ics_unknown, Ics_unknown}, {9, 12, Ics_unknown, Ics_unknown},
    {10, 4, Ics_unknown, Ics_sint32},  {11, 2, Ics_unknown, Ics_sint16}};

RawImage randomRaw(Random& random, const Shape& s, const LibicsFormat& row) {
  const auto npix = static_cast<std::size_t>(s.nx * s.ny * s.nz * s.nc * s.nt);
  std::vector<unsigned char> bytes(npix * static_cast<std::size_t>(row.pixelSize));
  for (auto& byte : bytes) byte = randomPixel<unsigned char>(random);
  return {s, row.code, bytes, std::vector<float>(npix)};
}

std::vector<Shape> shapes() {
  return {{1, 1},    {7, 5},       {5, 7},          {130, 3},
          {4, 3, 2}, {3, 5, 1, 2}, {2, 3, 1, 1, 4}, {4, 3, 2, 3, 2}};
}

class Libics : public testing::Test {
 protected:
  enum Form { kPlain, kRecord, kMultiChannel };
  static constexpr std::array<Form, 3> kForms = {kPlain, kRecord, kMultiChannel};

  std::string name() const { return dir_.file("some"); }

  void write(const Image& img, Form form) const {
    if (form == kPlain) image_io::writeICS(name(), img);
    if (form == kRecord) image_io::writeICS(image_io::IcsInfo(name()), img);
    if (form == kMultiChannel) image_io::writeICS(image_io::MultiChannelIcsInfo(name()), img);
  }

  // Replaces a piece of the header.
  void mend(const std::string& piece, const std::string& by) const {
    std::string header = readFile(name() + ".ics");
    const std::size_t at = header.find(piece);
    ASSERT_NE(at, std::string::npos);
    writeFile(name() + ".ics", header.replace(at, piece.size(), by));
  }

  // Lets the header state the machine's own order of so many bytes.
  void mendByteOrder(int count) const {
    std::string order;
    for (int i = 1; i <= count; ++i) {
      order += '\t';
      order += std::to_string(kLittleEndian ? i : count + 1 - i);
    }
    mend("byte_order\t2\t1\n", "byte_order" + order + "\n");
  }

 private:
  TempDir dir_;
};

TEST_F(Libics, ReadsSizesAndTypesOfThePlainForm) {
  Random random(381);
  for (const LibicsFormat& row : kLibicsFormats) {
    for (const Shape& s : shapes()) {
      write(randomRaw(random, s, row), kPlain);
      const OpenPair pair(name());
      EXPECT_EQ(pair.type(), row.plain) << row.code;
      EXPECT_EQ(pair.sizes(), (std::vector<int>{s.nx, s.ny, s.nz, s.nc, s.nt}));
      EXPECT_EQ(pair.order(), "xyzct");
      EXPECT_EQ(pair.significantBits(), static_cast<std::size_t>(8 * row.pixelSize));
    }
  }
}

TEST_F(Libics, ReadsHeightAsXInTheFormsWithARecordAsIsIntended) {
  Random random(382);
  for (const LibicsFormat& row : kLibicsFormats) {
    for (const Shape& s : shapes()) {
      for (const Form form : {kRecord, kMultiChannel}) {
        write(randomRaw(random, s, row), form);
        const OpenPair pair(name());
        EXPECT_EQ(pair.type(), row.record) << row.code;
        const int planes = s.nz * s.nc * s.nt;
        std::vector<int> sizes = {s.ny, s.nx};
        if (planes > 1) sizes.push_back(planes);
        EXPECT_EQ(pair.sizes(), sizes);
        EXPECT_EQ(pair.order(), planes > 1 ? "xyz" : "xy");
        EXPECT_EQ(pair.significantBits(), static_cast<std::size_t>(8 * row.pixelSize));
      }
    }
  }
}

TEST_F(Libics, ReadsTheSameByteOrderForEveryPixelType) {
  Random random(383);
  for (const LibicsFormat& row : kLibicsFormats) {
    for (const Form form : kForms) {
      write(randomRaw(random, {3, 2}, row), form);
      EXPECT_EQ(OpenPair(name()).byteOrder(), (std::vector<int>{2, 1, 0, 0}));
    }
  }
}

TEST_F(Libics, HasNoPixelsOfTypesThatItDoesNotKnow) {
  Random random(384);
  for (const LibicsFormat& row : kLibicsFormats) {
    for (const Form form : kForms) {
      write(randomRaw(random, {3, 2}, row), form);
      const Ics_DataType type = form == kPlain ? row.plain : row.record;
      const auto whole = static_cast<std::size_t>(6 * row.pixelSize);
      EXPECT_EQ(OpenPair(name()).dataSize(), type == Ics_unknown ? 0 : whole) << row.code;
    }
  }
}

TEST_F(Libics, IgnoresTheByteOrderLineForPixelsOfFourBytes) {
  Random random(385);
  for (const LibicsFormat& row : kLibicsFormats) {
    if (row.pixelSize != 4) continue;
    for (const Shape& s : oddShapesAndWidths()) {
      const RawImage img = randomRaw(random, s, row);
      for (const Form form : kForms) {
        if ((form == kPlain ? row.plain : row.record) == Ics_unknown) continue;
        write(img, form);
        EXPECT_EQ(OpenPair(name()).pixels(), reference::pixelBytes(img)) << row.code;
      }
    }
  }
}

TEST_F(Libics, ReadsPixelsOfTwoBytesAsBigEndian) {
  // So on a machine that has the least significant byte first, every pixel comes with its bytes
  // exchanged.
  Random random(386);
  for (const Shape& s : oddShapesAndWidths()) {
    image<short> img = randomImage<short>(random, s);
    const std::string reversed = reference::reversedBytes(SHORT, reference::pixelBytes(img));
    for (const Form form : kForms) {
      write(img, form);
      EXPECT_EQ(OpenPair(name()).pixels(), kLittleEndian ? reversed : reference::pixelBytes(img));
    }
  }
}

TEST_F(Libics, ReadsPixelsOfTwoBytesThatWereReversedBeforeWriting) {
  Random random(387);
  for (const Shape& s : oddShapesAndWidths()) {
    const image<short> img = randomImage<short>(random, s);
    image<short> reversed = img.duplicate();
    if (kLittleEndian) image_io::reverse_byte_order(reversed);
    for (const Form form : kForms) {
      write(reversed, form);
      EXPECT_EQ(OpenPair(name()).pixels(), reference::pixelBytes(img));
    }
  }
}

TEST_F(Libics, ReadsNoPixelOfOneByte) {
  Random random(388);
  const image<unsigned char> img = randomImage<unsigned char>(random, {16, 9, 2});
  for (const Form form : kForms) {
    write(img, form);
    const std::string read = OpenPair(name()).pixels();
    ASSERT_EQ(read.size(), 16U * 9U * 2U);
    // Nothing of the image, but one byte over and over; which one is not defined.
    EXPECT_EQ(std::set<char>(read.begin(), read.end()).size(), 1U);
    EXPECT_NE(read, reference::pixelBytes(img));
  }
}

TEST_F(Libics, ReadsEveryPixelWhenTheByteOrderLineIsMended) {
  Random random(389);
  for (const LibicsFormat& row : kLibicsFormats) {
    for (const Shape& s : oddShapesAndWidths()) {
      const RawImage img = randomRaw(random, s, row);
      for (const Form form : kForms) {
        const Ics_DataType type = form == kPlain ? row.plain : row.record;
        if (type == Ics_unknown) continue;
        write(img, form);
        mendByteOrder(row.pixelSize);
        const OpenPair pair(name());
        EXPECT_EQ(pair.type(), type);
        EXPECT_EQ(pair.pixels(), reference::pixelBytes(img)) << row.code;
      }
    }
  }
}

TEST_F(Libics, ReadsUnsignedPixelsWhenTheFormatWordIsMendedToo) {
  Random random(390);
  const auto expectRead = [&](const LibicsFormat& row, const char* word) {
    const RawImage img = randomRaw(random, {5, 4, 3, 1, 2}, row);
    write(img, kPlain);
    mend(std::string("format\t") + word, "format\tinteger");
    mendByteOrder(row.pixelSize);
    const OpenPair pair(name());
    EXPECT_EQ(pair.type(), row.plain);
    EXPECT_EQ(pair.pixels(), reference::pixelBytes(img));
  };
  expectRead({USHORT, 2, Ics_uint16, Ics_unknown}, "unshort");
  expectRead({UINT, 4, Ics_uint32, Ics_unknown}, "unint");
}

TEST_F(Libics, ReadsTheHistoryLines) {
  const image<unsigned char> img(3, 2, 1, 1, 1);
  image_io::writeICS(name(), img);
  EXPECT_EQ(OpenPair(name()).history(),
            (std::vector<std::string>{"date\tUNDEFINED", "UTC_seconds\tUNDEFINED"}));
  image_io::IcsInfo info(name());
  info.annotate("first line\nsecond line");
  image_io::writeICS(info, img);
  const std::vector<std::string> lines = OpenPair(name()).history();
  ASSERT_GE(lines.size(), 2U);
  EXPECT_EQ(lines[lines.size() - 2], "Annotation\tfirst line");
  EXPECT_EQ(lines.back(), "Annotation\tsecond line");
}

}  // namespace
}  // namespace orva::test
