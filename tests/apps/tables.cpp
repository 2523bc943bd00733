#include "tests/apps/tables.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <sstream>
#include <stdexcept>

#include "orva/scalespace/scalespace.h"

namespace orva::test {
namespace {

// The number at `at`, which moves behind it and the character `end`.
template <class Number>
Number take(const std::string& line, std::size_t& at, char end) {
  Number value{};
  const char* last = line.data() + line.size();
  const auto [behind, error] = std::from_chars(line.data() + at, last, value);
  if (error != std::errc() || behind == last || *behind != end) {
    throw std::runtime_error("not a row of a table: " + line);
  }
  at = static_cast<std::size_t>(behind - line.data()) + 1;
  return value;
}

}  // namespace

Table parseCsv(const std::string& text) {
  std::istringstream in(text);
  std::string line;
  if (!std::getline(in, line) || line != "x,y,weight" || text.back() != '\n') {
    throw std::runtime_error("not a table: " + text);
  }
  Table table;
  while (std::getline(in, line)) {
    line += '\n';
    std::size_t at = 0;
    Row row{};
    row.x = take<int>(line, at, ',');
    row.y = take<int>(line, at, ',');
    row.weight = take<float>(line, at, '\n');
    table.push_back(row);
  }
  return table;
}

::testing::AssertionResult marksEach(const Table& table, const std::vector<Disc>& objects) {
  bool good = table.size() == objects.size();
  for (const Disc& d : objects) {
    good = good && std::any_of(table.begin(), table.end(), [&d](const Row& r) {
             return std::hypot(r.x - d.x, r.y - d.y) <= 2.0;
           });
  }
  if (good) return ::testing::AssertionSuccess();
  return ::testing::AssertionFailure() << "centers " << ::testing::PrintToString(table);
}

int Settings::usedConeWidth() const {
  return coneWidth.value_or(static_cast<int>(std::lround(maxRadius / 2.0)));
}

float Settings::usedSigma() const {
  return sigma.value_or(static_cast<float>(std::max(1.0, maxRadius / 7.0)));
}

float Settings::usedGradient(const Image& img) const {
  if (gradient) return *gradient;
  const image<float> g = scalespace::gradient(img, usedSigma(), 1.0F);
  return relativeGradient * *std::max_element(g.pixels(), g.pixels() + g.npix());
}

Table voteDirectly(const Image& img, const Settings& s) {
  voting::CircularVoting voting;
  voting.setParams(s.polarity, s.minRadius, s.maxRadius, s.usedConeWidth(), s.usedGradient(img),
                   s.threshold.value_or(s.relativeThreshold), s.usedSigma(),
                   voting::CircularVoting::Power, s.power, s.edges, s.threshold.has_value());
  voting.saveHistory(!s.history.empty());
  voting.setPrefix(s.history);
  voting.compute(img);
  Table table;
  for (std::size_t i = 0; i < voting.centers().size(); ++i) {
    const Point& p = voting.centers()[i];
    table.push_back({p.x, p.y, voting.center_weights()[i]});
  }
  return table;
}

}  // namespace orva::test
