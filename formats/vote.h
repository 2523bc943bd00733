// Circular voting on the image of a file, and its history as files.
#ifndef ORVA_FORMATS_VOTE_H
#define ORVA_FORMATS_VOTE_H

#include <optional>
#include <string>

#include "orva/image/image.h"
#include "orva/voting/find_centers.h"

namespace orva::formats {

using voting::Center;
using voting::VoteResult;
using voting::VoteSettings;

// voting::findCenters(). With a `history` prefix the accumulator before every narrowing pass is
// left as an ICS pair PREFIXvote_NN, NN being the cone width. Throws FileError, with a text to
// follow the file's name, for an image that is too large for the radius and for a history that
// cannot be written. The pairs appear after all of them are complete, each by a rename; only a
// file system that refuses one rename and not another leaves some of them.
VoteResult vote(const Image& img, const VoteSettings& settings,
                const std::optional<std::string>& history = std::nullopt);

// voting::voteField(). Throws as vote().
image<float> voteField(const Image& img, const VoteSettings& settings);

}  // namespace orva::formats

#endif
