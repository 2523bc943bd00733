// Headers of ICS pairs taken apart: sizes, pixel type, data set and byte order.
#include "orva/image_io/icsparser.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <optional>
#include <sstream>
#include <string>
#include <thread>
#include <vector>

#include "orva/image_io/image_io.h"
#include "tests/support/files.h"
#include "tests/support/raw_image.h"
#include "tests/support/reference/image_io.h"
#include "tests/support/shapes.h"

// In a source of the C language.
extern "C" int product_of_sizes_from_c(const char* filename, const char* dataset_wanted,
                                       const char* type_wanted);

namespace orva::test {
namespace {

std::optional<std::string> taken(char* text) {
  if (text == nullptr) return std::nullopt;
  std::string copy = text;
  std::free(text);
  return copy;
}

constexpr int kUnset = -99;

// Every field starts with a value that the parser does not give.
reference::IcsHeader parseFile(const std::string& file) {
  static char used[] = "used";
  reference::IcsHeader h;
  char* dataset = used;
  char* type = used;
  h.x = h.y = h.z = h.c = h.t = h.bigEndian = kUnset;
  h.result = parse_ics_header_file(file.c_str(), &dataset, &type, &h.x, &h.y, &h.z, &h.c, &h.t,
                                   &h.bigEndian);
  h.dataset = taken(dataset);
  h.type = taken(type);
  return h;
}

std::string textOf(const reference::IcsHeader& h) {
  std::ostringstream text;
  text << h.result << ' ' << h.dataset.value_or("(null)") << ' ' << h.type.value_or("(null)");
  for (const int v : {h.x, h.y, h.z, h.c, h.t, h.bigEndian}) text << ' ' << v;
  return text.str();
}

class IcsParser : public testing::Test {
 protected:
  std::string file() const { return dir_.file("some.ics"); }

  // Parses without a message, and compares with the definition.
  reference::IcsHeader parse(const std::string& content) const {
    writeFile(file(), content);
    testing::internal::CaptureStdout();
    testing::internal::CaptureStderr();
    const reference::IcsHeader h = parseFile(file());
    EXPECT_EQ(testing::internal::GetCapturedStdout() + testing::internal::GetCapturedStderr(), "");
    EXPECT_EQ(textOf(h), textOf(reference::icsHeader(content))) << content;
    return h;
  }

  // Of a header with these sizes, and this format line unless it is empty.
  std::string typeOf(const std::string& unit, const std::string& size,
                     const std::string& format) const {
    return parse("layout order " + unit + " x y\nlayout sizes " + size + " 4 3\n" +
                 (format.empty() ? "" : "representation format " + format + "\n"))
        .type.value_or("(null)");
  }

  std::string fieldsOf(const std::string& content) const { return textOf(parse(content)); }

  const TempDir& dir() const { return dir_; }

