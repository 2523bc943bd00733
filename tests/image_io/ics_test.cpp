// ICS pairs: header and pixel file byte for byte, file names, failures.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <memory>
#include <set>
#include <sstream>
#include <string>
#include <vector>

#include "orva/image_io/image_io.h"
#include "tests/support/files.h"
#include "tests/support/raw_image.h"
#include "tests/support/shapes.h"

namespace orva::test {
namespace {

std::string n(int v) { return std::to_string(v); }

// The first three lines.
std::string opening(const std::string& baseName) {
  return "\t\nics_version\t1.0\nfilename\t" + baseName + "\n";
}

std::string plainHeader(const std::string& baseName, const Image& img, const std::string& word,
                        const std::string& sign) {
  const std::string bits = n(img.pixelSize() * 8);
  return opening(baseName) +
         "layout\tparameters\t6\n"
         "layout\torder\tbits\tx\ty\tz\tc\tt\n"
         "layout\tsizes\t" +
         bits + "\t" + n(img.nx()) + "\t" + n(img.ny()) + "\t" + n(img.nz()) + "\t" + n(img.nc()) +
         "\t" + n(img.nt()) +
         "\n"
         "layout\tcoordinates\tvideo\n"
         "layout\tsignificant_bits\t" +
         bits +
         "\n"
         "representation\tformat\t" +
         word +
         "\n"
         "representation\tsign\t" +
         sign +
         "\n"
         "representation\tcompression\tuncompressed\n"
         "representation\tbyte_order\t2\t1\n"
         "representation\tSCIL_TYPE\t" +
         (img.nz() < 2 ? "g2d" : "g3d") +
         "\n"
         "parameter\tex_filter\tUNDEFINED\n"
         "parameter\texp_time\tUNDEFINED\n"
         "history\tdate\tUNDEFINED\n"
         "history\tUTC_seconds\tUNDEFINED\n";
}

// The header with a record whose own text is `text`.
std::string recordHeader(const std::string& baseName, const Image& img, const std::string& text) {
  const int planes = img.nz() * img.nc() * img.nt();
  const std::string bits = n(img.pixelSize() * 8);
  const std::string sizes = bits + "\t" + n(img.ny()) + "\t" + n(img.nx());
  const std::string layout = planes < 2 ? "layout\tparameters\t3\n"
                                          "layout\torder\tbits\tx\ty\n"
                                          "layout\tsizes\t" +
                                              sizes + "\n"
                                        : "layout\tparameters\t4\n"
                                          "layout\torder\tbits\tx\ty\tz\n"
                                          "layout\tsizes\t" +
                                              sizes + "\t" + n(planes) + "\n";
  return opening(baseName) + layout +
         "layout\tcoordinates\tvideo\n"
         "layout\tsignificant_bits\t" +
         bits +
         "\n"
         "representation\tformat\t" +
         (img.format() == FLOAT ? "float" : "integer") +
         "\n"
         "representation\tsign\tsigned\n"
         "representation\tcompression\tuncompressed\n"
         "representation\tbyte_order\t2\t1\n"
         "representation\tSCIL_TYPE\t" +
         (planes < 2 ? "g2d" : "g3d") + "\n" + text + "\n";
}

std::string rawBytes(const Image& img) {
  const auto size =
      static_cast<std::size_t>(img.npix()) * static_cast<std::size_t>(img.pixelSize());
  return size == 0 ? std::string() : std::string(static_cast<const char*>(img.data()), size);
}

struct FormatRow {
  int code;
  const char* word;
  const char* sign;
};
const std::vector<FormatRow> kFormats = {
    {0, "integer", "unsigned"}, {1, "integer", "signed"}, {2, "unshort", "unsigned"},
    {3, "integer", "signed"},   {4, "float", "signed"},   {5, "unint", "unsigned"},
    {6, "rgb", "unsigned"},     {7, "srgb", "signed"},    {8, "irgb", "signed"},
    {9, "frgb", "signed"},      {10, "rgba", "unsigned"}, {11, "unknown", "signed"},
    {99, "unknown", "signed"},  {-1, "unknown", "signed"}};

template <class T>
class WriteIcs : public testing::Test {
 protected:
  TempDir dir_;
  Random random_{101};
};
TYPED_TEST_SUITE(WriteIcs, PixelTypes);

TYPED_TEST(WriteIcs, WritesHeaderAndPixels) {
  for (const Shape& s : oddShapes()) {
    const image<TypeParam> img = randomImage<TypeParam>(this->random_, s);
    image_io::writeICS(this->dir_.file("b"), img);
    const FormatRow& row = kFormats[static_cast<std::size_t>(img.format())];
    EXPECT_EQ(readFile(this->dir_.file("b.ics")), plainHeader("b", img, row.word, row.sign));
    EXPECT_EQ(readFile(this->dir_.file("b.ids")), rawBytes(img));
  }
}

TYPED_TEST(WriteIcs, HeightBeforeWidthAndOneStackWithARecordAreIntended) {
  for (const Shape& s : oddShapes()) {
    const image<TypeParam> img = randomImage<TypeParam>(this->random_, s);
    const auto check = [&](auto info) {
      info.setScope("scope");
      info.addProperty({"a", "b"});
      info.annotate("note");
      image_io::writeICS(info, img);
      std::ostringstream text;
      text << info;
      EXPECT_EQ(readFile(this->dir_.file("r.ics")), recordHeader("r", img, text.str()));
      EXPECT_EQ(readFile(this->dir_.file("r.ids")), rawBytes(img));
    };
    check(image_io::IcsInfo(this->dir_.file("r")));
    check(image_io::MultiChannelIcsInfo(this->dir_.file("r")));
  }
}

class IcsFiles : public testing::Test {
 protected:
  std::string file(const std::string& name) const { return dir_.file(name); }
  std::set<std::string> files() const { return dir_.names(); }

