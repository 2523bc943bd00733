// From an image's levels to scored candidates.
#ifndef ORVA_DETECT_SEARCH_H
#define ORVA_DETECT_SEARCH_H

#include <cstddef>
#include <limits>
#include <optional>
#include <vector>

#include "orva/detect/candidate.h"
#include "orva/detect/detect.h"
#include "orva/detect/score.h"

namespace orva::detect {

// Radii to look for, in pixels of the image.
struct RadiusRange {
  float low = 0.0F;
  float high = std::numeric_limits<float>::infinity();
  bool contains(float radius) const { return radius >= low && radius <= high; }
  RadiusRange widened(float factor) const { return {low / factor, high * factor}; }
};

// Seeds of one level, polarity by polarity.
struct LevelSeeds {
  std::vector<Seed> bright;
  std::vector<Seed> dark;
  const std::vector<Seed>& of(Polarity p) const { return p == Polarity::Bright ? bright : dark; }
  std::vector<Seed>& of(Polarity p) { return p == Polarity::Bright ? bright : dark; }
};

// The seeds of each level that may hold objects of the range.
std::vector<LevelSeeds> seedsOf(const std::vector<ScaleLevel>& levels, const RadiusRange& range,
                                std::optional<Polarity> polarity);

// About `count` of one polarity's seeds: those of the most votes, and others spread evenly.
std::vector<LevelSeeds> sampleOf(const std::vector<LevelSeeds>& seeds, Polarity polarity,
                                 std::size_t count);

// The measured outlines around the seeds, without duplicates. Radii may lie somewhat outside the
// range, since they change when an outline is refined.
std::vector<Candidate> candidatesOf(const std::vector<ScaleLevel>& levels,
                                    const std::vector<LevelSeeds>& seeds, Polarity polarity,
                                    const RadiusRange& range);

// Scored candidates and those that are kept as objects.
struct Selection {
  std::vector<Candidate> candidates;
  std::vector<std::size_t> kept;  // highest score first
  std::optional<Context> context;
};

// Scores the candidates alone, then in the context of those that are kept, and selects.
Selection selected(std::vector<Candidate> candidates, std::optional<float> radius, double minScore);

// The object's outline searched again from its centroid, so that the result does not depend on the
// seed; the candidate as it is where the search ends elsewhere.
Candidate refined(const std::vector<ScaleLevel>& levels, const Candidate& candidate);

// The outline around the center of an object that is known; none where the image has no outline of
// about its radius there.
std::optional<Candidate> outlinedAgain(const std::vector<ScaleLevel>& levels, Polarity polarity,
                                       float x, float y, float radius);

// @throws std::invalid_argument for a setting out of its range or not a number
void requireInRange(const FindSettings& settings);

// The radii that the settings ask for.
RadiusRange rangeOf(const FindSettings& settings);

// findObjects() in the levels of an image, for settings in their range.
FindResult objectsIn(const std::vector<ScaleLevel>& levels, const FindSettings& settings);

}  // namespace orva::detect

#endif
