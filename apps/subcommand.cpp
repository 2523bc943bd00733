#include "apps/subcommand.h"

#include <algorithm>
#include <iostream>
#include <new>
#include <set>
#include <utility>

#include "apps/input_file.h"
#include "formats/file_error.h"
#include "formats/text.h"

namespace orva::apps {

namespace fs = std::filesystem;

void Subcommand::addThreadsOption() {
  constexpr int kMaxThreads = 1024;
  options_
      .add("--threads", threads_,
           "Threads to use; the results do not depend on it; default one per processor core")
      .check(wholeNumberIn(1, kMaxThreads))
      .valueText("N");
}

void Subcommand::addPlaneOptions(PlaneOptions& planes, const std::string& zHelp) {
  const Check number = frameNumber();
  const Check plane = wholeNumberIn(0, kMaxPlanes - 1);
  const auto numberOr = [plane](std::vector<std::string> words) -> Check {
    return [plane, words = std::move(words)](const std::string& text) {
      if (std::find(words.begin(), words.end(), text) != words.end() || plane(text).empty()) {
        return std::string();
      }
      return text + " is neither a number from 0 nor one of " + joined(words, ", ");
    };
  };
  const Option frame =
      options_
          .add("--frame", planes.frame,
               "Page of a TIFF file or plane of a stack, counted from 0, whatever it shows")
          .check(number)
          .valueText("K");
  options_
      .add("--channel", planes.channel,
           "Channel, by its number, counted from 0, or its name; needed if there are several")
      .excludes(frame)
      .valueText("K|NAME");
  options_.add("--z", planes.z, zHelp)
      .check(numberOr({"max", "mean", "all"}))
      .excludes(frame)
      .valueText("K|max|mean|all");
  options_.add("--time", planes.t, "Time, counted from 0, or each by itself; default all")
      .check(numberOr({"all"}))
      .excludes(frame)
      .valueText("K|all");
  options_.add("--series", planes.series, "Image of an OME-TIFF file of several, counted from 0")
      .check(number)
      .excludes(frame)
      .valueText("K");
  options_
      .add("--level", planes.level,
           "Smaller size of a file that stores several; default 0, the full one")
      .check(wholeNumberIn(0, 63))
      .excludes(frame)
      .valueText("K");
}

FileChoice PlaneOptions::chosen() const {
  FileChoice choice;
  choice.frame = frame;
  choice.series = series;
  choice.level = level;
  PlaneChoice& c = choice.planes;
  c.channel = channel;
  if (z == "max") {
    c.projection = Projection::kMax;
  } else if (z == "mean") {
    c.projection = Projection::kMean;
  } else if (z == "all") {
    c.eachSlice = true;
  } else if (z) {
    c.z = wholeNumberOf(*z);
  }
  if (t == "all") {
    c.eachTime = true;
  } else if (t) {
    c.t = wholeNumberOf(*t);
  }
  return choice;
}

const char* reasonOf(const std::exception& error) {
  const bool full = dynamic_cast<const std::bad_alloc*>(&error) != nullptr;
  return full ? "needs more memory than there is" : error.what();
}

void reportFailure(const std::string& file, const std::exception& error) {
  std::cerr << "orva: " << file << ": " << reasonOf(error) << '\n';
}

std::string joined(const std::vector<std::string>& words, const std::string& separator) {
  std::string text;
  for (const std::string& word : words) text += (text.empty() ? "" : separator) + word;
  return text;
}

Check writableFile(const std::vector<std::string>& extensions) {
  const std::vector<std::string> accepted = extensions.empty() ? writableExtensions() : extensions;
  return [accepted](const std::string& path) {
    if (isStandardStream(path)) return std::string();
    const bool good = isWritable(path) && std::find(accepted.begin(), accepted.end(),
                                                    extensionOf(path)) != accepted.end();
    return good
               ? std::string()
               : path + " has none of the extensions that can be written: " + joined(accepted, " ");
  };
}

Check frameNumber() { return wholeNumberIn(0, 65534); }

void print(const std::string& text, const std::string& what) { print(FileContent{{}, text}, what); }

void print(const FileContent& content, const std::string& what) {
  content.forEachPiece([](std::string_view piece) { std::cout << piece; });
  if (!std::cout.flush()) throw FileError(what + " can not be written to standard output");
}

std::vector<FileContent> encodeResult(const std::string& path, const std::string& extension,
                                      const Image& img, Fit fit, const Origin& origin) {
  if (!isStandardStream(path)) return encodeImage(path, img, fit, origin);
  std::vector<FileContent> files = encodeImage(path + extension, img, fit, origin);
  files.front().path = path;
  return files;
}

void requireOnePicture(std::size_t count, const std::string& path) {
  if (count == 1 || !isStandardStream(path)) return;
  throw FileError("has " + std::to_string(count) +
                  " times or slices to write, and standard output takes one picture; choose one, "
                  "or name a file");
}

void writeResults(std::vector<FileContent> results) {
  const auto found = std::find_if(results.begin(), results.end(), [](const FileContent& result) {
    return isStandardStream(result.path.string());
  });
  std::optional<FileContent> printed;
  if (found != results.end()) {
    printed = std::move(*found);
    results.erase(found);
  }
  writeFiles(results);
  if (printed) print(*printed, "the result");
}

void requireSeparate(const std::vector<std::string>& inputs, const std::vector<fs::path>& results) {
  if (std::count_if(inputs.begin(), inputs.end(), isStandardStream) > 1) {
    throw UsageError("image", "standard input (-) cannot be read twice");
  }
  std::set<fs::path> taken;
  for (const fs::path& result : results) {
    const bool isPrinted = isStandardStream(result.string());
    // No resolved path is "-".
    if (!taken.insert(isPrinted ? result : resolvedPath(result)).second) {
      throw UsageError(
          "image", "two results would go to " + (isPrinted ? "standard output" : result.string()));
    }
  }
  for (const std::string& input : inputs) {
    if (!isStandardStream(input) && taken.contains(resolvedPath(input))) {
      throw UsageError("image", "a result would replace the input " + input);
    }
  }
}

void requireNoInputs(const std::vector<std::string>& inputs,
                     const std::vector<FileContent>& results) {
  for (const FileContent& result : results) {
    for (const std::string& input : inputs) {
      if (!isStandardStream(input) && resolvedPath(input) == resolvedPath(result.path)) {
        throw FileError("a result would replace the input " + input);
      }
    }
  }
}

}  // namespace orva::apps
