#include "apps/input_file.h"

#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstddef>
#include <cstdio>
#include <filesystem>
#include <string_view>
#include <system_error>

#include "formats/file_error.h"
#include "formats/image_file.h"
#include "formats/output_file.h"

namespace orva::apps {
namespace {

namespace fs = std::filesystem;
using formats::FileError;

// At the end of standard input nothing.
std::string_view nextOf(std::array<char, 65536>& buffer) {
  ssize_t n = 0;
  do {
    n = ::read(STDIN_FILENO, buffer.data(), buffer.size());
  } while (n < 0 && errno == EINTR);
  if (n < 0) throw FileError::fromErrno("standard input cannot be read");
  return {buffer.data(), static_cast<std::size_t>(n)};
}

// Closes the file of a temporary at the end of the scope.
class OpenFile {
 public:
  explicit OpenFile(int file) : file_(file) {}
  OpenFile(const OpenFile&) = delete;
  OpenFile& operator=(const OpenFile&) = delete;
  ~OpenFile() { ::close(file_); }

 private:
  int file_;
};

}  // namespace

bool isStandardStream(const std::string& name) { return name == "-"; }

std::string stemOf(const std::string& image) {
  return isStandardStream(image) ? "stdin" : fs::path(image).stem().string();
}

InputFile::InputFile(const std::string& name) : path_(name) {
  if (!isStandardStream(name)) return;
  copyStandardInput();
  path_ = copy_->name();
  try {
    formats::kindOf(path_);
  } catch (const FileError&) {
    throw FileError(
        "is not a PGM, PPM, PNG or TIFF image; IHT, UIF and ICS files are known by their names and "
        "are not read from standard input");
  }
}

void InputFile::copyStandardInput() {
  std::array<char, 65536> buffer{};
  std::string_view piece = nextOf(buffer);  // before another file takes the number of a closed one
  if (piece.empty()) throw FileError("standard input is empty");
  std::error_code none;
  const fs::path directory = fs::temp_directory_path(none);
  if (none) throw FileError("standard input cannot be copied: TMPDIR names no directory");
  copy_.emplace(directory, formats::Temporary::Kind::kFile);
  const auto fail = [&](int error) {
    errno = error;
    throw FileError::fromErrno("standard input cannot be copied to " + directory.string());
  };
  if (copy_->error() != 0) fail(copy_->error());
  const OpenFile file(copy_->file());
  for (; !piece.empty(); piece = nextOf(buffer)) {
    if (const int error = formats::writeAll(copy_->file(), piece); error != 0) fail(error);
  }
}

InputImages::InputImages(const std::string& name, const PlaneOptions& options, Slices slices)
    : file_(name), frame_(options.frame), level_(options.level) {
  if (frame_) {
    selection_.images.emplace_back();
    return;
  }
  source_.emplace(file_.path(), options.series);
  formats::PlaneChoice choice = options.chosen();
  if (slices == Slices::kVolume && !choice.z && !choice.projection) {
    isVolume_ = true;
    choice.eachSlice = false;
    // One image per time; pages of unknown meaning are slices unless the choice says otherwise.
    if (source_->axes().areKnown || !(choice.channel || choice.hasTimes())) {
      choice.projection = formats::Projection::kMax;
    }
  }
  selection_ = formats::selectPlanes(source_->axes(), choice);
}

InputImages::Place InputImages::placeOf(std::size_t i) const {
  if (frame_) return {{}, {}, *frame_, {}};
  const auto several = [](int n, std::optional<int> k) { return n > 1 ? k : std::nullopt; };
  const formats::PlanarImage& image = selection_.images[i];
  return {selection_.variesInT ? std::optional(image.t) : std::nullopt,
          selection_.variesInZ ? image.z : std::nullopt,
          selection_.axes.pageOf({image.c, image.z.value_or(0), image.t}),
          {several(selection_.axes.nc, image.c), several(selection_.axes.nz, image.z),
           several(selection_.axes.nt, image.t)}};
}

formats::PixelSize InputImages::pixelSize() const {
  if (source_) return source_->axes().pixelSize;
  if (formats::kindOf(file_.path()) != formats::FileKind::kTiff) return {};
  try {
    return formats::ImageSource(file_.path()).axes().pixelSize;
  } catch (const FileError&) {
    return {};  // --frame reads a page whatever the file says of its axes
  }
}

double InputImages::reductionOf(const orva::Image& img) const {
  return source_ ? static_cast<double>(source_->nx()) / img.nx() : 1.0;
}

std::unique_ptr<orva::Image> InputImages::read(std::size_t i) const {
  if (frame_) {
    return formats::readImageFile(file_.path(), *frame_, formats::ColourUse::kLuminance);
  }
  if (isVolume_) {
    return formats::readVolume(*source_, selection_.axes, selection_.images[i], level_);
  }
  return formats::readPlanar(*source_, selection_.axes, selection_.images[i], level_);
}

std::string endingOf(const InputImages::Place& place) {
  const auto part = [](char axis, std::optional<int> index) {
    if (!index) return std::string();
    std::array<char, 16> text{};
    std::snprintf(text.data(), text.size(), "_%c%04d", axis, *index);
    return std::string(text.data());
  };
  return part('t', place.t) + part('z', place.z);
}

std::string fragmentOf(const InputImages::Place& place) {
  std::string fragment;
  const auto append = [&fragment](const char* name, std::optional<int> index) {
    if (!index) return;
    fragment += fragment.empty() ? '#' : '&';
    fragment += name + std::to_string(*index);
  };
  append("t=", place.t);
  append("z=", place.z);
  return fragment;
}

fs::path withEnding(const fs::path& path, const std::string& ending) {
  fs::path name = path.stem();
  name += ending;
  name += path.extension();
  return path.parent_path() / name;
}

std::unique_ptr<orva::Image> readInput(const std::string& name, std::optional<int> frame,
                                       formats::ColourUse colour) {
  return formats::readImageFile(InputFile(name).path(), frame, colour);
}

}  // namespace orva::apps