 private:
  TempDir dir_;
};

TEST_F(IcsFiles, NameTheFormatOfEveryCode) {
  for (const FormatRow& row : kFormats) {
    const RawImage img({2, 1}, row.code, std::vector<unsigned char>{1, 2, 3, 4, 5, 6, 7, 8},
                       {0, 0});
    image_io::writeICS(file("b"), img);
    EXPECT_EQ(readFile(file("b.ics")), plainHeader("b", img, row.word, row.sign));
    EXPECT_EQ(readFile(file("b.ids")), "\1\2\3\4\5\6\7\10");
    image_io::writeICS(image_io::IcsInfo(file("r")), img);
    std::ostringstream text;
    text << image_io::IcsInfo("");
    EXPECT_EQ(readFile(file("r.ics")), recordHeader("r", img, text.str())) << row.code;
  }
}

TEST_F(IcsFiles, HoldTheLinesOfAByteImage) {
  const image<unsigned char> img = imageOf<unsigned char>({3, 2}, {1, 2, 3, 4, 5, 255});
  image_io::writeICS(file("b"), img);
  EXPECT_EQ(readFile(file("b.ics")),
            "\t\n"
            "ics_version\t1.0\n"
            "filename\tb\n"
            "layout\tparameters\t6\n"
            "layout\torder\tbits\tx\ty\tz\tc\tt\n"
            "layout\tsizes\t8\t3\t2\t1\t1\t1\n"
            "layout\tcoordinates\tvideo\n"
            "layout\tsignificant_bits\t8\n"
            "representation\tformat\tinteger\n"
            "representation\tsign\tunsigned\n"
            "representation\tcompression\tuncompressed\n"
            "representation\tbyte_order\t2\t1\n"
            "representation\tSCIL_TYPE\tg2d\n"
            "parameter\tex_filter\tUNDEFINED\n"
            "parameter\texp_time\tUNDEFINED\n"
            "history\tdate\tUNDEFINED\n"
            "history\tUTC_seconds\tUNDEFINED\n");
  EXPECT_EQ(readFile(file("b.ids")), "\1\2\3\4\5\377");
}

TEST_F(IcsFiles, HoldTheLinesOfARecord) {
  const image<float> img(5, 4, 2, 3, 1);
  image_io::MultiChannelIcsInfo info(file("b.ics"));
  info.setWithChannelInfo("488", "20", 'g');
  image_io::writeICS(info, img);
  EXPECT_EQ(readFile(file("b.ics")),
            "\t\n"
            "ics_version\t1.0\n"
            "filename\tb\n"
            "layout\tparameters\t4\n"
            "layout\torder\tbits\tx\ty\tz\n"
            "layout\tsizes\t32\t4\t5\t6\n"
            "layout\tcoordinates\tvideo\n"
            "layout\tsignificant_bits\t32\n"
            "representation\tformat\tfloat\n"
            "representation\tsign\tsigned\n"
            "representation\tcompression\tuncompressed\n"
            "representation\tbyte_order\t2\t1\n"
            "representation\tSCIL_TYPE\tg3d\n"
            "parameter\tex_filter\t488\n"
            "parameter\texp_time\t20\n"
            "history\tdate\tUNDEFINED\n"
            "history\tUTC_seconds\tUNDEFINED\n"
            "history\tScope\tUNDEFINED\n"
            "history\tAnnotation\tNONE\n");
  EXPECT_EQ(readFile(file("b.ids")), std::string(5 * 4 * 6 * 4, '\0'));
}

TEST_F(IcsFiles, AreNamedFromTheNameWithOrWithoutExtension) {
  struct Row {
    const char* name;
    const char* header;
    const char* data;
    const char* base;
  };
  const image<short> img(2, 2, 1, 1, 1);
  std::filesystem::create_directory(file("dir.d"));
  for (const auto& [name, header, data, base] : {Row{"b", "b.ics", "b.ids", "b"},
                                                 {"c.ics", "c.ics", "c.ids", "c"},
                                                 {"d/", "d.ics", "d.ids", "d"},
                                                 {"e.ics/", "e.ics", "e.ids", "e"},
                                                 {"f.tif", "f.tif.ics", "f.tif.ids", "f.tif"},
                                                 {"g.ICS", "g.ICS.ics", "g.ICS.ids", "g.ICS"},
                                                 {"dir.d/b", "dir.d/b.ics", "dir.d/b.ids", "b"}}) {
    image_io::writeICS(file(name), img);
    EXPECT_EQ(readFile(file(header)), plainHeader(base, img, "integer", "signed")) << name;
    EXPECT_EQ(readFile(file(data)), std::string(8, '\0')) << name;
    for (const char* made : {header, data}) std::filesystem::remove(file(made));
    image_io::writeICS(image_io::IcsInfo(file(name)), img);
    image_io::writeICS(image_io::MultiChannelIcsInfo(file(name)), img);
    EXPECT_TRUE(std::filesystem::remove(file(header))) << name;
    EXPECT_TRUE(std::filesystem::remove(file(data))) << name;
  }
  EXPECT_THAT(files(), testing::ElementsAre("dir.d"));
}

TEST_F(IcsFiles, OfARecordWithAChannelCarryItsName) {
  image_io::IcsInfo info(file("plate"));
  info.setWithChannelInfo("488", "20", 'g');
  image_io::writeICS(info, image<short>(2, 2, 1, 1, 1));
  EXPECT_THAT(files(), testing::ElementsAre("plate_g.ics", "plate_g.ids"));
  EXPECT_THAT(readFile(file("plate_g.ics")), testing::HasSubstr("\nfilename\tplate_g\n"));
}

TEST_F(IcsFiles, OfStacksAreG3d) {
  const auto dimension = [this](const Image& img) {
    image_io::writeICS(file("b"), img);
    const std::string text = readFile(file("b.ics"));
    const std::string label = "SCIL_TYPE\t";
    return text.substr(text.find(label) + label.size(), 3);
  };
  EXPECT_EQ(dimension(image<int>(3, 3, 1, 1, 1)), "g2d");
  EXPECT_EQ(dimension(image<int>(3, 3, 2, 1, 1)), "g3d");
  // Channels are not depth.
  EXPECT_EQ(dimension(image<int>(3, 3, 1, 2, 2)), "g2d");
}

TEST_F(IcsFiles, OfANullImageHoldNoPixels) {
  const image<float> none(0, 1, 1, 1, 1);
  image_io::writeICS(file("b"), none);
  EXPECT_EQ(readFile(file("b.ics")), plainHeader("b", none, "float", "signed"));
  EXPECT_EQ(readFile(file("b.ids")), "");
}

TEST_F(IcsFiles, OfSmallSizesHoldTheSizesShownAndAllPixels) {
  for (const Shape& s : smallShapes()) {
    const image<short> img = blank<short>(s);
    image_io::writeICS(file("b"), img);
    EXPECT_EQ(readFile(file("b.ics")), plainHeader("b", img, "integer", "signed"));
    EXPECT_EQ(readFile(file("b.ids")), rawBytes(img));
    // New files are written much faster than old ones are replaced.
    for (const char* name : {"b.ics", "b.ids"}) std::filesystem::remove(file(name));
  }
}

TEST_F(IcsFiles, ReplaceLongerOnes) {
  writeFile(file("b.ics"), std::string(5000, 'x'));
  writeFile(file("b.ids"), std::string(5000, 'x'));
  const image<unsigned char> img(2, 2, 1, 1, 1);
  image_io::writeICS(file("b"), img);
  EXPECT_EQ(readFile(file("b.ics")), plainHeader("b", img, "integer", "unsigned"));
  EXPECT_EQ(readFile(file("b.ids")), std::string(4, '\0'));
}

// Calls all three forms for `name` and hands what each wrote to standard error and output to check.
template <class Check>
void forAllForms(const std::string& name, const Image& img, Check check) {
  const auto run = [&](const auto& write) {
    testing::internal::CaptureStderr();
    testing::internal::CaptureStdout();
    write();
    const std::string out = testing::internal::GetCapturedStdout();
    check(testing::internal::GetCapturedStderr(), out);
  };
  run([&] { image_io::writeICS(name, img); });
  run([&] { image_io::writeICS(image_io::IcsInfo(name), img); });
  run([&] { image_io::writeICS(image_io::MultiChannelIcsInfo(name), img); });
}

TEST_F(IcsFiles, ThatCannotBeOpenedAreReported) {
  const image<short> img(2, 2, 1, 1, 1);
  for (const char* name : {"none/b", "none/b.ics", "none/b/"}) {
    const std::string given = file(name);
    const std::string cleaned = given.back() == '/' ? given.substr(0, given.size() - 1) : given;
    forAllForms(given, img, [&](const std::string& err, const std::string& out) {
      EXPECT_EQ(err, "In image_io::writeICS\n   Can not open file" + cleaned + "\n   Ignored.\n");
      EXPECT_EQ(out, "");
    });
  }
  EXPECT_TRUE(files().empty());
}

TEST_F(IcsFiles, WhosePixelFileCannotBeOpenedKeepTheHeader) {
  const image<short> img(2, 2, 1, 1, 1);
  std::filesystem::create_directory(file("b.ids"));
  forAllForms(file("b"), img, [&](const std::string& err, const std::string& out) {
    EXPECT_EQ(err, "In image_io::writeICS\n  In image_io::writeICS\n");
    EXPECT_EQ(out, "   Can not open file" + file("b.ids") + "\n");
    EXPECT_TRUE(std::filesystem::remove(file("b.ics")));
  });
}

TEST_F(IcsFiles, WhosePixelsCannotBeWrittenAreReported) {
  if (!std::filesystem::exists("/dev/full")) GTEST_SKIP() << "needs /dev/full";
  std::filesystem::create_symlink("/dev/full", file("b.ids"));
  // Less and more than a stream's buffer.
  for (const int width : {2, 40000}) {
    const image<short> img(width, 2, 1, 1, 1);
    forAllForms(file("b"), img, [&](const std::string& err, const std::string& out) {
      EXPECT_EQ(err, "In image_io::writeICS\n   Error in writing " + file("b.ids") + "\n");
      EXPECT_EQ(out, "");
    });
  }
}

TEST_F(IcsFiles, WithoutRoomForTheHeaderAreReportedAndHoldPixels) {
  if (!std::filesystem::exists("/dev/full")) GTEST_SKIP() << "needs /dev/full";
  std::filesystem::create_symlink("/dev/full", file("b.ics"));
  const auto img = imageOf<unsigned char>({2, 2}, {'a', 'b', 'c', 'd'});
  forAllForms(file("b"), img, [&](const std::string& err, const std::string& out) {
    EXPECT_EQ(err, "In image_io::writeICS\n   Error in writing " + file("b.ics") + "\n");
    EXPECT_EQ(out, "");
    EXPECT_EQ(readFile(file("b.ids")), "abcd");
    std::filesystem::remove(file("b.ids"));
  });
}

TEST_F(IcsFiles, WrittenWellAreNotReported) {
  forAllForms(file("b"), image<Rgb>(2, 2, 1, 1, 1),
              [](const std::string& err, const std::string& out) {
                EXPECT_EQ(err, "");
                EXPECT_EQ(out, "");
              });
}

TEST_F(IcsFiles, AreNotReadAsIsIntended) {
  EXPECT_EQ(image_io::readICS(file("none.ics")), nullptr);
  image_io::writeICS(file("b"), image<short>(2, 2, 1, 1, 1));
  EXPECT_EQ(image_io::readICS(file("b.ics")), nullptr);
}

}  // namespace
}  // namespace orva::test
