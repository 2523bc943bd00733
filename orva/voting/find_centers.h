/// @file
/// Circular voting in one call, with the settings that are left open derived from the image.
///
///     orva::voting::VoteSettings settings;  // bright objects
///     settings.maxRadius = 36;              // of radius up to 26 pixels
///     for (const auto& c : orva::voting::findCenters(img, settings).centers)
///       std::cout << c.x << ' ' << c.y << '\n';
///
/// The command, the Python package and the Java classes search by these settings, so the same
/// settings find the same centers everywhere.
#ifndef ORVA_VOTING_FIND_CENTERS_H
#define ORVA_VOTING_FIND_CENTERS_H

#include <cstdint>
#include <optional>
#include <vector>

#include "orva/image/image.h"
#include "orva/util/export.h"
#include "orva/voting/circularvoting.h"

namespace orva::voting {

/// What to look for.
struct VoteSettings {
  CircularVoting::RegionType polarity = CircularVoting::Bright;  ///< which objects are looked for
  int minRadius = 1;               ///< nearest vote in pixels, 1 to maxRadius
  int maxRadius = 20;              ///< farthest vote in pixels, about 1.4 times an object's radius
  std::optional<int> coneWidth;    ///< half-width of the widest cone at maxRadius, in pixels;
                                   ///< half of maxRadius, rounded, unless given
  std::optional<float> sigma;      ///< scale of the gradient in pixels, above 0; a seventh of
                                   ///< maxRadius, at least 1, unless given
  std::optional<float> gradient;   ///< weaker gradients cast no vote, in grey levels per pixel
  float relativeGradient = 0.03F;  ///< the same as a share of the strongest gradient, unless
                                   ///< gradient is given
  std::optional<float> threshold;  ///< regions of more votes make a center
  float relativeThreshold = 0.3F;  ///< the same as a share of the strongest vote, 0.05 to 1,
                                   ///< unless threshold is given
  bool edges = false;              ///< vote only from the edges of bright blobs
  float power = 0.5F;              ///< exponent that turns gradient magnitudes into weights
};

/// The settings that an image completes.
struct UsedSettings {
  int coneWidth;   ///< half-width of the widest cone at maxRadius, in pixels
  float sigma;     ///< scale of the gradient in pixels
  float gradient;  ///< weaker gradients cast no vote, in grey levels per pixel
};

/// A center and the mean vote of its region.
struct Center {
  int x;         ///< column, from 0
  int y;         ///< row, from 0
  float weight;  ///< mean vote
};

/// What findCenters() returns.
struct VoteResult {
  UsedSettings used;            ///< the settings as they were used
  std::vector<Center> centers;  ///< in the order of their regions' first pixels
};

/// The columns and rows that the voting adds on each side of an image, for cones of half-width
/// @p coneWidth at @p maxRadius. A side of the image and twice its margin may have 32767 pixels.
ORVA_EXPORT std::int64_t voteMargin(int coneWidth, int maxRadius);

/// Finds the centers in plane 0 of @p img, with CircularVoting::compute(). An image without pixels
/// has no centers.
///
/// @param img any image; of several channels and time points the first counts
/// @param settings what to look for
/// @param history called with the cone width in pixels and the votes so far, without the margin,
///        before every narrowing pass; what it throws ends the search
/// @throws std::invalid_argument for a setting out of its range or not a number
/// @throws std::length_error for an image whose side, with the margin, exceeds 32767 pixels
///
/// Border rule, memory and cost are those of CircularVoting::compute(); a relative gradient adds
/// one gradient filter.
ORVA_EXPORT VoteResult findCenters(const Image& img, const VoteSettings& settings,
                                   const CircularVoting::PassObserver& history = {});

/// The votes after the last pass, whose regions above the threshold make the centers; of the
/// width and height of @p img. Throws as findCenters().
ORVA_EXPORT image<float> voteField(const Image& img, const VoteSettings& settings);

}  // namespace orva::voting

#endif
