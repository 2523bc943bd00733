// Writes the candidates of an image and their overlaps, for scripts/detect_weights.
//
//     detect_candidates IMAGE.pgm PREFIX
//
// PREFIX.candidates holds 32-bit floats, one record per candidate: polarity (0 bright, 1 dark), x,
// y, radius, the measures, inside, outside, contrast, edge. PREFIX.overlaps holds records of four:
// two indices, the share of the first one's area inside the second, and the reverse.
#include <algorithm>
#include <cstddef>
#include <cstdio>
#include <fstream>
#include <memory>
#include <numeric>
#include <string>
#include <vector>

#include "orva/detect/overlap.h"
#include "orva/detect/search.h"
#include "orva/image_io/image_io.h"

namespace {

using orva::detect::Candidate;
using orva::detect::Polarity;

void write(const std::string& name, const std::vector<float>& values) {
  std::ofstream out(name, std::ios::binary);
  out.write(reinterpret_cast<const char*>(values.data()),
            static_cast<std::streamsize>(values.size() * sizeof(float)));
}

std::vector<float> recordsOf(const std::vector<Candidate>& candidates) {
  std::vector<float> values;
  for (const Candidate& c : candidates) {
    values.insert(values.end(), {c.polarity == Polarity::Dark ? 1.0F : 0.0F, c.x, c.y, c.radius});
    for (const double m : c.measures) values.push_back(static_cast<float>(m));
    values.insert(values.end(), {c.inside, c.outside, c.contrast, c.edge});
  }
  return values;
}

std::vector<float> overlapsOf(const std::vector<Candidate>& candidates) {
  std::vector<std::size_t> order(candidates.size());
  std::iota(order.begin(), order.end(), std::size_t{0});
  std::sort(order.begin(), order.end(),
            [&](std::size_t i, std::size_t j) { return candidates[i].x < candidates[j].x; });
  float largest = 0;
  for (const Candidate& c : candidates) largest = std::max(largest, c.radius);
  std::vector<float> values;
  for (std::size_t i = 0; i < order.size(); ++i) {
    const Candidate& a = candidates[order[i]];
    for (std::size_t j = i + 1; j < order.size(); ++j) {
      const Candidate& b = candidates[order[j]];
      if (b.x - a.x > 1.1F * (a.radius + largest)) break;
      const float reach = 1.1F * (a.radius + b.radius);
      const float dx = a.x - b.x;
      const float dy = a.y - b.y;
      if (a.polarity != b.polarity || dx * dx + dy * dy > reach * reach) continue;
      const float ab = orva::detect::overlapShare(a, b);
      const float ba = orva::detect::overlapShare(b, a);
      if (std::max(ab, ba) <= 0.1F) continue;
      values.insert(values.end(),
                    {static_cast<float>(order[i]), static_cast<float>(order[j]), ab, ba});
    }
  }
  return values;
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 3) {
    std::fputs("usage: detect_candidates IMAGE.pgm PREFIX\n", stderr);
    return 2;
  }
  const std::unique_ptr<orva::Image> img(orva::image_io::readPGM(argv[1]));
  if (!img) return 1;
  const auto levels = orva::detect::scaleLevels(*img);
  const auto seeds = orva::detect::seedsOf(levels, {}, {});
  std::vector<Candidate> all;
  for (const Polarity p : {Polarity::Bright, Polarity::Dark}) {
    const auto found = orva::detect::candidatesOf(levels, seeds, p, {});
    all.insert(all.end(), found.begin(), found.end());
  }
  write(argv[2] + std::string(".candidates"), recordsOf(all));
  write(argv[2] + std::string(".overlaps"), overlapsOf(all));
  return 0;
}
