#include "apps/filter_command.h"

#include <algorithm>
#include <array>
#include <memory>
#include <string_view>
#include <utility>
#include <vector>

#include "apps/input_file.h"
#include "formats/file_error.h"
#include "formats/image_writer.h"
#include "formats/kept_type.h"
#include "orva/scalespace/scalespace.h"

namespace orva::apps {
namespace {

namespace scalespace = orva::scalespace;
using orva::Image;
using Result = orva::image<float>;

constexpr float kRatio = 1.0F;  // the same sigma along the frames as in the plane

// Of several overloads the one with one sigma.
using OneSigma = Result (*)(const Image& img, float sigma);

// A filter of the library at one scale.
struct Operation {
  std::string_view name;
  OneSigma apply;
};

constexpr std::array<Operation, 15> kOperations{
    {{"smooth", [](const Image& i, float s) { return scalespace::smooth(i, s, kRatio); }},
     {"gradient", [](const Image& i, float s) { return scalespace::gradient(i, s, kRatio); }},
     {"laplacian", scalespace::laplacian},
     {"dx", scalespace::dX},
     {"dy", scalespace::dY},
     {"dz", scalespace::dZ},
     {"dxx", scalespace::dXX},
     {"dyy", scalespace::dYY},
     {"dzz", scalespace::dZZ},
     {"dxxx", scalespace::dXXX},
     {"dyyy", scalespace::dYYY},
     {"dzzz", scalespace::dZZZ},
     {"dxy", static_cast<OneSigma>(scalespace::dXY)},
     {"dxz", static_cast<OneSigma>(scalespace::dXZ)},
     {"dyz", static_cast<OneSigma>(scalespace::dYZ)}}};

std::vector<std::string> operationNames() {
  std::vector<std::string> names;
  names.reserve(kOperations.size());
  for (const Operation& operation : kOperations) names.emplace_back(operation.name);
  return names;
}

const Operation& operationNamed(const std::string& name) {
  return *std::find_if(kOperations.begin(), kOperations.end(),
                       [&](const Operation& operation) { return operation.name == name; });
}

}  // namespace

FilterCommand::FilterCommand(CommandLine& line)
    : Subcommand(line.addSubcommand(
          "filter", "Smooth or differentiate an image by Gaussian filters",
          "Operations with a z need a stack; its planes count as one pixel apart. Sigmas "
          "below 0.7 change\n"
          "the brightness, for the sampled Gaussian does not sum to 1 then.\n"
          "Example: the strength of the edges of a nucleus\n"
          "  orva filter --op gradient --sigma 2 --output edges.tif nuclei.tif")) {
  options().add("image", input_, kImageFiles).required();
  options()
      .add("--op", operation_, "One of " + joined(operationNames(), ", "))
      .required()
      .check(oneOf(operationNames()))
      .valueText("NAME REQUIRED");
  options()
      .add("--sigma", sigma_, "Scale of the Gaussian in pixels")
      .required()
      .check(numberIn(0.1F, 1000.0F))
      .valueText("S REQUIRED");
  options()
      .add("--output", output_,
           "The result, in floats, goes to FILE.tif, .iht or .ics, or to standard output for -, as "
           "TIFF")
      .required()
      .check(writableFile({".tif", ".tiff", ".iht", ".ics"}))
      .valueText("FILE REQUIRED");
  options().addFlag("--keep-type", keepsType_,
                    "Round the result to the pixel type of the image, such as unsigned 16 bits; "
                    "that of colour and of means stays in floats");
  addPlaneOptions(planes_, kSlicesAsVolume);
  addThreadsOption();
}

int FilterCommand::run() {
  requireSeparate({input_}, filesOf(output_));
  return statusOf(input_, [this] {
    const InputImages images(input_, planes_, InputImages::Slices::kVolume);
    requireOnePicture(images.count(), output_);
    const bool isUnsigned16 = keepsType_ && images.isUnsigned16();
    for (std::size_t i = 0; i < images.count(); ++i) {
      const std::unique_ptr<Image> img = images.read(i);
      const bool needsStack = operation_.find('z') != std::string::npos;
      if (needsStack && img->nframes() == 1) {
        throw FileError("has one plane, and " + operation_ + " needs a stack");
      }
      const Result result = operationNamed(operation_).apply(*img, sigma_);
      const std::unique_ptr<Image> kept(keepsType_ ? inTypeOf(*img, result, isUnsigned16)
                                                   : std::make_unique<Result>(result));
      const bool isKept16 = isUnsigned16 && kept->format() == orva::INT;
      std::vector<FileContent> results =
          encodeResult(withEnding(output_, endingOf(images.placeOf(i))).string(), ".tif", *kept,
                       Fit::kExactly, {images.axesOf(*img), isKept16});
      requireNoInputs({input_}, results);
      writeResults(std::move(results));
    }
  });
}

}  // namespace orva::apps
