#include "formats/vote.h"

#include <array>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <locale>
#include <stdexcept>

#include "formats/file_error.h"
#include "formats/output_file.h"
#include "formats/temporary.h"
#include "formats/termination_signals.h"
#include "orva/image_io/encode.h"

namespace orva::formats {
namespace {

namespace fs = std::filesystem;

// Returns search(). An image that is too large is an error of its file.
template <class Search>
auto withFileErrors(const Search& search) {
  try {
    return search();
  } catch (const std::length_error& error) {
    throw FileError(error.what());
  }
}

// ICS pairs that are complete in a work directory before any is put into its place.
class HistoryFiles {
 public:
  explicit HistoryFiles(const std::string& prefix) : prefix_(prefix), work_(prefix_) {}

  void write(int width, const image<float>& votes) const {
    std::array<char, 16> label{};
    std::snprintf(label.data(), label.size(), "vote_%02d", width);
    const fs::path pair = work_.path() / (prefix_.filename().string() + label.data());
    std::ofstream header(pair.string() + ".ics");
    header.imbue(std::locale::classic());
    image_io::encodeIcsHeader(header, pair.string(), votes);
    header.close();
    std::ofstream pixels(pair.string() + ".ids", std::ios::binary);
    image_io::encodePixels(pixels, votes);
    pixels.close();
    if (!header || !pixels) {
      throw FileError("the history " + prefix_.string() + "vote_* can not be written");
    }
  }

  // Moves all pairs to their places, unless a directory stands there or an error comes between.
  void putInPlace() const {
    const fs::path directory = prefix_.has_parent_path() ? prefix_.parent_path() : ".";
    for (const auto& entry : fs::directory_iterator(work_.path())) {
      const fs::path target = directory / entry.path().filename();
      if (fs::is_directory(target)) throw FileError(target.string() + " can not be written");
    }
    const SignalBlock pause;
    for (const auto& entry : fs::directory_iterator(work_.path())) {
      fs::rename(entry.path(), directory / entry.path().filename());
    }
  }

 private:
  fs::path prefix_;
  WorkDirectory work_;
};

}  // namespace

VoteResult vote(const Image& img, const VoteSettings& settings,
                const std::optional<std::string>& history) {
  return withFileErrors([&] {
    if (!history) return voting::findCenters(img, settings);
    const HistoryFiles files(*history);
    VoteResult result = voting::findCenters(
        img, settings, [&](int width, const image<float>& votes) { files.write(width, votes); });
    files.putInPlace();
    return result;
  });
}

image<float> voteField(const Image& img, const VoteSettings& settings) {
  return withFileErrors([&] { return voting::voteField(img, settings); });
}

}  // namespace orva::formats
