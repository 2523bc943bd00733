// Filters of the command against the library's own.
#include <array>
#include <cmath>
#include <cstring>

#include "orva/scalespace/scalespace.h"
#include "tests/apps/conversions.h"
#include "tests/apps/pictures.h"
#include "tests/apps/tiff_files.h"

namespace orva::test {
namespace {

using FloatImage = image<float>;
using Filter = FloatImage (*)(const Image&, float);

struct Operation {
  const char* name;
  Filter apply;
};

const std::vector<Operation> kFlat{
    {"smooth", [](const Image& i, float s) { return scalespace::smooth(i, s, 1.0F); }},
    {"gradient", [](const Image& i, float s) { return scalespace::gradient(i, s, 1.0F); }},
    {"laplacian", [](const Image& i, float s) { return scalespace::laplacian(i, s); }},
    {"dx", [](const Image& i, float s) { return scalespace::dX(i, s); }},
    {"dy", [](const Image& i, float s) { return scalespace::dY(i, s); }},
    {"dxx", [](const Image& i, float s) { return scalespace::dXX(i, s); }},
    {"dyy", [](const Image& i, float s) { return scalespace::dYY(i, s); }},
    {"dxxx", [](const Image& i, float s) { return scalespace::dXXX(i, s); }},
    {"dyyy", [](const Image& i, float s) { return scalespace::dYYY(i, s); }},
    {"dxy", [](const Image& i, float s) { return scalespace::dXY(i, s); }}};

const std::vector<Operation> kDeep{
    {"dz", [](const Image& i, float s) { return scalespace::dZ(i, s); }},
    {"dzz", [](const Image& i, float s) { return scalespace::dZZ(i, s); }},
    {"dzzz", [](const Image& i, float s) { return scalespace::dZZZ(i, s); }},
    {"dxz", [](const Image& i, float s) { return scalespace::dXZ(i, s); }},
    {"dyz", [](const Image& i, float s) { return scalespace::dYZ(i, s); }}};

// The pixels as they lie in memory.
std::string bytesOf(const FloatImage& img) {
  return {reinterpret_cast<const char*>(img.pixels()),
          static_cast<std::size_t>(img.npix()) * sizeof(float)};
}

std::string bytesOf(const Content& content) {
  std::string bytes;
  for (const double v : content.values) {
    const auto sample = static_cast<float>(v);
    bytes.append(reinterpret_cast<const char*>(&sample), sizeof sample);
  }
  return bytes;
}

class FilterCommand : public ::testing::Test {
 protected:
  Outcome filter(const std::string& in, const std::string& op, const std::string& sigma,
                 const std::string& out, const std::vector<std::string>& options = {}) const {
    std::vector<std::string> arguments{"filter", in, "--op", op, "--sigma", sigma, "--output", out};
    arguments.insert(arguments.end(), options.begin(), options.end());
    return box.run(arguments);
  }

  // `in` holds `content`.
  void expectFiltered(const std::string& in, const Content& content, const Operation& operation,
                      const std::string& sigma) const {
    SCOPED_TRACE(std::string(operation.name) + " of " + in + " at " + sigma);
    const AsImage img(content);
    const FloatImage expected = operation.apply(*img, std::stof(sigma));
    for (const std::string out : {"out.iht", "out.tif", "out.ics"}) {
      const Outcome outcome = filter(in, operation.name, sigma, out);
      EXPECT_TRUE(succeeded(outcome));
      EXPECT_EQ(outcome.out, "");
      const Content result = readContent(box / out);
      EXPECT_EQ(result.type, FLOAT);
      EXPECT_EQ((std::vector{result.width, result.height, result.planes}),
                (std::vector{expected.nx(), expected.ny(), expected.nz()}));
      EXPECT_TRUE(bytesOf(result) == bytesOf(expected)) << out;
    }
  }

