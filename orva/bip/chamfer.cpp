#include <algorithm>
#include <iostream>

#include "orva/bip/bip.h"
#include "orva/bip/chamfer_steps.h"
#include "orva/bip/neighbour_box.h"
#include "orva/image_io/image_io.h"

namespace orva::bip {
namespace {

constexpr float kBackgroundDistance = 0.0F;
constexpr float kBoundaryDistance = 1.0F;
constexpr float kUnreached = 9999.0F;

// Calls visit(x, y, z, i) for every pixel i of the first volume, in linear order.
template <class Visit>
void forEachPixel(const Image& img, Visit visit) {
  std::ptrdiff_t i = 0;
  for (int z = 0; z < img.nz(); ++z) {
    for (int y = 0; y < img.ny(); ++y) {
      for (int x = 0; x < img.nx(); ++x) visit(x, y, z, i++);
    }
  }
}

void __init_from_byte_image__(const Image& mask, image<float>& distance) {
  for (int i = 0; i < distance.npix(); ++i) {
    distance.pixels()[i] = mask.pixel(i) != 0.0F ? kUnknownDistance : kBackgroundDistance;
  }
}

void __init_from_short_image__(const Image& in, image<float>& distance) {
  image<short> labels(in.nx(), in.ny(), in.nz(), 1, 1);
  for (int i = 0; i < labels.npix(); ++i) labels.setPixel(i, in.pixel(i));
  forEachPixel(labels, [&](int x, int y, int z, std::ptrdiff_t i) {
    if (labels.pixels()[i] < 0) {
      distance.pixels()[i] = kBackgroundDistance;
    } else {
      distance.pixels()[i] = isEdge(labels, x, y, z) ? kBoundaryDistance : kUnknownDistance;
    }
  });
}

// What the two passes left unreached, the border above all, follows its neighbours at a cost of 1
// for every step, diagonals included; this is intended.
void repair(image<float>& distance) {
  float* d = distance.pixels();
  forEachPixel(distance, [&](int x, int y, int z, std::ptrdiff_t i) {
    if (d[i] < kUnreached) return;
    anyInBox(distance, x, y, z, [&](std::ptrdiff_t j) {
      d[i] = std::min(d[i], d[j] + 1.0F);
      return false;
    });
  });
}

void propagateDistances(image<float>& distance, float threshold) {
  const auto ignore = [](std::ptrdiff_t, std::ptrdiff_t) {};
  chamferPass(distance, Pass::kForward, threshold, ignore);
  chamferPass(distance, Pass::kBackward, threshold, ignore);
  repair(distance);
}

// The thresholds of the two forms differ; this is intended.
void __compute_chamfer_2d__(image<float>& distance) { propagateDistances(distance, 1.0F); }
void __compute_chamfer_3d__(image<float>& distance) { propagateDistances(distance, 0.5F); }

}  // namespace

image<float> fchamfer(const Image& in) {
  const bool supported = !in.isNull() && (in.format() == BYTE || in.format() == SHORT);
  if (!supported) {
    std::cerr << "In bip::chamfer\n"
              << "   Warning: input is " << (in.isNull() ? "empty" : "not BYTE or SHORT image")
              << ", return null image\n";
    return image<float>(0, 1, 1, 1, 1);
  }
  image<float> distance(in.nx(), in.ny(), in.nz(), 1, 1);
  if (in.format() == BYTE) {
    __init_from_byte_image__(in, distance);
  } else {
    __init_from_short_image__(in, distance);
  }
  if (distance.nz() > 1) {
    __compute_chamfer_3d__(distance);
  } else {
    __compute_chamfer_2d__(distance);
  }
  return distance;
}

image<unsigned char> chamfer(const Image& in, bool invert) {
  image<unsigned char> bytes = image_io::convertToByteImage(fchamfer(in), true);
  if (invert) reverse(bytes);
  return bytes;
}

}  // namespace orva::bip
