// The operations on images, each beside its reference implementation. The first byte chooses one of
// them, which takes bytes for its image and parameters; those that are left are for more.
#include <array>

#include "tests/fuzz/operations/operations.h"

namespace {

using Operation = void (*)(orva_fuzz::Input&);

// New ones go to the end: then the inputs of the corpus keep their operations.
constexpr std::array<Operation, 45> operations{
    orva_fuzz::kernels,
    orva_fuzz::gaussian,
    orva_fuzz::smooth,
    orva_fuzz::derivatives,
    orva_fuzz::gradientOfImage,
    orva_fuzz::gradientOfDerivatives,
    orva_fuzz::anglesOfDerivatives,
    orva_fuzz::laplacian,
    orva_fuzz::features,
    orva_fuzz::laplaceEquation,
    orva_fuzz::harmonicCut,
    orva_fuzz::hcut,
    orva_fuzz::reduce,
    orva_fuzz::regionsOfBytes,
    orva_fuzz::regionsOfLabels,
    orva_fuzz::relabel,
    orva_fuzz::regionFeatures,
    orva_fuzz::regionIntensityArrays,
    orva_fuzz::selectRegions,
    orva_fuzz::selectRegionsBySize,
    orva_fuzz::boundaries,
    orva_fuzz::convexHull,
    orva_fuzz::histogram,
    orva_fuzz::binaryImages,
    orva_fuzz::erodeAndDilate,
    orva_fuzz::edge,
    orva_fuzz::removeInternalStructures,
    orva_fuzz::chamfer,
    orva_fuzz::propagate,
    orva_fuzz::threshold,
    orva_fuzz::computeThreshold,
    orva_fuzz::topOfImage,
    orva_fuzz::topOfArray,
    orva_fuzz::findZeros,
    orva_fuzz::pixels,
    orva_fuzz::extremes,
    orva_fuzz::conversions,
    orva_fuzz::conversionsOfColour,
    orva_fuzz::byteOrder,
    orva_fuzz::scale,
    orva_fuzz::parts,
    orva_fuzz::interior,
    orva_fuzz::voting,
    orva_fuzz::votingTwice,
    orva_fuzz::cones,
};

constexpr std::size_t places = 64;  // of which the last are still free
static_assert(operations.size() <= places);
constexpr int most = 40;  // operations of one input

}  // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  orva_fuzz::Input in(data, size);
  const orva_fuzz::Captured captured;
  for (int n = 0; n < most && !in.isEmpty(); ++n) {
    const std::size_t place = in.take<std::uint8_t>() % places;
    if (place < operations.size()) operations.at(place)(in);
  }
  return 0;
}
