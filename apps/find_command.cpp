#include "apps/find_command.h"

#include "formats/overlay.h"

namespace orva::apps {

FindCommand::FindCommand(CommandLine& line)
    : ObjectCommand(
          line.addSubcommand("find", "Find round objects of unknown size: centers, radii, scores",
                             "Example: the nuclei in an image, as a table and a picture\n"
                             "  orva find --table nuclei.csv --overlay nuclei.png nuclei.pgm")) {
  addImages();
  addSearchOptions();
  addFileOptions(
      {"--table",
       "The table x,y,radius,score goes to FILE; default -, standard output",
       {{"--overlay", "FILE.png", "The image with a circle around each object goes to FILE.png",
         ".png", nullptr}},
       "For each image NAME write DIR/NAME.csv and DIR/NAME.png, and DIR/summary.csv; standard "
       "input has the name stdin",
       "No progress line, and no line about what was found"});
}

DetectionCommand::Findings FindCommand::findIn(const Input& input) const {
  const detect::FindSettings settings = settingsFor(input.pixelSize);
  const detect::FindResult result = detect::findObjects(input.img, settings);
  Findings findings;
  findings.found = detectionsOf(factsOf(input), settings, result);
  if (const auto& overlay = input.files.front()) {
    findings.files.push_back({*overlay, overlayAsPng(input.img, result.objects)});
  }
  findings.summary = summaryOf(result.objects.size(), result.used);
  findings.report = reportOf(result, input.pixelSize);
  return findings;
}

}  // namespace orva::apps
