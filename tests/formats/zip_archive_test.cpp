#include "formats/zip_archive.h"

#include <gtest/gtest.h>

#include <string>

namespace orva::test {
namespace {

// As Python's zipfile and unzip read it: what tests/outputs checks of smaller ones.
TEST(ZipArchive, OfMoreFilesThan16BitsCountHasAWideEnd) {
  constexpr int kFiles = 65536;
  formats::ZipArchive archive;
  for (int i = 0; i < kFiles; ++i) archive.add(std::to_string(i), "");
  const std::string bytes = archive.finished();
  const auto numberAt = [&](std::size_t at, int n) {
    std::size_t value = 0;
    while (n-- > 0)
      value = value << 8U | static_cast<unsigned char>(bytes.at(at + static_cast<std::size_t>(n)));
    return value;
  };
  const std::size_t end = bytes.size() - 22;
  EXPECT_EQ(bytes.substr(end, 4), "PK\5\6");
  EXPECT_EQ(numberAt(end + 8, 4), 0xFFFFFFFFU);
  const std::size_t locator = end - 20;
  EXPECT_EQ(bytes.substr(locator, 4), "PK\6\7");
  const std::size_t record = numberAt(locator + 8, 8);
  EXPECT_EQ(record, locator - 56);
  EXPECT_EQ(bytes.substr(record, 4), "PK\6\6");
  EXPECT_EQ(numberAt(record + 24, 8), std::size_t{kFiles});
  EXPECT_EQ(numberAt(record + 32, 8), std::size_t{kFiles});
  const std::size_t size = numberAt(record + 40, 8);
  const std::size_t start = numberAt(record + 48, 8);
  EXPECT_EQ(start + size, record);
  EXPECT_EQ(bytes.substr(start, 4), "PK\1\2");
}

}  // namespace
}  // namespace orva::test
