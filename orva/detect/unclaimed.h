// Regions that no object claims.
#ifndef ORVA_DETECT_UNCLAIMED_H
#define ORVA_DETECT_UNCLAIMED_H

#include <vector>

#include "orva/detect/detect.h"

namespace orva::detect {

inline constexpr int kMinClaimed = 3;            // regions that others are compared with
inline constexpr int kFarPixels = 4;             // along the axes from any region: background
inline constexpr double kFaintShare = 0.3;       // of the regions are fainter than what counts
inline constexpr float kUnclaimedLevel = 0.42F;  // between the background and their brightness
inline constexpr float kUnclaimedToNoise = 4.0F;
inline constexpr double kMinAreaShare = 0.5;  // of the regions' median area
inline constexpr double kMaxAreaShare = 2.5;
inline constexpr double kMinUnclaimedSolidity = 0.75;
inline constexpr int kSampledBackground = 1 << 18;  // pixels
inline constexpr float kMinOwnContrast = 0.5F;      // share of the contrast to the background

// Where the regions of `labels` (0 is background, 1 .. n are regions) stand out of the background
// of `plane`, in which objects are bright, others may stand out like them and have no label: those
// whose shape has no single center. Labels them n + 1, n + 2 and so on in raster order of their
// first pixels, and returns an object for each, with the centroid, the radius of a circle of the
// same area, a score of kUnclaimedScore and no coverage.
//
// Unclaimed are the 4-connected components of the pixels above a threshold that neither have a
// label nor a labelled pixel among their four neighbours. The threshold lies at kUnclaimedLevel
// between the median of the background (the pixels farther than kFarPixels steps along the axes
// from any region; in an image of k times kSampledBackground pixels every k-th, in raster order)
// and the brightness that kFaintShare of the regions' medians do not reach, and
// kUnclaimedToNoise standard deviations (from the median deviation) above the background at least.
// A component counts if its area is kMinAreaShare to kMaxAreaShare of the regions' median area, its
// solidity at least kMinUnclaimedSolidity, and its median above that of the unlabelled pixels from
// 2 to kFarPixels steps around it by at least kMinOwnContrast of what it is above the background.
//
// None with fewer than kMinClaimed regions, without background, or where the regions are not
// brighter than it.
std::vector<Object> labelUnclaimed(const image<float>& plane, image<int>& labels);

inline constexpr float kUnclaimedScore = 0.5F;

}  // namespace orva::detect

#endif
