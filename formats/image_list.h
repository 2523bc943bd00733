// The image files that a name on a command line stands for.
#ifndef ORVA_FORMATS_IMAGE_LIST_H
#define ORVA_FORMATS_IMAGE_LIST_H

#include <string>
#include <vector>

namespace orva::formats {

// Of a folder, the files directly in it with the extension of an image that is read, without hidden
// ones; of a pattern of the shell (*, ?, [...]), which no file has as its name, the files that it
// matches; both sorted by name. Any other name stands for itself, as do a folder without images and
// a pattern that matches no file: reading them fails. Throws FileError for a folder that cannot be
// read, with its name in the text.
std::vector<std::string> imagesNamed(const std::string& name);

}  // namespace orva::formats

#endif
