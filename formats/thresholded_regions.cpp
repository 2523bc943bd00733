#include "formats/thresholded_regions.h"

#include <cmath>
#include <cstddef>
#include <limits>
#include <utility>

#include "formats/file_error.h"
#include "orva/bip/silent.h"

namespace orva::formats {
namespace {

// Takes the regions out of the labels and the table that do not have `minSize` to `maxSize` pixels,
// and numbers the others anew. (orva::bip::selectRegionsBySize keeps the first region in any case.)
void selectBySize(orva::image<short>& labels, std::vector<RegionFeature>& features, int minSize,
                  int maxSize) {
  const auto isWanted = [=](const RegionFeature& f) {
    return f.npix >= minSize && f.npix <= maxSize;
  };
  for (int i = 0; i < labels.npix(); ++i) {
    short& label = labels.pixels()[i];
    if (label >= 0 && !isWanted(features[static_cast<std::size_t>(label)])) label = -1;
  }
  orva::bip::relabel(labels);
  std::erase_if(features, [&](const RegionFeature& f) { return !isWanted(f); });
}

// The regions of the mask, with their holes if they are to be filled.
orva::image<short> labelled(orva::image<unsigned char>& mask, bool fill, int& n) {
  if (fill) orva::bip::silent::removeInternalStructures(mask);
  auto result = orva::bip::silent::regions(mask, 255, 1, orva::NEIGHBORHOOD_4);
  if (!result.areAllLabelled) {
    throw FileError("has more than 32768 regions; smooth it or raise the threshold");
  }
  n = result.n;
  return result.labels;
}

}  // namespace

ThresholdedRegions regionsOf(const Image& img, const RegionSettings& settings) {
  const float t =
      settings.threshold ? *settings.threshold : orva::bip::computeThreshold(img, settings.scale);
  if (!std::isfinite(t)) {
    throw FileError("has pixels that are no numbers or infinite; give a --threshold");
  }
  orva::image<unsigned char> mask = orva::bip::threshold(img, t);
  int n = 0;
  orva::image<short> labels = labelled(mask, settings.fill, n);
  std::vector<RegionFeature> features = orva::bip::regionFeatures(labels, n, img);
  selectBySize(labels, features, settings.minSize,
               settings.maxSize.value_or(std::numeric_limits<int>::max()));
  return {t, std::move(features), labels};
}

Detections detectionsOf(const ImageFacts& facts, const ThresholdedRegions& regions) {
  Detections table;
  table.facts = facts;
  for (const char* name :
       {"xmin", "xmax", "ymin", "ymax", "zmin", "zmax", "cx", "cy", "cz", "radius", "npix"}) {
    table.columns.push_back({name, Column::Kind::kWhole});
  }
  for (const char* name : {"mean", "var"}) table.columns.push_back({name, Column::Kind::kFloat});
  for (const RegionFeature& f : regions.features) {
    for (const int v :
         {f.xmin, f.xmax, f.ymin, f.ymax, f.zmin, f.zmax, f.cx, f.cy, f.cz, f.radius, f.npix}) {
      table.values.push_back(v);
    }
    for (const float v : {f.mean, f.var}) table.values.push_back(v);
  }
  return table;
}

}  // namespace orva::formats