  Sandbox box;
};

TEST_F(FilterCommand, EveryOperationOnEveryPixelType) {
  unsigned seed = 20;
  for (const auto type : {BYTE, SHORT, USHORT, INT, UINT, FLOAT}) {
    const Content content =
        randomContent(type, {13, 9, 1}, type == BYTE ? 0 : 1, type == BYTE ? 255 : 30000, seed++);
    writeContent(box / "in.tif", content);
    for (const Operation& operation : kFlat) expectFiltered("in.tif", content, operation, "1.3");
  }
}

TEST_F(FilterCommand, EveryOperationOnStacks) {
  const Content content = randomContent(SHORT, {8, 7, 5}, -500, 500, 60);
  writeContent(box / "in.iht", content);
  writeContent(box / "in.tif", content);
  for (const auto* operations : {&kFlat, &kDeep}) {
    for (const Operation& operation : *operations) {
      expectFiltered("in.iht", content, operation, "0.9");
      expectFiltered("in.tif", content, operation, "2");
    }
  }
}

TEST_F(FilterCommand, ScalesAndOddSizes) {
  for (const Sizes& s : {Sizes{1, 1, 1}, Sizes{2, 1, 1}, Sizes{1, 30, 1}, Sizes{70, 3, 1}}) {
    const Content content = randomContent(BYTE, s, 0, 255, 61);
    writeContent(box / "in.pgm", content);
    for (const std::string sigma : {"0.1", "0.5", "3", "12.5", "1000"}) {
      expectFiltered("in.pgm", content, kFlat[0], sigma);
      expectFiltered("in.pgm", content, kFlat[1], sigma);
      expectFiltered("in.pgm", content, kFlat[4], sigma);
    }
  }
}

TEST_F(FilterCommand, AFrameIsFilteredAlone) {
  const Content content = randomContent(BYTE, {8, 7, 3}, 0, 255, 62);
  for (const std::string in : {"in.tif", "in.iht", "in.uif"}) {
    writeContent(box / in, content);
    for (int k = 0; k < 3; ++k) {
      const AsImage plane(content.plane(k));
      EXPECT_TRUE(
          succeeded(filter(in, "gradient", "1", "out.iht", {"--frame", std::to_string(k)})));
      EXPECT_TRUE(bytesOf(readContent(box / "out.iht")) ==
                  bytesOf(scalespace::gradient(*plane, 1, 1)));
    }
    EXPECT_TRUE(failedWithOneLine(filter(in, "gradient", "1", "out.iht", {"--frame", "3"}), in,
                                  "there is no frame 3"));
  }
}

TEST_F(FilterCommand, ColourCountsAsLuminance) {
  const Content colour = randomContent(RGB, {9, 6, 1}, 0, 255, 63);
  const AsImage grey(luminance(colour));
  for (const std::string in : {"in.ppm", "in.png", "in.tif"}) {
    SCOPED_TRACE(in);
    writeContent(box / in, colour);
    EXPECT_TRUE(succeeded(filter(in, "smooth", "1", "out.tif")));
    EXPECT_TRUE(bytesOf(readContent(box / "out.tif")) == bytesOf(scalespace::smooth(*grey, 1, 1)));
  }
}

TEST_F(FilterCommand, DerivativesAlongTheFramesNeedAStack) {
  const Content content = randomContent(BYTE, {8, 7, 3}, 0, 255, 64);
  writeContent(box / "flat.pgm", content.plane(0));
  writeContent(box / "stack.tif", content);
  for (const Operation& operation : kDeep) {
    const std::string words =
        std::string("has one plane, and ") + operation.name + " needs a stack\n";
    EXPECT_TRUE(
        failedWithOneLine(filter("flat.pgm", operation.name, "1", "out.iht"), "flat.pgm", words));
    EXPECT_TRUE(failedWithOneLine(
        filter("stack.tif", operation.name, "1", "out.iht", {"--frame", "1"}), "stack.tif", words));
  }
  EXPECT_EQ(box.names(), (std::vector<std::string>{"flat.pgm", "stack.tif"}));
}

// The largest and the smallest value of each type whose samples are held in its own width.
TEST_F(FilterCommand, KeptTypeIsThatOfTheImage) {
  const auto held = [](ImageFormat type) -> std::array<double, 2> {
    switch (type) {
      case BYTE:
        return {0, 255};
      case USHORT:
        return {0, 65535};
      case SHORT:
        return {-32768, 32767};
      default:
        return {0, 60000};
    }
  };
  unsigned seed = 70;
  for (const auto type : {BYTE, SHORT, USHORT, INT, UINT, FLOAT}) {
    for (const Sizes& sizes : {Sizes{13, 9, 1}, Sizes{6, 5, 3}}) {
      SCOPED_TRACE(type);
      const auto [low, high] = held(type);
      const Content content = randomContent(type, sizes, low, high, seed++);
      writeContent(box / "in.tif", content);
      const FloatImage smooth = scalespace::smooth(*AsImage(content), 1.5F, 1.0F);
      Content expected{type, sizes.width, sizes.height, sizes.planes, {}};
      for (int i = 0; i < smooth.npix(); ++i) {
        const float v = smooth.pixels()[i];
        expected.values.push_back(type == FLOAT ? v : std::round(v));
      }
      ASSERT_TRUE(succeeded(filter("in.tif", "smooth", "1.5", "out.tif", {"--keep-type"})));
      EXPECT_EQ(readContent(box / "out.tif"), expected);
      // IHT files have no unsigned pixels but bytes.
      if (type == USHORT || type == UINT) expected.type = INT;
      ASSERT_TRUE(succeeded(filter("in.tif", "smooth", "1.5", "out.iht", {"--keep-type"})));
      EXPECT_EQ(readContent(box / "out.iht"), expected);
      for (const std::string name : {"out.tif", "out.iht"}) std::filesystem::remove(box / name);
    }
  }
}

TEST_F(FilterCommand, KeptTypeOfAFrame) {
  const Content content = randomContent(USHORT, {6, 5, 3}, 0, 65535, 80);
  writeContent(box / "in.tif", content);
  ASSERT_TRUE(
      succeeded(filter("in.tif", "smooth", "1", "out.tif", {"--keep-type", "--frame", "1"})));
  const Content frame = readContent(box / "out.tif");
  EXPECT_EQ(frame.type, USHORT);
  const FloatImage smooth = scalespace::smooth(*AsImage(content.plane(1)), 1.0F, 1.0F);
  for (int i = 0; i < smooth.npix(); ++i) {
    EXPECT_EQ(frame.values[static_cast<std::size_t>(i)], std::round(smooth.pixels()[i]));
  }
}

TEST_F(FilterCommand, ResultsBeyondTheKeptTypeFail) {
  writeContent(box / "in.tif", {USHORT, 3, 1, 1, {0, 65535, 0}});
  writeContent(box / "bytes.tif", {BYTE, 3, 1, 1, {255, 255, 255}});
  EXPECT_TRUE(failedWithOneLine(filter("in.tif", "dx", "1", "out.tif", {"--keep-type"}), "in.tif",
                                "has a result of -"));
  EXPECT_TRUE(failedWithOneLine(
      filter("in.tif", "dx", "1", "out.tif", {"--keep-type"}), "in.tif",
      "which its pixel type, unsigned 16-bit, does not hold; leave out --keep-type for floats"));
  // Small sigmas change the brightness.
  EXPECT_TRUE(failedWithOneLine(filter("bytes.tif", "smooth", "0.1", "out.tif", {"--keep-type"}),
                                "bytes.tif", "unsigned 8-bit"));
  EXPECT_FALSE(std::filesystem::exists(box / "out.tif"));
}

TEST_F(FilterCommand, KeptTypeOfColourIsThatOfItsLuminance) {
  const Content colour = randomContent(RGB, {9, 6, 1}, 0, 255, 81);
  writeContent(box / "in.tif", colour);
  ASSERT_TRUE(succeeded(filter("in.tif", "smooth", "1", "kept.tif", {"--keep-type"})));
  ASSERT_TRUE(succeeded(filter("in.tif", "smooth", "1", "out.tif")));
  EXPECT_EQ(box.read("kept.tif"), box.read("out.tif"));
}

TEST_F(FilterCommand, PagesThatDifferFail) {
  {
    TiffFile file(box / "pages.tif");
    file.page({2, 2, 1, {1, 2, 3, 4}});
    file.page({4, 1, 1, {1, 2, 3, 4}});
  }
  EXPECT_TRUE(failedWithOneLine(filter("pages.tif", "dx", "1", "out.iht"), "pages.tif",
                                "its pages differ in size or pixel type"));
  EXPECT_TRUE(succeeded(filter("pages.tif", "dx", "1", "out.iht", {"--frame", "1"})));
}

// The gradient is strongest at the edges of the discs, the Laplacian negative inside.
TEST_F(FilterCommand, FiltersMeanWhatTheirNamesSay) {
  const Picture picture = twoDiscs();
  box.write("discs.pgm", pgm(picture));
  const auto at = [&](const std::string& op, double x, double y) {
    EXPECT_TRUE(succeeded(filter("discs.pgm", op, "2", "out.iht")));
    const Content result = readContent(box / "out.iht");
    return result.values[static_cast<std::size_t>(x + y * picture.width)];
  };
  const Disc& d = kTwoDiscs[0];
  EXPECT_GT(at("gradient", d.x + d.radius, d.y), 5 * at("gradient", d.x, d.y));
  EXPECT_LT(at("laplacian", d.x, d.y), 0);
  EXPECT_LT(at("dx", d.x + d.radius, d.y), 0);
  EXPECT_GT(at("dx", d.x - d.radius, d.y), 0);
  EXPECT_LT(at("dy", d.x, d.y + d.radius), 0);
  EXPECT_GT(at("smooth", d.x, d.y), at("smooth", 0, 0));
}

TEST_F(FilterCommand, SampleImages) {
  for (const std::string name : {"dsb_sparse_a", "dsb_histw_a"}) {
    const std::string file = ORVA_DATA "/images/" + name + ".pgm";
    const AsImage img(readContent(file));
    EXPECT_TRUE(succeeded(filter(file, "laplacian", "3", "out.iht")));
    EXPECT_TRUE(bytesOf(readContent(box / "out.iht")) == bytesOf(scalespace::laplacian(*img, 3)));
  }
}

}  // namespace
}  // namespace orva::test
