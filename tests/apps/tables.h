// The tables of the command, and those computed directly by the library.
#ifndef ORVA_TESTS_APPS_TABLES_H
#define ORVA_TESTS_APPS_TABLES_H

#include <gtest/gtest.h>

#include <optional>
#include <ostream>
#include <string>
#include <vector>

#include "orva/voting/circularvoting.h"
#include "tests/apps/pictures.h"

namespace orva::test {

struct Row {
  int x;
  int y;
  float weight;

  bool operator==(const Row&) const = default;
  friend std::ostream& operator<<(std::ostream& out, const Row& r) {
    return out << r.x << ',' << r.y << ',' << r.weight;
  }
};
using Table = std::vector<Row>;

// A table of the command; throws unless it is "x,y,weight" and rows of two whole numbers and one
// more number.
Table parseCsv(const std::string& text);

// One row within two pixels of each disc, and no others.
::testing::AssertionResult marksEach(const Table& table, const std::vector<Disc>& objects);

// The documented defaults of the command.
struct Settings {
  voting::CircularVoting::RegionType polarity = voting::CircularVoting::Bright;
  int minRadius = 1;
  int maxRadius = 20;
  std::optional<int> coneWidth{};   // half of maxRadius, rounded
  std::optional<float> sigma{};     // a seventh of maxRadius, at least 1
  std::optional<float> gradient{};  // relativeGradient of the strongest
  float relativeGradient = 0.03F;
  std::optional<float> threshold{};
  float relativeThreshold = 0.3F;
  bool edges = false;
  float power = 0.5F;
  std::string history{};  // a prefix, or none

  int usedConeWidth() const;
  float usedSigma() const;
  float usedGradient(const Image& img) const;
};

// The centers that CircularVoting finds.
Table voteDirectly(const Image& img, const Settings& settings);

}  // namespace orva::test

#endif
