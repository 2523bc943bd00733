#include "apps/subcommand.h"

#include <algorithm>
#include <iostream>
#include <new>
#include <set>

#include "formats/image_writer.h"
#include "formats/output_file.h"
#include "formats/text.h"

namespace orva::apps {

namespace fs = std::filesystem;

Subcommand::Subcommand(CLI::App& app, const std::string& name, const std::string& description,
                       const std::string& example)
    : command_(app.add_subcommand(name, description)) {
  command_->footer(example);
}

void Subcommand::addFrameOption(std::optional<int>& frame) {
  command_
      ->add_option("--frame", frame,
                   "Page of a TIFF file or plane of a stack, counted from 0; default all")
      ->check(frameNumber())
      ->option_text("K");
}

const char* reasonOf(const std::exception& error) {
  const bool full = dynamic_cast<const std::bad_alloc*>(&error) != nullptr;
  return full ? "needs more memory than there is" : error.what();
}

void reportFailure(const std::string& file, const std::exception& error) {
  std::cerr << "orva: " << file << ": " << reasonOf(error) << '\n';
}

CLI::Validator numberIn(float low, float high) {
  return {[low, high](const std::string& text) {
            float v = 0;
            const bool good = CLI::detail::lexical_cast(text, v) && v >= low && v <= high;
            return good ? ""
                        : text + " is not a number from " + shortest(low) + " to " + shortest(high);
          },
          ""};
}

CLI::Validator writableFile(const std::vector<std::string>& extensions) {
  const std::vector<std::string> accepted = extensions.empty() ? writableExtensions() : extensions;
  return {[accepted](const std::string& path) {
            const bool good = isWritable(path) && std::find(accepted.begin(), accepted.end(),
                                                            extensionOf(path)) != accepted.end();
            if (good) return std::string();
            return path + " has none of the extensions that can be written: " +
                   CLI::detail::join(accepted, " ");
          },
          ""};
}

CLI::Validator frameNumber() { return CLI::Range(0, 65534); }

void requireSeparate(const std::vector<std::string>& inputs, const std::vector<fs::path>& results) {
  std::set<fs::path> taken;
  for (const fs::path& result : results) {
    if (!taken.insert(placeOf(result)).second) {
      throw CLI::ValidationError("image", "two results would go to " + result.string());
    }
  }
  for (const std::string& input : inputs) {
    if (taken.contains(placeOf(input))) {
      throw CLI::ValidationError("image", "a result would replace the input " + input);
    }
  }
}

}  // namespace orva::apps
