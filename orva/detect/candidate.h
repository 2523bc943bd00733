// A place with its outline and what is measured there.
#ifndef ORVA_DETECT_CANDIDATE_H
#define ORVA_DETECT_CANDIDATE_H

#include <array>
#include <optional>
#include <vector>

#include "orva/detect/outline.h"

namespace orva::detect {

// What is measured of an outline. None depends on the units of brightness or on the size of the
// image; lengths are in pixels of the level.
enum Measure : int {
  kCoverage,           // share of the visible rays with an edge
  kEdgeToNoise,        // log of the mean edge over the noise of the gradient
  kEdgeShare,          // mean edge over the mean of the strongest along the rays
  kEvenness,           // lower quartile of the edges over their median
  kWeakEdges,          // lowest tenth of the edges over their median
  kSlope,              // mean change of radius from ray to ray, in samples
  kRoughness,          // mean change of the slope
  kAscent,             // mean return to the object's brightness on the way to the outline
  kAlignment,          // mean cosine between gradient and ray
  kAxisRatio,          // minor to major axis
  kSolidity,           // area over that of the convex hull
  kRoundness,          // 4 pi area / perimeter^2
  kLogLevelRadius,     // log of the radius
  kVisible,            // share of the rays whose crossing is inside the image
  kContrastToSpread,   // contrast over itself plus the spread of brightness inside
  kContrastToNoise,    // log of contrast over noise
  kOuterQuartile,      // inside less the brighter quartile outside, in contrasts
  kSeparateRays,       // share of the rays that are nearer to the outside's brightness outside
  kStrongerElsewhere,  // share of the rays with an edge twice as strong elsewhere
  kSharpness,          // contrast over the grey step of the edge
  kEdgeToMean,         // log of the mean edge over the level's mean gradient
  kOffCenter,          // distance of seed and centroid over the radius
  kOuterSpread,        // distance of the quartiles outside, in contrasts
  kPathValue,          // what the search for the outline maximized
  kLongestGap,         // longest run of visible rays without an edge, as a share of all rays
  kDirectionSpread,    // 0 where all gradients along the outline share one axis (stripes), 1 where
                       // they point everywhere
  kMeasures            // their number
};

// The place, in the image's pixels where nothing else is stated.
struct Candidate {
  int level = 0;
  Band band = Band::Usual;
  Polarity polarity = Polarity::Bright;
  float seedX = 0.0F;  // where the rays of the outline start
  float seedY = 0.0F;
  std::array<float, kRays> radii{};  // of the outline
  float x = 0.0F;                    // centroid of the part inside the image
  float y = 0.0F;
  float radius = 0.0F;
  float inside = 0.0F;  // mean brightness, negated for dark objects
  float outside = 0.0F;
  float contrast = 0.0F;  // their difference
  float edge = 0.0F;      // mean edge
  std::array<double, kMeasures> measures{};
  double logit = 0.0;  // score before the logistic function
};

// Whether an outline whose radius another level finds better is left out.
enum class LevelCheck { On, Off };

// Measures the outline; none where it has no edge on most rays, no contrast or no compact shape.
std::optional<Candidate> measured(const std::vector<ScaleLevel>& levels, int level, Band band,
                                  Polarity polarity, const Outline& outline,
                                  LevelCheck check = LevelCheck::On);

}  // namespace orva::detect

#endif
