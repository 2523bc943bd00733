// The images that folders and patterns stand for.
#include "formats/image_list.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <random>
#include <string>
#include <vector>

namespace orva::test {
namespace {

namespace fs = std::filesystem;
using formats::imagesNamed;
using Names = std::vector<std::string>;

struct ImageList : ::testing::Test {
  ImageList()
      : folder(fs::path(::testing::TempDir()) /
               ("orva_list_" + std::to_string(std::random_device()()))) {
    fs::create_directories(folder / "sub.tif");
    fs::create_directories(folder / "empty");
    for (const char* name : {"b.tif", "a.PGM", "c[1].png", ".d.tif", "e.txt", "sub.tif/f.uif"}) {
      std::ofstream(folder / name) << "x";
    }
  }
  ~ImageList() override { fs::remove_all(folder); }

  std::string in(const std::string& name) const { return (folder / name).string(); }

  fs::path folder;
};

TEST_F(ImageList, OfAFolderHasItsImages) {
  EXPECT_EQ(imagesNamed(folder.string()), (Names{in("a.PGM"), in("b.tif"), in("c[1].png")}));
  EXPECT_EQ(imagesNamed(in("sub.tif")), (Names{in("sub.tif/f.uif")}));
  EXPECT_EQ(imagesNamed(in("sub.tif/")), (Names{in("sub.tif/f.uif")}));
  EXPECT_EQ(imagesNamed(in("empty")), Names{in("empty")});
}

TEST_F(ImageList, OfAPatternHasTheFilesItMatches) {
  EXPECT_EQ(imagesNamed(in("*.t??")), (Names{in("b.tif"), in("e.txt")}));
  EXPECT_EQ(imagesNamed(in("[ab].*")), (Names{in("a.PGM"), in("b.tif")}));
  EXPECT_EQ(imagesNamed(in("*/*.uif")), (Names{in("sub.tif/f.uif")}));
  EXPECT_EQ(imagesNamed(in("*.bmp")), Names{in("*.bmp")});
}

TEST_F(ImageList, OfAnotherNameIsThatName) {
  for (const std::string& name : {in("b.tif"), in("e.txt"), in("missing.tif"), in("c[1].png"),
                                  std::string("-"), std::string()}) {
    EXPECT_EQ(imagesNamed(name), Names{name});
  }
}

}  // namespace
}  // namespace orva::test
