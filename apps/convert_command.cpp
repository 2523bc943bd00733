#include "apps/convert_command.h"

#include "apps/input_file.h"
#include "formats/image_writer.h"

namespace orva::apps {

ConvertCommand::ConvertCommand(CommandLine& line)
    : Subcommand(line.addSubcommand(
          "convert", "Write an image in another file format",
          "PGM, PPM and PNG hold one plane; TIFF, IHT, UIF and ICS hold stacks. PGM, PPM and "
          "UIF\n"
          "hold whole numbers from 0 to 255, PNG up to 65535. PGM, IHT and UIF hold no colour; it "
          "becomes\n"
          "luminance.\n"
          "Example: a 16-bit image as a picture to look at\n"
          "  orva convert --stretch nuclei.tif nuclei.png")) {
  options().add("in", input_, kImageFiles).required().valueText("IN REQUIRED");
  options()
      .add("out", output_, "File to write: .pgm, .ppm, .png, .tif, .iht, .uif or .ics")
      .required()
      .check(writableFile({}))
      .valueText("OUT REQUIRED");
  addFrameOption(frame_);
  options().addFlag("--stretch", stretch_,
                    "Map the range of grey pixels to 0..255, whatever the format");
}

int ConvertCommand::run() {
  requireSeparate({input_}, filesOf(output_));
  return statusOf(input_, [this] {
    const auto img = readInput(input_, frame_,
                               holdsColour(output_) ? ColourUse::kKept : ColourUse::kKeptIfBytes);
    writeImageFile(output_, *img, stretch_ ? Fit::kStretched : Fit::kExactly);
  });
}

}  // namespace orva::apps
