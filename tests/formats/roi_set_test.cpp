// ROI sets of ImageJ.
#include "formats/roi_set.h"

#include <gtest/gtest.h>
#include <minizip/unzip.h>

#include <array>
#include <bit>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <random>
#include <string>
#include <utility>
#include <vector>

#include "tests/formats/detections_scene.h"

namespace orva::test {
namespace {

using formats::roiSetOf;

// The files of an archive in their order.
std::vector<std::pair<std::string, std::string>> unzipped(const std::string& bytes) {
  const std::filesystem::path path =
      std::filesystem::path(::testing::TempDir()) /
      ("orva_roi_set_" + std::to_string(std::random_device()()) + ".zip");
  std::ofstream(path, std::ios::binary) << bytes;
  const unzFile archive = unzOpen(path.c_str());
  EXPECT_NE(archive, nullptr);
  std::vector<std::pair<std::string, std::string>> files;
  for (int status = unzGoToFirstFile(archive); status == UNZ_OK;
       status = unzGoToNextFile(archive)) {
    unz_file_info facts{};
    std::array<char, 256> name{};
    EXPECT_EQ(
        unzGetCurrentFileInfo(archive, &facts, name.data(), name.size(), nullptr, 0, nullptr, 0),
        UNZ_OK);
    std::string content(facts.uncompressed_size, '\0');
    EXPECT_EQ(unzOpenCurrentFile(archive), UNZ_OK);
    EXPECT_EQ(unzReadCurrentFile(archive, content.data(), static_cast<unsigned>(content.size())),
              static_cast<int>(content.size()));
    EXPECT_EQ(unzCloseCurrentFile(archive), UNZ_OK);  // compares the check sum
    files.emplace_back(name.data(), content);
  }
  unzClose(archive);
  std::filesystem::remove(path);
  return files;
}

std::uint32_t numberAt(const std::string& file, std::size_t at, std::size_t bytes) {
  std::uint32_t v = 0;
  for (std::size_t i = 0; i < bytes; ++i) {
    v = v << 8U | static_cast<unsigned char>(file.at(at + i));
  }
  return v;
}

std::vector<int> shortsAt(const std::string& file, std::size_t at, std::size_t n) {
  std::vector<int> values;
  for (std::size_t i = 0; i < n; ++i) {
    values.push_back(static_cast<std::int16_t>(numberAt(file, at + 2 * i, 2)));
  }
  return values;
}

std::vector<float> floatsAt(const std::string& file, std::size_t at, std::size_t n) {
  std::vector<float> values;
  for (std::size_t i = 0; i < n; ++i) {
    values.push_back(std::bit_cast<float>(numberAt(file, at + 4 * i, 4)));
  }
  return values;
}

using Ints = std::vector<int>;
using Floats = std::vector<float>;

TEST(RoiSet, CentersAreOneMultiPoint) {
  const auto files = unzipped(roiSetOf({pointsScene()}));
  ASSERT_EQ(files.size(), 1U);
  EXPECT_EQ(files[0].first, "1-2.roi");
  const std::string& roi = files[0].second;
  EXPECT_EQ(roi.substr(0, 4), "Iout");
  EXPECT_EQ(numberAt(roi, 6, 1), 10U);
  EXPECT_EQ(shortsAt(roi, 8, 5), (Ints{7, 3, 20, 12, 2}));  // top, left, bottom, right, count
  EXPECT_EQ(shortsAt(roi, 64, 4), (Ints{9, 0, 0, 13}));
}

TEST(RoiSet, CirclesAreOvalsBetweenPixels) {
  const auto files = unzipped(roiSetOf({circlesScene()}));
  ASSERT_EQ(files.size(), 2U);
  EXPECT_EQ(files[1].first, "2.roi");
  const std::string& roi = files[0].second;
  EXPECT_EQ(numberAt(roi, 6, 1), 2U);
  EXPECT_EQ(numberAt(roi, 50, 2), 128U);
  EXPECT_EQ(floatsAt(roi, 18, 4), (Floats{4.5F, 14.75F, 12, 12}));
  EXPECT_EQ(shortsAt(roi, 8, 4), (Ints{14, 4, 27, 17}));
}

TEST(RoiSet, RegionsAreTracedOrComposite) {
  Detections d = contoursScene();
  d.contours[1].polygons.pop_back();
  const auto files = unzipped(roiSetOf({d}));
  ASSERT_EQ(files.size(), 2U);
  const std::string& ring = files[0].second;
  EXPECT_EQ(numberAt(ring, 6, 1), 1U);
  EXPECT_EQ(numberAt(ring, 36, 4), 26U);
  EXPECT_EQ(floatsAt(ring, 64, 26), (Floats{0, 0, 0, 1, 3, 0, 1, 3, 3, 1, 0, 3, 4,  //
                                            0, 1, 2, 1, 2, 2, 1, 2, 1, 1, 1, 1, 4}));
  const std::string& pixel = files[1].second;
  EXPECT_EQ(numberAt(pixel, 6, 1), 8U);
  EXPECT_EQ(shortsAt(pixel, 8, 5), (Ints{1, 4, 2, 5, 4}));
  EXPECT_EQ(shortsAt(pixel, 64, 8), (Ints{0, 1, 1, 0, 0, 0, 1, 1}));
}

TEST(RoiSet, NamesAreRowsOverAllImages) {
  const auto files = unzipped(roiSetOf({circlesScene(), circlesScene()}));
  ASSERT_EQ(files.size(), 4U);
  EXPECT_EQ(files[3].first, "4.roi");
  const std::string& roi = files[3].second;
  const std::size_t second = numberAt(roi, 60, 4);
  EXPECT_EQ(second, 64U);
  EXPECT_EQ(numberAt(roi, second + 20, 4), 1U);
  EXPECT_EQ(numberAt(roi, numberAt(roi, second + 16, 4), 2), unsigned{'4'});
}

TEST(RoiSet, PositionsCountFromOne) {
  formats::ImageFacts facts{"a.tif", 0, 40, 30};
  facts.position = {1, {}, 4, true};
  const std::string roi = unzipped(roiSetOf({circlesScene(facts)}))[0].second;
  EXPECT_EQ(numberAt(roi, 56, 4), 0U);
  EXPECT_EQ(numberAt(roi, 64 + 4, 4), 2U);
  EXPECT_EQ(numberAt(roi, 64 + 8, 4), 0U);
  EXPECT_EQ(numberAt(roi, 64 + 12, 4), 5U);
}

TEST(RoiSet, AProjectionInAHyperstackHasItsChannel) {
  formats::ImageFacts facts{"a.tif", 0, 40, 30};
  facts.position = {1, {}, {}, true};
  const std::string roi = unzipped(roiSetOf({circlesScene(facts)}))[0].second;
  EXPECT_EQ(numberAt(roi, 56, 4), 0U);
  EXPECT_EQ(numberAt(roi, 64 + 4, 4), 2U);
  EXPECT_EQ(numberAt(roi, 64 + 8, 4), 0U);
}

TEST(RoiSet, AStackAlongOneAxisHasOneNumber) {
  formats::ImageFacts facts{"a.tif", 0, 40, 30};
  facts.position.z = 6;
  const std::string roi = unzipped(roiSetOf({circlesScene(facts)}))[0].second;
  EXPECT_EQ(numberAt(roi, 56, 4), 7U);
  EXPECT_EQ(numberAt(roi, 64 + 8, 4), 0U);
}

TEST(RoiSet, OfNothingIsAnEmptyArchive) {
  Detections d = pointsScene();
  d.values.clear();
  d.places.clear();
  EXPECT_EQ(roiSetOf({d}), "PK\5\6" + std::string(18, '\0'));
}

TEST(RoiSet, DoesNotDependOnTheTime) {
  const std::string first = roiSetOf({circlesScene()});
  EXPECT_EQ(first.find(std::string("\0\0\x21\0", 4)), 10U);  // 1980-01-01 00:00
  EXPECT_EQ(roiSetOf({circlesScene()}), first);
}

TEST(RoiSet, ManyPointsHaveAWideCount) {
  Detections d = pointsScene();
  d.places.assign(70000, {5, 6});
  d.values.assign(3 * d.places.size(), 1);
  const std::string roi = unzipped(roiSetOf({d}))[0].second;
  EXPECT_EQ(numberAt(roi, 16, 2), 0U);
  EXPECT_EQ(numberAt(roi, 18, 4), 70000U);
}

TEST(RoiSet, CoordinatesBeyondShortsAreFloats) {
  Detections d = pointsScene();
  d.places[0].x = 40000;
  const std::string roi = unzipped(roiSetOf({d}))[0].second;
  EXPECT_EQ(numberAt(roi, 50, 2), 128U);
  EXPECT_EQ(floatsAt(roi, 64 + 8, 4), (Floats{40000, 3, 7, 20}));
}

}  // namespace
}  // namespace orva::test
