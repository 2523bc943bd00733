#include "tests/support/reference/unclaimed.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdlib>
#include <functional>
#include <map>
#include <set>
#include <utility>

#include "orva/detect/elementary.h"
#include "orva/detect/measure.h"

namespace orva::test::reference {
namespace {

using Place = std::pair<int, int>;  // row, column
using Pixels = std::set<Place>;

float median(std::vector<float> values, double share = 0.5) {
  std::sort(values.begin(), values.end());
  return values[static_cast<std::size_t>(
      std::floor(static_cast<double>(values.size() - 1) * share))];
}

// The pixels of the image from 1 to `steps` steps around a place, and itself.
std::vector<Place> around(const image<int>& img, const Place& p, int steps) {
  std::vector<Place> places;
  for (int y = std::max(0, p.first - steps); y <= std::min(img.ny() - 1, p.first + steps); ++y) {
    for (int x = std::max(0, p.second - steps); x <= std::min(img.nx() - 1, p.second + steps);
         ++x) {
      if (std::abs(y - p.first) + std::abs(x - p.second) <= steps) places.emplace_back(y, x);
    }
  }
  return places;
}

bool isNear(const image<int>& img, const Place& p, int steps,
            const std::function<bool(const Place&)>& isSought) {
  const std::vector<Place> places = around(img, p, steps);
  return std::any_of(places.begin(), places.end(), isSought);
}

Pixels componentOf(const Pixels& open, const image<int>& img, const Place& first) {
  Pixels component{first};
  std::vector<Place> next{first};
  while (!next.empty()) {
    const Place p = next.back();
    next.pop_back();
    for (const Place& q : around(img, p, 1)) {
      if (open.count(q) > 0 && component.insert(q).second) next.push_back(q);
    }
  }
  return component;
}

std::vector<float> valuesAt(const image<float>& plane, const Pixels& pixels) {
  std::vector<float> values;
  for (const Place& p : pixels) values.push_back(plane.pixel(p.second, p.first));
  return values;
}

}  // namespace

std::vector<detect::Object> labelUnclaimed(const image<float>& plane, image<int>& labels) {
  const auto labelAt = [&](const Place& p) {
    return labels.pixels()[p.first * labels.nx() + p.second];
  };
  const auto isLabelled = [&](const Place& p) { return labelAt(p) > 0; };
  std::map<int, Pixels> regions;
  Pixels background;
  Pixels free;
  const int stride = std::max(1, labels.npix() / detect::kSampledBackground);
  for (int y = 0; y < labels.ny(); ++y) {
    for (int x = 0; x < labels.nx(); ++x) {
      const Place p{y, x};
      if (isLabelled(p)) {
        regions[labelAt(p)].insert(p);
        continue;
      }
      if (!isNear(labels, p, 1, isLabelled)) free.insert(p);
      if ((y * labels.nx() + x) % stride != 0) continue;
      if (!isNear(labels, p, detect::kFarPixels, isLabelled)) background.insert(p);
    }
  }
  const int n = regions.empty() ? 0 : regions.rbegin()->first;
  if (n < detect::kMinClaimed || background.empty()) return {};
  std::vector<float> areas;
  std::vector<float> medians;
  for (const auto& region : regions) {
    areas.push_back(static_cast<float>(region.second.size()));
    medians.push_back(median(valuesAt(plane, region.second)));
  }
  const float level = median(valuesAt(plane, background));
  std::vector<float> deviations = valuesAt(plane, background);
  for (float& v : deviations) v = std::fabs(v - level);
  const auto noise = static_cast<float>(1.4826 * static_cast<double>(median(deviations)));
  const float contrast = median(medians, detect::kFaintShare) - level;
  if (!(contrast > 0)) return {};
  const float threshold =
      level + std::max(detect::kUnclaimedLevel * contrast, detect::kUnclaimedToNoise * noise);

  Pixels open;
  for (const Place& p : free) {
    if (plane.pixel(p.second, p.first) > threshold) open.insert(p);
  }
  const double medianArea = median(areas);
  std::vector<Pixels> components;
  Pixels seen;
  for (const Place& p : open) {
    if (seen.count(p) > 0) continue;
    const Pixels component = componentOf(open, labels, p);
    seen.insert(component.begin(), component.end());
    const auto area = static_cast<double>(component.size());
    if (area < detect::kMinAreaShare * medianArea || area > detect::kMaxAreaShare * medianArea) {
      continue;
    }
    components.push_back(component);
  }

  std::vector<detect::Object> objects;
  std::vector<Pixels> added;
  for (const Pixels& component : components) {
    image<int> alone(labels.nx(), labels.ny(), 1, 1, 1);
    for (const Place& p : component) alone.setPixel(p.second, p.first, 1);
    const detect::ObjectMeasures m = detect::measureObjects(alone, plane).front();
    if (m.solidity < detect::kMinUnclaimedSolidity) continue;
    Pixels ring;
    const auto isOwn = [&](const Place& p) { return component.count(p) > 0; };
    for (const Place& p : component) {
      for (const Place& q : around(labels, p, detect::kFarPixels)) {
        const auto isTaken = [&](const Pixels& other) { return other.count(q) > 0; };
        if (isLabelled(q) || isNear(labels, q, 1, isOwn)) continue;
        if (std::none_of(components.begin(), components.end(), isTaken)) ring.insert(q);
      }
    }
    const float inside = median(valuesAt(plane, component));
    if (!ring.empty() &&
        !(inside - median(valuesAt(plane, ring)) >= detect::kMinOwnContrast * (inside - level))) {
      continue;
    }
    objects.push_back({static_cast<float>(m.centroidColumn), static_cast<float>(m.centroidRow),
                       static_cast<float>(std::sqrt(m.area / detect::kPi)), detect::kUnclaimedScore,
                       0.0F});
    added.push_back(component);
  }
  for (std::size_t k = 0; k < added.size(); ++k) {
    for (const Place& p : added[k]) {
      labels.pixels()[p.first * labels.nx() + p.second] = n + static_cast<int>(k) + 1;
    }
  }
  return objects;
}

}  // namespace orva::test::reference
