// Which planes of an image file are used: what a user asks for, and what that means for a file.
#ifndef ORVA_FORMATS_PLANE_CHOICE_H
#define ORVA_FORMATS_PLANE_CHOICE_H

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "formats/image_axes.h"
#include "formats/image_source.h"
#include "formats/raster.h"
#include "orva/image/image.h"

namespace orva::formats {

// How slices become one image.
enum class Projection { kMax, kMean };

// What is asked for; what is left open is none.
struct PlaneChoice {
  // A number of the file, counted from 0, or else a name, which may be of digits.
  std::optional<std::string> channel;
  std::optional<int> z;  // at most one of these three
  std::optional<Projection> projection;
  bool eachSlice = false;
  std::optional<int> t;  // all times unless given
  bool eachTime = false;

  bool hasSlices() const { return z || projection || eachSlice; }
  bool hasTimes() const { return t || eachTime; }
};

// A two-dimensional image of a file: one plane, or the projection of all slices of a channel at a
// time.
struct PlanarImage {
  int c = 0;
  std::optional<int> z;  // none: the projection
  Projection projection = Projection::kMax;
  int t = 0;
};

struct PlaneSelection {
  ImageAxes axes;                   // those of the file, or what the choice says its pages are
  std::vector<PlanarImage> images;  // by time, then slice; at least one
  bool variesInT = false;           // several times, of which each result has a column
  bool variesInZ = false;           // several slices, the same
  std::string note;                 // what was chosen without being asked for, or ""
};

// The images that a choice means for a file with these axes.
//
// Several channels without a choice are an error that lists them. Of several slices without a
// choice the maximum is taken, which the note says; of several times each. Where the meaning of the
// pages is not known, the choice says it by naming one axis; without a choice they are an error.
// Throws FileError for these, and for a number or a name that the file does not have.
PlaneSelection selectPlanes(const ImageAxes& axes, const PlaneChoice& choice);

// The same for a command that writes all that is not chosen away: each channel, slice and time,
// with channels varying fastest, then slices. `kept` has their axes, with pages in that order, and
// the pixel size of the full size; a projection of slices has none along z. Pages of unknown
// meaning need no choice.
struct KeptPlanes {
  ImageAxes axes;  // of the file, as in PlaneSelection
  std::vector<PlanarImage> images;
  ImageAxes kept;
};
KeptPlanes keepPlanes(const ImageAxes& axes, const PlaneChoice& choice);

// The number of a channel, named as in PlaneChoice. Throws FileError for one that the file does not
// have.
int numberOfChannel(const ImageAxes& axes, const std::string& channel);

// The page of a plane. Throws FileError for a plane that the file lacks.
int requiredPage(const ImageAxes& axes, const PlaneIndex& plane);

// The pixels of an image of the file; at a time two planes are in memory. A mean is in floats; a
// maximum has the type of the planes and is that of the values that are numbers. Throws FileError
// as ImageSource::read(), for a plane that the file lacks, and for slices of different sizes.
std::unique_ptr<orva::Image> readPlanar(const ImageSource& source, const ImageAxes& axes,
                                        const PlanarImage& image, int level = 0,
                                        ColourUse colour = ColourUse::kLuminance);

// All slices of the image's channel and time as planes in z, of any pixel type. Throws FileError as
// readPlanar(), and for slices of different types and too many pixels.
std::unique_ptr<orva::Image> readVolume(const ImageSource& source, const ImageAxes& axes,
                                        const PlanarImage& image, int level = 0);

}  // namespace orva::formats

#endif
