// Circular voting on one image with the settings of the command.
#ifndef ORVA_FORMATS_VOTE_H
#define ORVA_FORMATS_VOTE_H

#include <optional>
#include <string>
#include <vector>

#include "orva/image/image.h"
#include "orva/voting/circularvoting.h"

namespace orva::formats {

struct VoteSettings {
  orva::voting::CircularVoting::RegionType polarity = orva::voting::CircularVoting::Bright;
  int minRadius = 1;
  int maxRadius = 20;
  std::optional<int> coneWidth;    // half of maxRadius, rounded, if not given
  std::optional<float> sigma;      // a seventh of maxRadius, at least 1, if not given
  std::optional<float> gradient;   // grey levels a pixel; relativeGradient counts if not given
  float relativeGradient = 0.03F;  // share of the strongest gradient
  std::optional<float> threshold;  // votes; relativeThreshold counts if not given
  float relativeThreshold = 0.3F;  // share of the strongest vote
  bool edges = false;
  float power = 0.5F;
};

// The settings as they were used, with nothing left open.
struct UsedSettings {
  int coneWidth;
  float sigma;
  float gradient;
};

struct Center {
  int x;
  int y;
  float weight;
};

struct VoteResult {
  UsedSettings used;
  std::vector<Center> centers;  // in label order
};

// Votes on `img`. With a `history` prefix the accumulator before every narrowing pass is left as an
// ICS pair PREFIXvote_NN. Throws FileError for an image that is too large for the radius and for a
// history that can not be written.
VoteResult vote(const orva::Image& img, const VoteSettings& settings,
                const std::optional<std::string>& history);

// The votes after the last pass, in which regions above the threshold make the centres; of the
// image's width and height. Throws as vote().
orva::image<float> voteField(const orva::Image& img, const VoteSettings& settings);

}  // namespace orva::formats

#endif
