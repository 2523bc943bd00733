// Prints the centers that the native method must find in a PGM image, by the library's C++
// interface:
//   expected_centers IMAGE MAX_RADIUS THRESHOLD SCALE [dark]
// A line for each center: column, row and weight. For dark objects the image is inverted.
#include <cstdlib>
#include <iostream>
#include <memory>
#include <string>

#include "orva/image_io/image_io.h"
#include "orva/scalespace/scalespace.h"
#include "orva/voting/circularvoting.h"

using orva::voting::CircularVoting;

int main(int argc, char** argv) {
  if (argc < 5 || argc > 6) return 2;
  const std::unique_ptr<orva::image<unsigned char>> img(orva::image_io::readPGM(argv[1]));
  if (img == nullptr) return 1;
  if (argc == 6) {
    for (int i = 0; i < img->npix(); ++i) {
      img->pixels()[i] = static_cast<unsigned char>(255 - img->pixels()[i]);
    }
  }

  const int maxRadius = std::atoi(argv[2]);
  const auto threshold = static_cast<float>(std::atoi(argv[3]));
  const auto sigma = static_cast<float>(std::atoi(argv[4]));
  const double strongest = orva::scalespace::gradient(*img, sigma, 1.0F).max();
  CircularVoting voting;
  voting.setParams(CircularVoting::Bright, 1, maxRadius, (maxRadius + 2) / 4,
                   static_cast<float>(strongest * 0.1), threshold, sigma, CircularVoting::Power,
                   1.0F, false, true);
  voting.compute(*img);
  for (std::size_t i = 0; i < voting.centers().size(); ++i) {
    std::cout << voting.centers()[i].x << ' ' << voting.centers()[i].y << ' '
              << static_cast<int>(voting.center_weights()[i]) << '\n';
  }
  return 0;
}
