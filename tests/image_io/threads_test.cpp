// Headers may be parsed at the same time.
#include <gtest/gtest.h>

#include <array>
#include <cstdlib>
#include <string>
#include <thread>
#include <vector>

#include "orva/image_io/icsparser.h"
#include "tests/support/files.h"

namespace orva::test {
namespace {

TEST(Threads, ParsingDifferentHeadersGetTheirOwnSizes) {
  constexpr int kRounds = 200;
  const TempDir dir;
  const std::array<std::string, 2> names{dir.file("a.ics"), dir.file("b.ics")};
  const std::array<int, 2> widths{31, 77};
  for (std::size_t i = 0; i < names.size(); ++i) {
    writeFile(names[i], "layout\torder\tbits\tx\ty\nlayout\tsizes\t8\t" +
                            std::to_string(widths[i]) + "\t5\nrepresentation\tformat\tinteger\n");
  }
  std::array<std::vector<int>, 2> found;
  std::vector<std::thread> threads;
  for (std::size_t i = 0; i < names.size(); ++i) {
    threads.emplace_back([&names, &found, i] {
      for (int round = 0; round < kRounds; ++round) {
        int width = 0;
        char* type = nullptr;
        if (parse_ics_header_file(names[i].c_str(), nullptr, &type, &width, nullptr, nullptr,
                                  nullptr, nullptr, nullptr) == 1) {
          found[i].push_back(width);
        }
        std::free(type);
      }
    });
  }
  for (std::thread& thread : threads) thread.join();
  for (std::size_t i = 0; i < names.size(); ++i) {
    EXPECT_EQ(found[i], std::vector<int>(kRounds, widths[i]));
  }
}

}  // namespace
}  // namespace orva::test
