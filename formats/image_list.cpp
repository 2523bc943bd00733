#include "formats/image_list.h"

#include <glob.h>

#include <algorithm>
#include <array>
#include <filesystem>
#include <string_view>
#include <system_error>

#include "formats/file_error.h"
#include "formats/text.h"

namespace orva::formats {
namespace {

namespace fs = std::filesystem;

constexpr std::array<std::string_view, 7> kExtensions{".pgm", ".ppm",  ".png", ".tif",
                                                      ".iht", ".tiff", ".uif"};

std::vector<std::string> imagesIn(const std::string& folder) {
  std::vector<std::string> names;
  std::error_code error;
  for (fs::directory_iterator entry(folder, error), end; !error && entry != end;
       entry.increment(error)) {
    const std::string name = entry->path().filename().string();
    const bool isImage =
        std::find(kExtensions.begin(), kExtensions.end(), extensionOf(name)) != kExtensions.end();
    std::error_code none;
    if (isImage && !name.starts_with('.') && !entry->is_directory(none)) {
      names.push_back((fs::path(folder) / name).string());
    }
  }
  if (error) throw FileError(folder + " cannot be read: " + error.message());
  return names;
}

std::vector<std::string> filesLike(const std::string& pattern) {
  glob_t found{};
  std::vector<std::string> names;
  const int status = glob(pattern.c_str(), GLOB_NOSORT, nullptr, &found);
  if (status == 0) names.assign(found.gl_pathv, found.gl_pathv + found.gl_pathc);
  globfree(&found);
  if (status != 0 && status != GLOB_NOMATCH) throw FileError(pattern + " cannot be searched");
  std::erase_if(names, [](const std::string& name) {
    std::error_code none;
    return fs::is_directory(name, none);
  });
  return names;
}

}  // namespace

std::vector<std::string> imagesNamed(const std::string& name) {
  std::error_code none;
  const bool isFolder = fs::is_directory(name, none);
  const bool isPattern = name.find_first_of("*?[") != std::string::npos && !fs::exists(name, none);
  if (!isFolder && !isPattern) return {name};
  std::vector<std::string> names = isFolder ? imagesIn(name) : filesLike(name);
  if (names.empty()) return {name};
  std::sort(names.begin(), names.end());
  return names;
}

}  // namespace orva::formats
