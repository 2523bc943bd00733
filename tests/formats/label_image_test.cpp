// Label images as files.
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <memory>
#include <random>
#include <string>

#include "formats/file_error.h"
#include "formats/image_source.h"
#include "formats/image_writer.h"

namespace orva::test {
namespace {

image<int> labelsUpTo(int highest) {
  image<int> labels(3, 2, 1, 1, 1);
  for (int i = 0; i < labels.npix(); ++i) labels.pixels()[i] = i;
  labels.pixels()[5] = highest;
  return labels;
}

// What a file of these bytes holds.
struct Read {
  explicit Read(const std::string& bytes) {
    const std::filesystem::path path = std::filesystem::path(::testing::TempDir()) /
                                       ("orva_labels_" + std::to_string(std::random_device()()));
    std::ofstream(path, std::ios::binary) << bytes;
    const formats::ImageSource source(path.string());
    axes = source.axes();
    isUnsigned16 = source.isUnsigned16();
    img = source.read(0, formats::ColourUse::kKept);
    std::filesystem::remove(path);
  }

  formats::ImageAxes axes;
  bool isUnsigned16 = false;
  std::unique_ptr<Image> img;
};

void expectLabels(const Read& file, const image<int>& labels) {
  const auto& found = dynamic_cast<const image<int>&>(*file.img);
  ASSERT_EQ(found.npix(), labels.npix());
  for (int i = 0; i < labels.npix(); ++i) EXPECT_EQ(found.pixels()[i], labels.pixels()[i]);
}

TEST(LabelImage, UpTo65535HasUnsigned16Bits) {
  for (const std::string name : {"a.tif", "a.TIFF", "a.png", "-"}) {
    SCOPED_TRACE(name);
    const Read file(formats::encodeLabels(name, labelsUpTo(65535)));
    EXPECT_TRUE(file.isUnsigned16);
    expectLabels(file, labelsUpTo(65535));
  }
}

TEST(LabelImage, AboveIsATiffFileOf32Bits) {
  for (const int highest : {65536, 70000, 2147483647}) {
    const Read file(formats::encodeLabels("a.tif", labelsUpTo(highest)));
    EXPECT_FALSE(file.isUnsigned16);
    expectLabels(file, labelsUpTo(highest));
  }
}

TEST(LabelImage, AboveDoesNotFitPng) {
  try {
    formats::encodeLabels("a.png", labelsUpTo(65536));
    FAIL() << "no error";
  } catch (const formats::FileError& error) {
    EXPECT_STREQ(error.what(),
                 "has more than 65535 objects, the labels that a PNG file holds; name a TIFF file");
  }
}

TEST(LabelImage, TiffHasTheSizeOfAPixel) {
  for (const std::string name : {"a.tif", "a.ome.tif"}) {
    for (const int highest : {5, 70000}) {
      const Read file(formats::encodeLabels(name, labelsUpTo(highest), {0.5, 0.25, {}}));
      EXPECT_EQ(file.axes.pixelSize, (formats::PixelSize{0.5, 0.25, {}})) << name;
      expectLabels(file, labelsUpTo(highest));
    }
  }
  EXPECT_EQ(Read(formats::encodeLabels("a.tif", labelsUpTo(5))).axes.pixelSize,
            formats::PixelSize());
}

}  // namespace
}  // namespace orva::test
