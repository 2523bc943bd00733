// Records of unusual content: a channel named by a zero byte, texts that end in a newline, images
// without planes.
#include <gtest/gtest.h>

#include <sstream>
#include <string>
#include <vector>

#include "orva/image_io/image_io.h"
#include "tests/support/files.h"
#include "tests/support/images.h"

namespace orva::test {
namespace {

template <class Record>
std::string written(const Record& record) {
  std::ostringstream text;
  text << record;
  return text.str();
}

TEST(ZeroByteChannel, IsANameOfOneCharacter) {
  image_io::IcsInfo one("d");
  one.setWithChannelInfo("f", "e", '\0');
  EXPECT_EQ(one.channelName(), std::string(1, '\0'));
  EXPECT_EQ(one.datasetName(), std::string("d_\0", 3));
  image_io::MultiChannelIcsInfo several("d");
  several.setWithChannelInfo("f", "e", '\0');
  several.setWithChannelInfo("f", "e", 'c');
  EXPECT_EQ(several.channelNames(), (std::vector<std::string>{std::string(1, '\0'), "c"}));
  EXPECT_EQ(several.datasetName(), "d");
}

// Nothing is taken away from an item, and every line still gets its own newline.
template <class Record>
std::string withNewlines() {
  Record record("d");
  record.setWithChannelInfo("f\n", "e\n", 'c');
  record.setScope("s\n");
  record.setSample("a\n", "b", "c", 1, 2, "d\n");
  record.addProperty({"p\n", "q\n"});
  record.annotate("n\n");
  return written(record);
}

TEST(TextsWithANewlineAtTheEnd, AreWrittenAsTheyAre) {
  const std::string expected =
      "parameter\tex_filter\tf\n\n"
      "parameter\texp_time\te\n\n"
      "history\tdate\tUNDEFINED\n"
      "history\tUTC_seconds\tUNDEFINED\n"
      "history\tScope\ts\n\n"
      "Sample\ta\n\tb\tc\t1.000000\t2.000000\td\n\n"
      "p\n\tq\n\n"
      "history\tAnnotation\tn\n";
  EXPECT_EQ(withNewlines<image_io::IcsInfo>(), expected);
  EXPECT_EQ(withNewlines<image_io::MultiChannelIcsInfo>(), expected);
}

TEST(TextsWithANewlineAtTheEnd, StandBeforeTheAnnotation) {
  image_io::IcsInfo record("d");
  record.addParagraph("free\n");
  EXPECT_EQ(written(record),
            "history\tdate\tUNDEFINED\n"
            "history\tUTC_seconds\tUNDEFINED\n"
            "history\tScope\tUNDEFINED\n"
            "free\n"
            "history\tAnnotation\tNONE");
}

// The lines of a header that depend on the number of planes.
std::vector<std::string> layoutOf(const std::string& header) {
  std::istringstream lines(header);
  std::vector<std::string> found;
  for (std::string line; std::getline(lines, line);) {
    for (const char* start :
         {"layout\tparameters", "layout\torder", "layout\tsizes", "representation\tSCIL_TYPE"}) {
      if (line.rfind(start, 0) == 0) found.push_back(line);
    }
  }
  return found;
}

TEST(ImagesWithoutPlanes, AreWrittenAsPlanes) {
  const TempDir dir;
  const std::vector<std::string> expected = {"layout\tparameters\t3", "layout\torder\tbits\tx\ty",
                                             "layout\tsizes\t16\t4\t5",
                                             "representation\tSCIL_TYPE\tg2d"};
  for (const Shape& shape : {Shape{5, 4, 0}, Shape{5, 4, 1, 0}, Shape{5, 4, 3, 1, 0}}) {
    const image<short> img = blank<short>(shape);
    image_io::writeICS(image_io::IcsInfo(dir.file("one")), img);
    EXPECT_EQ(layoutOf(readFile(dir.file("one.ics"))), expected);
    EXPECT_EQ(readFile(dir.file("one.ids")), "");
    image_io::writeICS(image_io::MultiChannelIcsInfo(dir.file("several")), img);
    EXPECT_EQ(layoutOf(readFile(dir.file("several.ics"))), expected);
    EXPECT_EQ(readFile(dir.file("several.ids")), "");
  }
  image_io::writeICS(dir.file("plain"), blank<short>({5, 4, 0}));
  EXPECT_EQ(layoutOf(readFile(dir.file("plain.ics"))),
            (std::vector<std::string>{"layout\tparameters\t6", "layout\torder\tbits\tx\ty\tz\tc\tt",
                                      "layout\tsizes\t16\t5\t4\t0\t1\t1",
                                      "representation\tSCIL_TYPE\tg2d"}));
}

}  // namespace
}  // namespace orva::test
