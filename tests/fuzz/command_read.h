// The result of a reader of the command: an image, or a message.
#ifndef ORVA_TESTS_FUZZ_COMMAND_READ_H
#define ORVA_TESTS_FUZZ_COMMAND_READ_H

#include <memory>
#include <string>
#include <vector>

#include "formats/file_error.h"
#include "orva/image/image.h"
#include "tests/fuzz/fuzz_target.h"
#include "tests/fuzz/pnm_reference.h"
#include "tests/support/reference/image_io.h"

namespace orva::test {

struct CommandRead {
  std::unique_ptr<Image> img;
  std::string failure;
};

template <class Read>
CommandRead commandRead(const Read& read) {
  try {
    CommandRead result{read(), ""};
    require(result.img != nullptr, "an image or an error");
    require(result.img->npix() > 0 && result.img->data() != nullptr, "an image with pixels");
    return result;
  } catch (const formats::FileError& error) {
    require(*error.what() != '\0', "words about what is wrong");
    return {nullptr, error.what()};
  }
}

inline bool isSameShape(const Image& a, const Image& b) {
  const auto sizes = [](const Image& i) {
    return std::vector<int>{i.nx(), i.ny(), i.nz(), i.nc(), i.nt()};
  };
  return sizes(a) == sizes(b);
}

inline void requireSameImage(const Image& a, const Image& b, const char* what) {
  require(a.format() == b.format() && isSameShape(a, b) &&
              reference::pixelBytes(a) == reference::pixelBytes(b),
          what);
}

// As the reference implementation of PGM and PPM files.
inline void requireSamePnm(const CommandRead& read, const PnmReference& expected, int format) {
  require(read.failure == expected.failure, "the failure of the reference");
  if (!read.img) return;
  const Image& img = *read.img;
  const std::vector<int> sizes{img.format(), img.nx(), img.ny(), img.nz(), img.nc(), img.nt()};
  require(sizes == std::vector<int>{format, expected.width, expected.height, 1, 1, 1},
          "the pixel type and the sizes of the reference");
  require(reference::pixelBytes(img) == expected.samples, "the pixels of the reference");
}

}  // namespace orva::test

#endif
