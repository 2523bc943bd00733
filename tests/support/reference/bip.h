// Reference implementations of the operations of orva/bip/bip.h: one pixel at a time, straight from
// the definition.
#ifndef ORVA_TESTS_SUPPORT_REFERENCE_BIP_H
#define ORVA_TESTS_SUPPORT_REFERENCE_BIP_H

#include <vector>

#include "orva/bip/bip.h"
#include "orva/image/image.h"

namespace reference {

// Labels hold the first 32768 regions; n does not exceed that either.
orva::image<short> regions(const orva::image<unsigned char>& in, int& n, int value, int reach,
                           int type);
orva::image<short> regions(const orva::image<short>& in, int& n);
int regionNumber(const orva::image<short>& labels);
void relabel(orva::image<short>& labels);
bool isBinaryImage(const orva::Image& img);
void reverse(orva::image<unsigned char>& img);

// Without brightness measurements when `brightness` is null or differs in size.
std::vector<orva::RegionFeature> regionFeatures(const orva::image<short>& labels, int n,
                                                const orva::Image* brightness);
std::vector<std::vector<float>> regionIntensityArrays(const orva::image<short>& labels, int n,
                                                      const orva::Image& brightness, bool sorted);
std::vector<int> histogram(const orva::image<unsigned char>& img, int low, int high);

void erode(orva::image<short>& labels);
void erode(orva::image<unsigned char>& mask);
void dilate(orva::image<unsigned char>& mask);
// For images whose pixels are floats, ints, shorts or bytes.
template <class T>
orva::image<unsigned char> edge(const orva::image<T>& img);
// Whether any pixel of the clipped box around (x, y, z) in the first volume has another label.
bool isEdge(const orva::image<short>& labels, int x, int y, int z);
std::vector<std::vector<orva::Point>> boundaries(const orva::image<short>& labels);
void removeInternalStructures(orva::image<unsigned char>& mask);

}  // namespace reference

#endif