 private:
  TempDir dir_;
};

TEST_F(IcsParser, ReadsAPlainHeader) {
  EXPECT_EQ(fieldsOf("\t\nics_version\t1.0\nfilename\tnuclei\nlayout\torder\tbits\tx\ty\n"
                     "layout\tsizes\t8\t64\t32\n"),
            "1 nuclei BYTE 64 32 1 0 0 1");
}

TEST_F(IcsParser, HasDefaultsForWhatIsMissing) {
  EXPECT_EQ(fieldsOf(""), "0 (null) (null) 0 0 1 0 0 1");
  EXPECT_EQ(fieldsOf("nothing of use\n"), "0 (null) (null) 0 0 1 0 0 1");
  EXPECT_EQ(fieldsOf("filename a\n"), "0 a (null) 0 0 1 0 0 1");
  EXPECT_EQ(fieldsOf("layout order bits x y\n"), "0 (null) (null) 0 0 1 0 0 1");
  EXPECT_EQ(fieldsOf("representation byte_order 1\n"), "0 (null) (null) 0 0 1 0 0 0");
}

TEST_F(IcsParser, KeepsSizesAndDataSetWithoutAPixelType) {
  EXPECT_EQ(fieldsOf("filename a\nlayout order bits x y z c t\nlayout sizes 64 2 3 4 5 6\n"
                     "representation format float\nrepresentation byte_order 1 2\n"),
            "0 a (null) 2 3 4 5 6 0");
}

TEST_F(IcsParser, CountsPixelsInBitsOrBytes) {
  EXPECT_EQ(typeOf("bits", "8", ""), "BYTE");
  EXPECT_EQ(typeOf("bytes", "1", ""), "BYTE");
  EXPECT_EQ(typeOf("bits", "16", ""), "SHORT");
  EXPECT_EQ(typeOf("bytes", "2", ""), "SHORT");
  EXPECT_EQ(typeOf("BYTES", "4", ""), "INT");
  EXPECT_EQ(typeOf("Bits", "32", ""), "INT");
  EXPECT_EQ(typeOf("bit", "8", ""), "(null)");
  EXPECT_EQ(typeOf("x", "8", ""), "(null)");
  // Whole bytes, the rest of the bits dropped.
  for (int bits = -9; bits <= 40; ++bits) {
    const int bytes = bits >= 0 ? bits / 8 : -1;
    EXPECT_EQ(typeOf("bits", std::to_string(bits), ""), bytes == 1   ? "BYTE"
                                                        : bytes == 2 ? "SHORT"
                                                        : bytes == 4 ? "INT"
                                                                     : "(null)")
        << bits;
  }
}

TEST_F(IcsParser, NamesTheTypeByTheFirstRuleThatFits) {
  struct Row {
    const char* format;
    const char* of1;
    const char* of2;
    const char* of3;
    const char* of4;
    const char* of8;
  };
  const char* none = "(null)";
  for (const Row& r : {Row{"integer", "BYTE", "SHORT", none, "INT", none},
                       Row{"float", none, none, none, "FLOAT", none},
                       Row{"unshort", "BYTE", "USHORT", "USHORT", "USHORT", "USHORT"},
                       Row{"unint", "BYTE", "SHORT", "UINT", "UINT", "UINT"},
                       Row{"rgb", "RGB", "RGB", "RGB", "RGB", "RGB"},
                       Row{"irgb", "INTRGB", "INTRGB", "INTRGB", "INTRGB", "INTRGB"},
                       Row{"srgb", "SHORTRGB", "SHORTRGB", "SHORTRGB", "SHORTRGB", "SHORTRGB"},
                       Row{"frgb", "FLOATRGB", "FLOATRGB", "FLOATRGB", "FLOATRGB", "FLOATRGB"},
                       Row{"rgba", "RGBA", "RGBA", "RGBA", "RGBA", "RGBA"},
                       Row{"real", "BYTE", "SHORT", none, "INT", none},
                       Row{"floats", "BYTE", "SHORT", none, "INT", none}}) {
    for (const std::string& format : {std::string(r.format), [&] {
                                        std::string capitals = r.format;
                                        for (char& c : capitals) c = static_cast<char>(c - 32);
                                        return capitals;
                                      }()}) {
      EXPECT_EQ(typeOf("bytes", "1", format), r.of1) << format;
      EXPECT_EQ(typeOf("bytes", "2", format), r.of2) << format;
      EXPECT_EQ(typeOf("bytes", "3", format), r.of3) << format;
      EXPECT_EQ(typeOf("bytes", "4", format), r.of4) << format;
      EXPECT_EQ(typeOf("bytes", "8", format), r.of8) << format;
    }
  }
}

TEST_F(IcsParser, TakesTheFirstFormatWordOnly) {
  EXPECT_EQ(typeOf("bits", "32", "float integer"), "FLOAT");
  EXPECT_EQ(typeOf("bits", "32", "integer float"), "INT");
  EXPECT_EQ(typeOf("bits", "32", "integer\nrepresentation format float"), "INT");
}

TEST_F(IcsParser, FindsSizesByTheOrderLine) {
  EXPECT_EQ(fieldsOf("layout order bits t c z y x\nlayout sizes 8 1 2 3 4 5\n"),
            "1 (null) BYTE 5 4 3 2 1 1");
  EXPECT_EQ(fieldsOf("layout order bits Y X ch Z\nlayout sizes 8 10 20 30 40 50\n"),
            "1 (null) BYTE 20 10 40 0 0 1");
  EXPECT_EQ(fieldsOf("layout order bits a b c d e x y\nlayout sizes 8 1 2 3 4 5 6 7\n"),
            "1 (null) BYTE 0 0 1 3 0 1");
  EXPECT_EQ(fieldsOf("layout order bits x x\nlayout sizes 8 1 2\n"), "1 (null) BYTE 2 0 1 0 0 1");
  // The pixel size is the first size, whatever the first word of the order is.
  EXPECT_EQ(fieldsOf("layout order x bits y\nlayout sizes 8 16 5\n"),
            "0 (null) (null) 0 5 1 0 0 1");
  // Sizes before the order line have no dimension yet.
  EXPECT_EQ(fieldsOf("layout sizes 8 1 2\nlayout order bits x y\n"), "1 (null) BYTE 0 0 1 0 0 1");
}

TEST_F(IcsParser, ContinuesTheListOfAKeywordInLaterLines) {
  EXPECT_EQ(fieldsOf("layout order bits x\nlayout order y\nlayout sizes 8\nlayout sizes 3 4\n"),
            "1 (null) BYTE 3 4 1 0 0 1");
  EXPECT_EQ(fieldsOf("filename\nfilename b c\nfilename d\n"), "0 b (null) 0 0 1 0 0 1");
}

TEST_F(IcsParser, ReadsNumbersAsAtoiDoes) {
  EXPECT_EQ(fieldsOf("layout order bits x y z c t\nlayout sizes +8x -5 7abc abc 0x10 1e3\n"),
            "1 (null) BYTE -5 7 0 0 1 1");
}

TEST_F(IcsParser, TakesTheByteOrderFromTheFirstNumber) {
  const auto orderOf = [&](const std::string& values) {
    return parse("representation\tbyte_order\t" + values + "\n").bigEndian;
  };
  EXPECT_EQ(orderOf("2\t1"), 1);
  EXPECT_EQ(orderOf("1\t2"), 0);
  EXPECT_EQ(orderOf("4 3 2 1"), 1);
  EXPECT_EQ(orderOf("1"), 0);
  EXPECT_EQ(orderOf("0"), 0);
  EXPECT_EQ(orderOf("-2"), 0);
  EXPECT_EQ(orderOf("big"), 0);
  EXPECT_EQ(orderOf(""), 1);
  EXPECT_EQ(orderOf("1\nrepresentation byte_order 2"), 0);
}

TEST_F(IcsParser, FindsKeywordsAnywhereInALineAsIsIntended) {
  EXPECT_EQ(*parse("history filename a\n").dataset, "a");
  EXPECT_EQ(*parse("xfilename a\n").dataset, "a");
  EXPECT_EQ(*parse("filenameab c\n").dataset, "ab");
  EXPECT_EQ(*parse("filefilename a\n").dataset, "a");
  EXPECT_EQ(typeOf("bits", "8", "x layout order bytes\n"), "BYTE");
  EXPECT_EQ(parse("my layout \t\t orderbits x\nthe layout  sizes8 5\n").x, 5);
  EXPECT_EQ(parse("layout layout order bits x\nlayoutlayout\tsizes 8 6\n").x, 6);
  // Values are not searched for keywords.
  EXPECT_EQ(*parse("layout order filename a\nfilename b\n").dataset, "b");
  EXPECT_EQ(*parse("filename filename\n").dataset, "filename");
}

TEST_F(IcsParser, DoesNotFindWhatIsNoKeyword) {
  for (const char* line :
       {"FILENAME a", "Filename a", "file name a", "filenam e", "layoutorder bits",
        "layout\norder bytes", "layout-order bytes", "Layout order bytes", "layout Order bytes"}) {
    EXPECT_EQ(fieldsOf(std::string(line) + "\nlayout sizes 1\n"), "0 (null) (null) 0 0 1 0 0 1");
  }
  EXPECT_EQ(parse("representation byteorder 1\n").bigEndian, 1);
  EXPECT_EQ(parse("representation byte_Order 1\n").bigEndian, 1);
}

TEST_F(IcsParser, SplitsValuesAtBlanksTabsAndNewlinesOnly) {
  EXPECT_EQ(*parse("filename  \t a,b;c=d\r\n").dataset, "a,b;c=d\r");
  EXPECT_EQ(*parse("filename\ta\tb\n").dataset, "a");
  EXPECT_EQ(*parse("filename a").dataset, "a");
  EXPECT_EQ(parse("filename \n\n a\n").dataset, std::nullopt);
  const std::string longName(100000, 'n');
  EXPECT_EQ(*parse("filename " + longName + "\n").dataset, longName);
}

TEST_F(IcsParser, EndsValuesAtAZeroByte) {
  const std::string zero(1, '\0');
  EXPECT_EQ(*parse("filename a" + zero + "b c\n").dataset, "a");
  EXPECT_EQ(*parse("filename " + zero + "b c\n").dataset, "");
  EXPECT_EQ(typeOf("bits" + zero + "x", "32" + zero + "1", "float" + zero + "s"), "FLOAT");
}

TEST_F(IcsParser, ReadsWhatTheLibraryWrites) {
  const std::vector<std::string> types = {"BYTE", "INT",      "USHORT", "SHORT",    "FLOAT", "UINT",
                                          "RGB",  "SHORTRGB", "INTRGB", "FLOATRGB", "RGBA"};
  const std::vector<int> sizes = {1, 4, 2, 2, 4, 4, 3, 6, 12, 12, 4};
  for (std::size_t code = 0; code < types.size(); ++code) {
    for (const Shape& s : {Shape{3, 2}, Shape{1, 5, 2, 3, 4}}) {
      const int npix = s.nx * s.ny * s.nz * s.nc * s.nt;
      const RawImage img(s, static_cast<int>(code),
                         std::vector<unsigned char>(static_cast<std::size_t>(npix * sizes[code])),
                         std::vector<float>(static_cast<std::size_t>(npix)));
      image_io::writeICS(dir().file("a"), img);
      std::ostringstream expected;
      expected << "1 a " << types[code];
      for (const int size : {s.nx, s.ny, s.nz, s.nc, s.nt}) expected << ' ' << size;
      expected << " 1";
      EXPECT_EQ(textOf(parseFile(dir().file("a.ics"))), expected.str());
    }
  }
}

TEST_F(IcsParser, IsCalledFromC) {
  writeFile(file(),
            "filename fromC\nlayout order bytes x y z c t\n"
            "layout sizes 2 3 5 7 11 13\n");
  EXPECT_EQ(product_of_sizes_from_c(file().c_str(), "fromC", "SHORT"), 3 * 5 * 7 * 11 * 13);
  EXPECT_EQ(product_of_sizes_from_c(file().c_str(), "fromC", "BYTE"), -1);
}

TEST_F(IcsParser, ReportsAFileThatItCannotRead) {
  // Nor a directory, which opens.
  for (const std::string& name :
       {dir().file("missing.ics"), dir().file("no/some.ics"), dir().file("")}) {
    testing::internal::CaptureStderr();
    testing::internal::CaptureStdout();
    const reference::IcsHeader h = parseFile(name);
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "");
    EXPECT_EQ(testing::internal::GetCapturedStderr(),
              "In parse_ics_header_file: \ncould not open " + name + "\n");
    // The byte order is not written.
    EXPECT_EQ(textOf(h), "0 (null) (null) 0 0 1 0 0 " + std::to_string(kUnset));
  }
}

TEST_F(IcsParser, ParsesAtTheSameTime) {
  std::vector<std::thread> threads;
  for (int k = 1; k <= 4; ++k) {
    const std::string name = dir().file("thread" + std::to_string(k));
    std::string content = "filename d" + std::to_string(k) + "\nlayout order bytes x y\n";
    content.append("layout sizes 1 ").append(std::to_string(k)).append(" 5\n");
    writeFile(name, content);
    threads.emplace_back([name, expected = textOf(reference::icsHeader(content))] {
      for (int round = 0; round < 200; ++round) EXPECT_EQ(textOf(parseFile(name)), expected);
    });
  }
  for (std::thread& thread : threads) thread.join();
}

TEST_F(IcsParser, PassesOverNullPointers) {
  testing::internal::CaptureStderr();
  int x = kUnset;
  EXPECT_EQ(parse_ics_header_file(nullptr, nullptr, nullptr, &x, nullptr, nullptr, nullptr, nullptr,
                                  nullptr),
            0);
  EXPECT_EQ(x, 0);
  EXPECT_EQ(testing::internal::GetCapturedStderr(),
            "In parse_ics_header_file: \ncould not open \n");
  writeFile(file(), "filename a\nlayout order bits x\nlayout sizes 8 5\n");
  EXPECT_EQ(parse_ics_header_file(file().c_str(), nullptr, nullptr, nullptr, nullptr, nullptr,
                                  nullptr, nullptr, nullptr),
            1);
}

class IcsParserMatchesReference : public IcsParser {};

TEST_F(IcsParserMatchesReference, AtEveryLength) {
  const std::string whole =
      "\t\nics_version 1.0\nfilename a b\nlayout\torder\tbits\tx\ty\tz\tc\tt\n"
      "layout sizes 16 640 480 12 3 45\nrepresentation format unshort\n"
      "representation byte_order 1 2\nhistory layout order filename z\n";
  for (std::size_t length = 0; length <= whole.size(); ++length) parse(whole.substr(0, length));
}

TEST_F(IcsParserMatchesReference, ForRandomTexts) {
  Random random(361);
  const std::vector<std::string> pieces = {
      "filename", "layout",     "order",   "sizes", "representation",
      "format",   "byte_order", "bits",    "bytes", "x",
      "y",        "z",          "c",       "t",     "X",
      "8",        "16",         "32",      "1",     "2",
      "4",        "300",        "-7",      "float", "unshort",
      "unint",    "rgb",        "integer", "file",  "layout ",
      "lay",      "r",          "SIZES",   "é",     "\r",
      "_order"};
  const std::vector<std::string> gaps = {" ", " ", "\t", "\t", "\n", "\n", "  ", " \t", ""};
  for (int round = 0; round < 3000; ++round) {
    std::string text;
    // Some words stand together more often, so that values are reached.
    for (int n = randomInt(random, 0, 40); n > 0; --n) {
      const auto pick = [&](const std::vector<std::string>& from) {
        return from[static_cast<std::size_t>(
            randomInt(random, 0, static_cast<int>(from.size()) - 1))];
      };
      const int kind = randomInt(random, 0, 9);
      if (kind == 0) text += "\nlayout order bits x y z ";
      if (kind == 1) text += "\nlayout sizes ";
      if (kind == 2) text += "\nrepresentation\t" + pick({"format ", "byte_order\t"});
      text += pick(pieces) + pick(gaps);
    }
    parse(text);
  }
}

TEST_F(IcsParserMatchesReference, ForRandomBytes) {
  Random random(362);
  const std::string start = "filename layout order layout sizes 8 1 2 representation format ";
  for (int round = 0; round < 2000; ++round) {
    std::string text = randomInt(random, 0, 1) == 0 ? "" : start;
    for (int n = randomInt(random, 0, 200); n > 0; --n) {
      text += static_cast<char>(randomInt(random, 0, 255));
    }
    for (int n = randomInt(random, 0, 6); n > 0 && !text.empty(); --n) {
      const auto at = static_cast<std::size_t>(randomInt(random, 0, static_cast<int>(text.size())));
      text.insert(at, randomInt(random, 0, 1) == 0 ? "filename " : "\nlayout order bits x ");
    }
    parse(text);
  }
}

}  // namespace
}  // namespace orva::test
