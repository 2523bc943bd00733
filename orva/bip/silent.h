// Operations that print nothing: what their public forms report comes back as a value. Not
// installed; for layers above the core, which report in their own words.
#ifndef ORVA_BIP_SILENT_H
#define ORVA_BIP_SILENT_H

#include "orva/bip/bip.h"

namespace orva::bip {

// The warning of regions().
void reportIgnoredRegions();

namespace silent {

struct Regions {
  image<short> labels;
  int n = 0;
  bool areAllLabelled = true;  // false: of more than 32768 regions the rest has label -1
};

// regions(), without its warning.
Regions regions(const image<unsigned char>& in, int value, int reach, NeighborhoodType type);

// removeInternalStructures(). False where that warns of many regions; all holes are filled.
bool removeInternalStructures(image<unsigned char>& mask);

// convexHull(), without the line that counts the regions.
void convexHull(image<short>& labels, int precision);

}  // namespace silent
}  // namespace orva::bip

#endif
