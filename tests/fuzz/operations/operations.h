// Each function takes images and parameters from an input, calls an operation of the library or a
// few that belong together, and ends the program where a result is not that of the reference
// implementation.
#ifndef ORVA_TESTS_FUZZ_OPERATIONS_OPERATIONS_H
#define ORVA_TESTS_FUZZ_OPERATIONS_OPERATIONS_H

#include "tests/fuzz/fuzz_target.h"

namespace orva::test {

// Scale space.
void kernels(Input& in);
void gaussian(Input& in);
void smooth(Input& in);
void derivatives(Input& in);
void gradientOfImage(Input& in);
void gradientOfDerivatives(Input& in);
void anglesOfDerivatives(Input& in);
void laplacian(Input& in);
void features(Input& in);
void laplaceEquation(Input& in);
void harmonicCut(Input& in);
void hcut(Input& in);
void reduce(Input& in);

// Regions and their measurements.
void regionsOfBytes(Input& in);
void regionsOfLabels(Input& in);
void relabel(Input& in);
void regionFeatures(Input& in);
void regionIntensityArrays(Input& in);
void selectRegions(Input& in);
void selectRegionsBySize(Input& in);
void boundaries(Input& in);
void convexHull(Input& in);

// Masks, distances and thresholds.
void histogram(Input& in);
void binaryImages(Input& in);
void erodeAndDilate(Input& in);
void edge(Input& in);
void removeInternalStructures(Input& in);
void chamfer(Input& in);
void propagate(Input& in);
void threshold(Input& in);
void computeThreshold(Input& in);

// Numbers, conversions and parts of images.
void topOfImage(Input& in);
void topOfArray(Input& in);
void findZeros(Input& in);
void pixels(Input& in);
void extremes(Input& in);
void conversions(Input& in);
void conversionsOfColour(Input& in);
void byteOrder(Input& in);
void scale(Input& in);
void parts(Input& in);
void interior(Input& in);

// Voting.
void voting(Input& in);
void votingTwice(Input& in);
void cones(Input& in);

}  // namespace orva::test

#endif
