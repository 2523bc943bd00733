/// @file
/// Finds round objects of unknown size and brightness: centers, radii and scores.
///
///     for (const auto& o : orva::detect::findObjects(img, {}).objects)
///       std::cout << o.x << ' ' << o.y << ' ' << o.radius << ' ' << o.score << '\n';
///
/// Every setting that is left open comes from the image. The image is searched at full size for
/// small objects and at a half, a quarter, ... of it for larger ones, so the cost does not grow
/// with the radius. At each size, edge pixels vote along their gradients for places that edges
/// surround; around each such place the best closed outline is found on 32 rays by dynamic
/// programming; what is measured along the outline makes the score. Of overlapping outlines the
/// one with the higher score remains.
///
/// The results are the same bit for bit on every CPU. Nothing is printed and no thread started.
#ifndef ORVA_DETECT_DETECT_H
#define ORVA_DETECT_DETECT_H

#include <optional>
#include <vector>

#include "orva/image/image.h"
#include "orva/util/export.h"

/// Settings from the image, objects with radius and score.
namespace orva::detect {

/// Whether objects are brighter or darker than what surrounds them.
enum class Polarity { Bright, Dark };

/// What an image appears to hold.
struct Settings {
  float radius = 0.0F;                   ///< typical radius of the objects in pixels; 0 for none
  Polarity polarity = Polarity::Bright;  ///< which objects there are
  float confidence = 0.0F;               ///< 0 (nothing was found) to 1
};

/// What estimateSettings() returns.
struct SettingsEstimate : Settings {
  Settings runnerUp;  ///< the best of the other polarity
};

/// With a given radius, objects are found whose radius differs from it by this factor at most.
inline constexpr float kRadiusRange = 2.5F;

/// What to look for. Everything left open comes from the image.
struct FindSettings {
  std::optional<float> radius;       ///< typical radius of the objects in pixels, above 0; objects
                                     ///< of 0.4 to 2.5 times this radius are found
  std::optional<float> minRadius;    ///< smaller objects are left out; in pixels, at least 0
  std::optional<float> maxRadius;    ///< larger objects are left out; at least minRadius
  std::optional<Polarity> polarity;  ///< which objects are looked for
  float minScore = 0.5F;             ///< objects of lower score are left out, 0 to 1
};

/// An object. Pixel centers are at whole numbers.
struct Object {
  float x;         ///< column of the center of the part inside the image
  float y;         ///< row of it
  float radius;    ///< of the circle of the same area as the part inside the image, in pixels
  float score;     ///< 0 to 1, comparable between images: how surely this is an object
  float coverage;  ///< share of the outline inside the image that has an edge, 0 to 1
};

/// What findObjects() returns.
struct FindResult {
  SettingsEstimate used;        ///< the radius and the polarity that were given, else estimated
  std::vector<Object> objects;  ///< highest score first, equal scores by y, then x
};

/// The typical radius and the polarity of the objects in plane 0 of @p img.
///
/// An image without pixels, without contrast or without objects has a radius and a confidence of 0.
/// Cost and pixel values are those of findObjects().
ORVA_EXPORT SettingsEstimate estimateSettings(const Image& img);

/// The median radius of the objects of a score of at least 0.5, weighted by their scores, or of all
/// objects where there is none; 0 for no objects.
ORVA_EXPORT float typicalRadius(const std::vector<Object>& objects);

/// One estimate over several images, for plates and time series: the polarity with the larger sum
/// of confidences, and the median of the images' radii for it, each weighted by its confidence. Its
/// confidence is their mean over the images that hold objects. Of no images or no objects: a radius
/// and a confidence of 0.
ORVA_EXPORT SettingsEstimate combinedEstimate(const std::vector<SettingsEstimate>& images);

/// Finds the objects in plane 0 of @p img, of any pixel type; colour counts as luminance, a pixel
/// that is not a finite number as the smallest finite one.
///
/// Objects of radius 2.5 pixels up to a third of the shorter side are found. The outside of the
/// image is unknown: the part of an outline that leaves the image counts neither for nor against an
/// object. An image without pixels has no objects.
///
/// The range of brightness is that of all pixels but single outliers. Noise must be independent
/// from pixel to pixel: in an image that was smoothed, noise may pass for objects, at a low
/// confidence.
///
/// @throws std::invalid_argument for a setting out of its range or not a number
/// @throws std::bad_alloc when the lists of candidates do not fit in memory; when an image does
/// not,
///         the process ends as scalespace::gaussian() describes
///
/// Several threads may search different images at the same time. Memory: about 40 bytes per pixel,
/// and up to 150 where a fine pattern fills the image. Cost: proportional to the pixels and to the
/// places that edges surround.
ORVA_EXPORT FindResult findObjects(const Image& img, const FindSettings& settings);

}  // namespace orva::detect

#endif
