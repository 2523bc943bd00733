// Writes the steps of the search for objects as JSON, for scripts/detect_figures.
//
//     detect_steps IMAGE.pgm bright|dark > STEPS.json
//
// "levels" holds the factor of each size of the image, its edges as [x, y, dx, dy, weight] and its
// seeds as [x, y, 1 for small objects]; "candidates" the outlines with their scores, alone and in
// context, and whether they are kept. Candidates are in pixels of the image, all else in pixels of
// the level.
#include <algorithm>
#include <cstddef>
#include <cstdio>
#include <iostream>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "orva/detect/search.h"
#include "orva/image_io/image_io.h"

namespace {

using orva::detect::Candidate;
using orva::detect::EdgePixel;
using orva::detect::LevelSeeds;
using orva::detect::Polarity;
using orva::detect::ScaleLevel;
using orva::detect::Seed;

constexpr double kMinScore = 0.5;

// "[", the items as `print` prints them, "]".
template <class Items, class Print>
void printList(const Items& items, Print&& print) {
  std::cout << '[';
  bool isFirst = true;
  for (const auto& item : items) {
    if (!isFirst) std::cout << ",\n";
    isFirst = false;
    print(item);
  }
  std::cout << ']';
}

void printLevel(const ScaleLevel& level, const std::vector<Seed>& seeds) {
  std::cout << "{\"factor\": " << level.factor << ", \"edges\": ";
  printList(orva::detect::edgePixels(level), [](const EdgePixel& e) {
    std::cout << '[' << e.x << ',' << e.y << ',' << e.dx << ',' << e.dy << ',' << e.weight << ']';
  });
  std::cout << ", \"seeds\": ";
  printList(seeds, [](const Seed& s) {
    std::cout << '[' << s.x << ',' << s.y << ',' << (s.band == orva::detect::Band::Small) << ']';
  });
  std::cout << '}';
}

void printCandidate(const Candidate& c, double alone, bool isKept) {
  std::cout << "{\"level\": " << c.level << ", \"x\": " << c.x << ", \"y\": " << c.y
            << ", \"radius\": " << c.radius << ", \"seed\": [" << c.seedX << ',' << c.seedY
            << "], \"alone\": " << orva::detect::scoreOf(alone)
            << ", \"score\": " << orva::detect::scoreOf(c.logit)
            << ", \"kept\": " << (isKept ? "true" : "false") << ", \"radii\": ";
  printList(c.radii, [](float r) { std::cout << r; });
  std::cout << '}';
}

}  // namespace

int main(int argc, char** argv) {
  const std::string side = argc == 3 ? argv[2] : "";
  if (side != "bright" && side != "dark") {
    std::fputs("usage: detect_steps IMAGE.pgm bright|dark\n", stderr);
    return 2;
  }
  const std::unique_ptr<orva::Image> img(orva::image_io::readPGM(argv[1]));
  if (!img) return 1;
  const Polarity polarity = side == "dark" ? Polarity::Dark : Polarity::Bright;
  const std::vector<ScaleLevel> levels = orva::detect::scaleLevels(*img);
  const std::vector<LevelSeeds> seeds = orva::detect::seedsOf(levels, {}, polarity);
  std::vector<Candidate> alone = orva::detect::candidatesOf(levels, seeds, polarity, {});
  const auto selection = orva::detect::selected(alone, std::nullopt, kMinScore);
  orva::detect::scoreAlone(alone);

  std::cout << "{\"levels\": [";
  for (std::size_t i = 0; i < levels.size(); ++i) {
    if (i > 0) std::cout << ",\n";
    printLevel(levels[i], seeds[i].of(polarity));
  }
  std::cout << "],\n\"candidates\": [";
  for (std::size_t i = 0; i < alone.size(); ++i) {
    if (i > 0) std::cout << ",\n";
    const auto& kept = selection.kept;
    printCandidate(selection.candidates[i], alone[i].logit,
                   std::find(kept.begin(), kept.end(), i) != kept.end());
  }
  std::cout << "]}\n";
  return 0;
}
