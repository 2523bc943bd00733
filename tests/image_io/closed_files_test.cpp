// Readers and writers close the files that they open, however the call ends.
#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <iterator>
#include <memory>
#include <string>

#include "orva/image_io/icsparser.h"
#include "orva/image_io/image_io.h"
#include "orva/util/fnp.h"
#include "tests/support/files.h"
#include "tests/support/images.h"
#include "tests/support/printed.h"

namespace orva::test {
namespace {

std::ptrdiff_t openFiles() {
  const std::filesystem::directory_iterator all("/proc/self/fd");
  return std::distance(begin(all), end(all));
}

// No more files are open behind a few calls than before them.
template <class Call>
void expectClosed(const char* name, const Call& call) {
  const std::ptrdiff_t before = openFiles();
  printedBy([&] {
    for (int round = 0; round < 3; ++round) call();
  });
  EXPECT_EQ(openFiles(), before) << name;
}

// Calls a reader on a whole file, on one that is cut, and on one that is refused.
template <class Read>
void expectReaderCloses(const char* name, const std::string& content, const std::string& refused,
                        const Read& read) {
  const TempDir dir;
  writeFile(dir.file("whole"), content);
  writeFile(dir.file("cut"), content.substr(0, content.size() - 2));
  writeFile(dir.file("refused"), refused);
  for (const char* file : {"whole", "cut", "refused"}) {
    expectClosed(name, [&] { read(dir.file(file)); });
  }
}

std::string fileOf(void (*write)(const std::string&, const Image&)) {
  const TempDir dir;
  write(dir.file("b"), image<unsigned char>(4, 3, 2, 1, 1));
  return readFile(dir.file("b"));
}

TEST(Readers, CloseTheirFiles) {
  expectReaderCloses("readUIF", fileOf(image_io::writeUIF), std::string(40, '\xff'),
                     [](const std::string& f) { std::unique_ptr<Image>(image_io::readUIF(f)); });
  expectReaderCloses("readIHT", fileOf(image_io::writeIHT), std::string(40, '\xff'),
                     [](const std::string& f) { std::unique_ptr<Image>(image_io::readIHT(f)); });
  expectReaderCloses("returnStackCount", "II*" + std::string(9, '\0'), "MM",
                     [](const std::string& f) { image_io::returnStackCount(f); });
  expectReaderCloses("parseTextFile", "a b\nc d\n", std::string(3000, 'x'),
                     [](const std::string& f) { fnp::parseTextFile(f, " "); });
  expectReaderCloses("Configure", "a b\nc d\n", std::string(3000, 'x'),
                     [](const std::string& f) { Configure{f}; });
  expectReaderCloses("parse_ics_header_file", "filename\tb\nlayout\tsizes\t8\n", "",
                     [](const std::string& f) {
                       char* dataset = nullptr;
                       char* type = nullptr;
                       int i = 0;
                       parse_ics_header_file(f.c_str(), &dataset, &type, &i, &i, &i, &i, &i, &i);
                       std::free(dataset);
                       std::free(type);
                     });
}

TEST(Readers, OfPgmCloseTheirFiles) {
  const TempDir dir;
  for (const char* name : {"b.pgm", "b.PGM"}) {
    writeFile(dir.file(name), "P5 4 2 255 abcdefgh");
    expectClosed("readPGM", [&] { std::unique_ptr<Image>(image_io::readPGM(dir.file(name))); });
    expectClosed("readImage", [&] { std::unique_ptr<Image>(image_io::readImage(dir.file(name))); });
  }
}

TEST(Writers, CloseTheirFiles) {
  const TempDir dir;
  const image<unsigned char> img(4, 3, 1, 1, 1);
  const std::string name = dir.file("b");
  expectClosed("writeICS", [&] { image_io::writeICS(name, img); });
  expectClosed("writeICS", [&] { image_io::writeICS(image_io::IcsInfo(name), img); });
  expectClosed("writeICS", [&] { image_io::writeICS(image_io::MultiChannelIcsInfo(name), img); });
  expectClosed("writePPM", [&] { image_io::writePPM(name, img); });
  expectClosed("writeUIF", [&] { image_io::writeUIF(name, img); });
  expectClosed("writeIHT", [&] { image_io::writeIHT(name, img); });
  // A header without the file of its pixels.
  std::filesystem::create_directory(dir.file("c.ids"));
  expectClosed("writeICS", [&] { image_io::writeICS(dir.file("c"), img); });
}

}  // namespace
}  // namespace orva::test
