// The operations on images, each beside its reference implementation. The first byte chooses one of
// them, which takes bytes for its image and parameters; those that are left are for more.
#include <array>

#include "tests/fuzz/operations/operations.h"

namespace orva::test {
namespace {

using Operation = void (*)(Input&);

// New ones go to the end: then the inputs of the corpus keep their operations.
constexpr std::array<Operation, 45> operations{
    kernels,
    gaussian,
    smooth,
    derivatives,
    gradientOfImage,
    gradientOfDerivatives,
    anglesOfDerivatives,
    laplacian,
    features,
    laplaceEquation,
    harmonicCut,
    hcut,
    reduce,
    regionsOfBytes,
    regionsOfLabels,
    relabel,
    regionFeatures,
    regionIntensityArrays,
    selectRegions,
    selectRegionsBySize,
    boundaries,
    convexHull,
    histogram,
    binaryImages,
    erodeAndDilate,
    edge,
    removeInternalStructures,
    chamfer,
    propagate,
    threshold,
    computeThreshold,
    topOfImage,
    topOfArray,
    findZeros,
    pixels,
    extremes,
    conversions,
    conversionsOfColour,
    byteOrder,
    scale,
    parts,
    interior,
    voting,
    votingTwice,
    cones,
};

constexpr std::size_t places = 64;  // of which the last are still free
static_assert(operations.size() <= places);
constexpr int maxOperations = 40;  // operations of one input

}  // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  Input in(data, size);
  const Captured captured;
  for (int n = 0; n < maxOperations && !in.isEmpty(); ++n) {
    const std::size_t place = in.take<std::uint8_t>() % places;
    if (place < operations.size()) operations.at(place)(in);
  }
  return 0;
}

}  // namespace orva::test
