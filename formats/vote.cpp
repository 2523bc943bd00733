#include "formats/vote.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <filesystem>
#include <limits>

#include "formats/file_error.h"
#include "formats/output_file.h"
#include "formats/silence.h"
#include "orva/scalespace/scalespace.h"

namespace orva::formats {
namespace {

namespace fs = std::filesystem;
using orva::voting::CircularVoting;

UsedSettings completed(const orva::Image& img, const VoteSettings& s) {
  const double radius = s.maxRadius;
  UsedSettings used{};
  used.coneWidth = s.coneWidth.value_or(static_cast<int>(std::lround(radius / 2)));
  used.sigma = s.sigma.value_or(static_cast<float>(std::max(1.0, radius / 7)));
  used.gradient =
      s.gradient ? *s.gradient
                 : s.relativeGradient * orva::scalespace::gradient(img, used.sigma, 1.0F).fmax();
  return used;
}

// The library finds no centres in an image whose padded side does not fit its 16-bit coordinates;
// here that is an error.
void requireFits(const orva::Image& img, int coneWidth, int maxRadius) {
  const double margin = std::floor(std::hypot(coneWidth, maxRadius) + 3);
  const double side = std::max(img.nx(), img.ny()) + 2 * margin;
  if (side > std::numeric_limits<std::int16_t>::max()) {
    throw FileError("is too large to vote on: a side and twice the margin exceed 32767 pixels");
  }
}

// Moves the pairs out of the work directory, all of them unless an error comes between.
void keepHistory(const fs::path& from, const fs::path& directory) {
  for (const auto& entry : fs::directory_iterator(from)) {
    const fs::path target = directory / entry.path().filename();
    if (fs::is_directory(target)) throw FileError(target.string() + " can not be written");
  }
  const SignalPause pause;
  for (const auto& entry : fs::directory_iterator(from)) {
    fs::rename(entry.path(), directory / entry.path().filename());
  }
}

// Shows the accumulator.
class Voting : public CircularVoting {
 public:
  // After compute(): the votes without the margin.
  orva::image<float> votes() const {
    orva::image<float> field(nx_, ny_, 1, 1, 1);
    for (int y = 0; y < ny_; ++y) {
      const float* row = acc_.pixels() + margin_ + std::ptrdiff_t{y + margin_} * acc_.nx();
      std::copy_n(row, nx_, field.pixels() + std::ptrdiff_t{y} * nx_);
    }
    return field;
  }
};

// Takes the settings over and returns those that were used.
UsedSettings prepare(CircularVoting& voting, const orva::Image& img, const VoteSettings& s) {
  const UsedSettings used = completed(img, s);
  requireFits(img, used.coneWidth, s.maxRadius);
  voting.setParams(s.polarity, s.minRadius, s.maxRadius, used.coneWidth, used.gradient,
                   s.threshold.value_or(s.relativeThreshold), used.sigma, CircularVoting::Power,
                   s.power, s.edges, s.threshold.has_value());
  return used;
}

}  // namespace

VoteResult vote(const orva::Image& img, const VoteSettings& s,
                const std::optional<std::string>& history) {
  CircularVoting voting;
  VoteResult result{prepare(voting, img, s), {}};
  if (history) {
    const fs::path prefix(*history);
    const fs::path directory = prefix.has_parent_path() ? prefix.parent_path() : ".";
    const WorkDirectory work(prefix);
    voting.saveHistory(true);
    voting.setPrefix((work.path() / prefix.filename()).string());
    {
      const Silence silence;
      voting.compute(img);
      if (silence.heard().find("image_io::writeICS") != std::string::npos) {
        throw FileError("the history " + *history + "vote_* can not be written");
      }
    }
    keepHistory(work.path(), directory);
  } else {
    voting.compute(img);
  }

  for (std::size_t i = 0; i < voting.centers().size(); ++i) {
    const orva::Point& p = voting.centers()[i];
    result.centers.push_back({p.x, p.y, voting.center_weights()[i]});
  }
  return result;
}

orva::image<float> voteField(const orva::Image& img, const VoteSettings& settings) {
  Voting voting;
  prepare(voting, img, settings);
  voting.compute(img);
  return voting.votes();
}

}  // namespace orva::formats
