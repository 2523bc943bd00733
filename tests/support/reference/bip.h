// Reference implementations of the operations of orva/bip/bip.h: pixel by pixel, straight from the
// definition.
#ifndef ORVA_TESTS_SUPPORT_REFERENCE_BIP_H
#define ORVA_TESTS_SUPPORT_REFERENCE_BIP_H

#include <vector>

#include "orva/bip/bip.h"
#include "orva/image/image.h"

namespace orva::reference {

// Only the first 32768 regions get labels, and n is at most that.
image<short> regions(const image<unsigned char>& in, int& n, int value, int reach, int type);
image<short> regions(const image<short>& in, int& n);
int regionNumber(const image<short>& labels);
void relabel(image<short>& labels);
bool isBinaryImage(const Image& img);
void reverse(image<unsigned char>& img);

// Without brightness measurements when `brightness` is null or differs in size.
std::vector<RegionFeature> regionFeatures(const image<short>& labels, int n,
                                          const Image* brightness);
std::vector<std::vector<float>> regionIntensityArrays(const image<short>& labels, int n,
                                                      const Image& brightness, bool sorted);
std::vector<int> histogram(const image<unsigned char>& img, int low, int high);

void erode(image<short>& labels);
void erode(image<unsigned char>& mask);
void dilate(image<unsigned char>& mask);
// For images whose pixels are floats, ints, shorts or bytes.
template <class T>
image<unsigned char> edge(const image<T>& img);
// Whether any pixel of the clipped box around (x, y, z) in the first volume has another label.
bool isEdge(const image<short>& labels, int x, int y, int z);
std::vector<std::vector<Point>> boundaries(const image<short>& labels);
void removeInternalStructures(image<unsigned char>& mask);

}  // namespace orva::reference

#endif
