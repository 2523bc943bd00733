// The ICS pairs that `orva convert` writes, read by another reader: libics.
#include <gtest/gtest.h>
#include <libics.h>

#include <array>
#include <cstring>
#include <vector>

#include "tests/apps/conversions.h"

namespace orva::test {
namespace {

struct Reading {
  Ics_DataType type;
  std::vector<std::size_t> sizes;
  std::vector<unsigned char> bytes;
};

Reading readWithLibics(const std::string& name) {
  ICS* ics = nullptr;
  EXPECT_EQ(IcsOpen(&ics, name.c_str(), "r"), IcsErr_Ok);
  Reading reading{};
  int count = 0;
  std::array<std::size_t, ICS_MAXDIM> sizes{};
  EXPECT_EQ(IcsGetLayout(ics, &reading.type, &count, sizes.data()), IcsErr_Ok);
  reading.sizes.assign(sizes.begin(), sizes.begin() + count);
  reading.bytes.resize(IcsGetDataSize(ics));
  EXPECT_EQ(IcsGetData(ics, reading.bytes.data(), reading.bytes.size()), IcsErr_Ok);
  EXPECT_EQ(IcsClose(ics), IcsErr_Ok);
  return reading;
}

class IcsForOthers : public Conversion {
 protected:
  void expectExact(ImageFormat type, Ics_DataType icsType, double low, double high) const {
    const Content content = randomContent(type, {7, 5, 3}, low, high, 1);
    writeContent(box / "in.tif", content);
    ASSERT_TRUE(succeeded(convert("in.tif", "out.ics")));
    const Reading reading = readWithLibics(box / "out.ics");
    EXPECT_EQ(reading.type, icsType);
    EXPECT_EQ(reading.sizes, (std::vector<std::size_t>{7, 5, 3, 1, 1}));
    const AsImage image(content);
    const Image& img = *image;
    ASSERT_EQ(reading.bytes.size(), static_cast<std::size_t>(img.npix() * img.pixelSize()));
    EXPECT_EQ(std::memcmp(reading.bytes.data(), img.data(), reading.bytes.size()), 0);
  }
};

TEST_F(IcsForOthers, HoldsBytes) { expectExact(BYTE, Ics_uint8, 0, 255); }

TEST_F(IcsForOthers, HoldsShorts) { expectExact(SHORT, Ics_sint16, -32768, 32767); }

TEST_F(IcsForOthers, HoldsInts) { expectExact(INT, Ics_sint32, -2147483648.0, 2147483647); }

TEST_F(IcsForOthers, HoldsFloats) { expectExact(FLOAT, Ics_real32, -1e6, 1e6); }

}  // namespace
}  // namespace orva::test
