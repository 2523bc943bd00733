// Files whose pixels do not fit the memory.
#include <gtest/gtest.h>

#include <memory>
#include <string>

#include "orva/image_io/icsparser.h"
#include "orva/image_io/image_io.h"
#include "tests/support/files.h"
#include "tests/support/images.h"
#include "tests/support/memory_limit.h"
#include "tests/support/reference/image_io.h"

namespace orva::test {
namespace {

template <class Work>
void expect(const char* name, const char* message, const Work& work) {
  expectMemoryToRunOut(name, {message}, work);
}

void drop(const Image* img) { const std::unique_ptr<const Image> owned(img); }

const char* const kNoPixels = "Error: out of memory\n";

TEST(FilesWithoutMemory, EndTheProcess) {
  const TempDir dir;
  const auto img = blank<short>({1000, 900});
  image_io::writeUIF(dir.file("a.uif"), img);
  image_io::writeIHT(dir.file("a.iht"), img);
  writeFile(dir.file("a.pgm"), "P5 1000 900 255 " + std::string(900000, 'x'));
  expect("UIF", kNoPixels, [&] { drop(image_io::readUIF(dir.file("a.uif"))); });
  expect("IHT", kNoPixels, [&] { drop(image_io::readIHT(dir.file("a.iht"))); });
  const auto grey = blank<unsigned char>({1000, 900});
  expect("PPM", kNoPixels, [&] { image_io::writePPM(dir.file("a.ppm"), grey); });
  expect("conversion", kNoPixels, [&] { image_io::convertToFloatImage(img); });
}

// The file's own block is asked for first, with a message of its own.
TEST(FilesWithoutMemory, OfPgmEndTheProcess) {
  const TempDir dir;
  writeFile(dir.file("a.pgm"), "P5 1500 1400 255 " + std::string(2100000, 'x'));
  expectMemoryToRunOut("PGM", {"out of memory\n", kNoPixels},
                       [&] { drop(image_io::readPGM(dir.file("a.pgm"))); });
}

// A header that promises more than the machine has, and nothing behind it.
TEST(FilesWithoutMemory, OfHeadersAloneEndTheProcess) {
  if (addressSanitizer) GTEST_SKIP() << "the sanitizer answers failed allocations";
  const TempDir dir;
  writeFile(dir.file("a.uif"), reference::int32Bytes(46340) + reference::int32Bytes(46340) +
                                   reference::int32Bytes(1) + reference::int32Bytes(1) +
                                   reference::int32Bytes(0));
  writeFile(dir.file("a.pgm"), "P5 46340 46340 255 ");
  expectNoMemory("UIF", [&] { drop(image_io::readUIF(dir.file("a.uif"))); });
  const auto pgm = endingWith(kMebibyte, [&] { drop(image_io::readPGM(dir.file("a.pgm"))); });
  EXPECT_EQ(pgm.status, 1);
  EXPECT_EQ(pgm.err, "out of memory\n");
}

// A value as long as the file, read by a C function that cannot throw.
TEST(FilesWithoutMemory, OfIcsHeadersEndTheProcess) {
  const TempDir dir;
  writeFile(dir.file("a.ics"), "filename\t" + std::string(3000000, 'x') + '\n');
  expectNoMemory("ICS", [&] {
    (void)parse_ics_header_file(dir.file("a.ics").c_str(), nullptr, nullptr, nullptr, nullptr,
                                nullptr, nullptr, nullptr, nullptr);
  });
}

}  // namespace
}  // namespace orva::test
