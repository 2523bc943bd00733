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
  COVERAGE,            // share of the visible rays with an edge
  EDGE_TO_NOISE,       // log of the mean edge over the noise of the gradient
  EDGE_SHARE,          // mean edge over the mean of the strongest along the rays
  EVENNESS,            // lower quartile of the edges over their median
  WEAK_EDGES,          // lowest tenth of the edges over their median
  SLOPE,               // mean change of radius from ray to ray, in samples
  ROUGHNESS,           // mean change of the slope
  ASCENT,              // mean return to the object's brightness on the way to the outline
  ALIGNMENT,           // mean cosine between gradient and ray
  AXIS_RATIO,          // minor to major axis
  SOLIDITY,            // area over that of the convex hull
  ROUNDNESS,           // 4 pi area / perimeter^2
  LOG_LEVEL_RADIUS,    // log of the radius
  VISIBLE,             // share of the rays whose crossing is inside the image
  CONTRAST_TO_SPREAD,  // contrast over itself plus the spread of brightness inside
  CONTRAST_TO_NOISE,   // log of contrast over noise
  OUTER_QUARTILE,      // inside less the brighter quartile outside, in contrasts
  SEPARATE_RAYS,       // share of the rays that are nearer to the outside's brightness outside
  STRONGER_ELSEWHERE,  // share of the rays with an edge twice as strong elsewhere
  SHARPNESS,           // contrast over the gray step of the edge
  EDGE_TO_MEAN,        // log of the mean edge over the level's mean gradient
  OFF_CENTER,          // distance of seed and centroid over the radius
  OUTER_SPREAD,        // distance of the quartiles outside, in contrasts
  PATH_VALUE,          // what the search for the outline maximized
  LONGEST_GAP,         // longest run of visible rays without an edge, as a share of all rays
  DIRECTION_SPREAD,    // 0 where all gradients along the outline share one axis (stripes), 1 where
                       // they point everywhere
  MEASURES             // their number
};

// The place, in the image's pixels where nothing else is stated.
struct Candidate {
  int level = 0;
  Band band = Band::Usual;
  Polarity polarity = Polarity::Bright;
  float seedX = 0.0F;  // where the rays of the outline start
  float seedY = 0.0F;
  std::array<float, RAYS> radii{};  // of the outline
  float x = 0.0F;                   // centroid of the part inside the image
  float y = 0.0F;
  float radius = 0.0F;
  float inside = 0.0F;  // mean brightness, negated for dark objects
  float outside = 0.0F;
  float contrast = 0.0F;  // their difference
  float edge = 0.0F;      // mean edge
  std::array<double, MEASURES> measures{};
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
