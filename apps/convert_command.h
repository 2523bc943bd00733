// The subcommand `orva convert`.
#ifndef ORVA_APPS_CONVERT_COMMAND_H
#define ORVA_APPS_CONVERT_COMMAND_H

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "apps/subcommand.h"
#include "formats/colour_planes.h"

namespace orva::apps {

class ConvertCommand : public Subcommand {
 public:
  explicit ConvertCommand(CommandLine& line);

  int run() override;

 private:
  void convert() const;
  void convertFrame(const std::string& file, formats::ColourUse colour) const;
  using Colour16 = ColourPlanes<std::uint16_t>;
  void writeColour16(const Colour16& colour, const ImageAxes& axes) const;
  void writeGreyOrBytes(const orva::Image& img, const formats::ImageAxes& axes,
                        bool isUnsigned16) const;
  std::string nameOfResult() const;
  std::string extension() const;

  std::string input_;
  std::string output_;
  std::optional<std::string> format_;
  PlaneOptions planes_;
  bool stretch_ = false;
  bool keepsType_ = false;
};

}  // namespace orva::apps

#endif
