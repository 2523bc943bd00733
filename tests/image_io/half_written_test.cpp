// Every writer reports an incomplete file, wherever it is cut off.
#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <vector>

#include "orva/image_io/image_io.h"
#include "tests/support/files.h"
#include "tests/support/images.h"
#include "tests/support/printed.h"
#include "tests/support/resource_limit.h"

namespace orva::test {
namespace {

// What write() prints while no file can grow past `maxBytes`.
std::string printedWithin(long maxBytes, const std::function<void()>& write) {
  return printedBy([&] {
    const ResourceLimit limit(RLIMIT_FSIZE, maxBytes);
    write();
  });
}

// Calls write(name) with every room from none to all that `files` need. They are in the order of
// writing, and the message for each that has no room is `message` and its name.
void expectEachCutIsReported(const std::function<void(const std::string& name)>& write,
                             const std::vector<std::string>& endings, const std::string& message) {
  const TempDir dir;
  write(dir.file("b"));
  std::vector<std::string> files;
  std::vector<std::string> wholes;
  std::size_t longest = 0;
  for (const std::string& ending : endings) {
    files.push_back(dir.file("b" + ending));
    wholes.push_back(readFile(files.back()));
    longest = std::max(longest, wholes.back().size());
  }
  for (std::size_t room = 0; room <= longest; ++room) {
    SCOPED_TRACE(room);
    std::string expected;
    for (std::size_t i = 0; i < files.size(); ++i) {
      if (room < wholes[i].size()) expected += message + files[i] + '\n';
    }
    EXPECT_EQ(printedWithin(static_cast<long>(room), [&] { write(dir.file("b")); }), expected);
    for (std::size_t i = 0; i < files.size(); ++i) {
      EXPECT_EQ(readFile(files[i]), wholes[i].substr(0, room));
    }
  }
}

image<unsigned char> picture(int planes = 1) {
  Random random(7);
  return randomImage<unsigned char>(random, {11, 6, planes});
}

// More pixels than a stream keeps back, so that the failure comes while they are written.
image<float> largePicture() {
  Random random(8);
  return randomImage<float>(random, {100, 50});
}

TEST(AHalfWrittenFile, IsReportedByWritePpm) {
  for (const int planes : {1, 3}) {
    const image<unsigned char> img = picture(planes);
    expectEachCutIsReported([&](const std::string& name) { image_io::writePPM(name, img); }, {""},
                            "Can not write file: ");
  }
}

TEST(AHalfWrittenFile, IsReportedByWriteUif) {
  const image<unsigned char> img = picture(2);
  expectEachCutIsReported([&](const std::string& name) { image_io::writeUIF(name, img); }, {""},
                          "In image_io::writeUIF\nError in writing ");
}

TEST(AHalfWrittenFile, IsReportedByWriteIht) {
  const image<unsigned char> img = picture(2);
  expectEachCutIsReported([&](const std::string& name) { image_io::writeIHT(name, img); }, {""},
                          "In image_io::writeIHT\nError in writing ");
}

const std::string kIcsMessage = "In image_io::writeICS\n   Error in writing ";

template <class Info>
Info recordOf(const std::string& name) {
  Info info(name);
  info.setScope("scope");
  info.addProperty({"property", "1"});
  return info;
}

// Once with pixels that end before the header does, and once with the other way round.
TEST(AHalfWrittenFile, IsReportedByAllFormsOfWriteIcs) {
  Random random(9);
  for (const Shape& shape : {Shape{5, 4}, Shape{40, 20}}) {
    const auto img = randomImage<unsigned char>(random, shape);
    const std::vector<std::string> pair{".ics", ".ids"};
    expectEachCutIsReported([&](const std::string& name) { image_io::writeICS(name, img); }, pair,
                            kIcsMessage);
    expectEachCutIsReported(
        [&](const std::string& name) {
          image_io::writeICS(recordOf<image_io::IcsInfo>(name), img);
        },
        pair, kIcsMessage);
    expectEachCutIsReported(
        [&](const std::string& name) {
          image_io::writeICS(recordOf<image_io::MultiChannelIcsInfo>(name), img);
        },
        pair, kIcsMessage);
  }
}

TEST(AHalfWrittenFile, IsReportedWhenItIsLarge) {
  const TempDir dir;
  const image<float> img = largePicture();
  const image<unsigned char> bytes(200, 100, 1, 1, 1);
  for (const long room : {4095L, 4096L, 8192L, 19999L}) {
    SCOPED_TRACE(room);
    const std::string name = dir.file("b");
    EXPECT_EQ(printedWithin(room, [&] { image_io::writeIHT(name, img); }),
              "In image_io::writeIHT\nError in writing " + name + "\n");
    EXPECT_EQ(printedWithin(room, [&] { image_io::writeUIF(name, img); }),
              "In image_io::writeUIF\nError in writing " + name + "\n");
    EXPECT_EQ(printedWithin(room, [&] { image_io::writePPM(name, bytes); }),
              "Can not write file: " + name + "\n");
    EXPECT_EQ(printedWithin(room, [&] { image_io::writeICS(name, img); }),
              kIcsMessage + name + ".ids\n");
  }
}

}  // namespace
}  // namespace orva::test
