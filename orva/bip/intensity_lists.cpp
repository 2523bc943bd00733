#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <vector>

#include "orva/bip/bip.h"
#include "orva/bip/label_runs.h"
#include "orva/image/bad_alloc.h"
#include "orva/image/float_conversion.h"

namespace orva::bip {
namespace {

// Ascending, with every NaN at the end.
bool precedes(float a, float b) { return a < b || (!std::isnan(a) && std::isnan(b)); }

// Sorts values that are whole numbers from 0 to 255.
void sortBytes(std::vector<float>& list) {
  constexpr std::size_t kMinToCount = 64;  // a counting sort is slower on shorter lists
  if (list.size() < kMinToCount) return std::sort(list.begin(), list.end());
  std::array<std::size_t, 256> counts{};
  for (const float v : list) ++counts[static_cast<unsigned char>(v)];
  auto to = list.begin();
  for (std::size_t v = 0; v < counts.size(); ++v) {
    to = std::fill_n(to, counts[v], static_cast<float>(v));
  }
}

void sortValues(std::vector<float>& list) {
  if (std::any_of(list.begin(), list.end(), [](float v) { return std::isnan(v); })) {
    std::sort(list.begin(), list.end(), precedes);
  } else {
    std::sort(list.begin(), list.end());  // faster without the test for NaN
  }
}

std::vector<std::vector<float>> intensityLists(const image<short>& labels, int n,
                                               const Image& brightness, bool sorted) {
  const auto count = static_cast<std::size_t>(std::max(n, 0));
  std::vector<std::ptrdiff_t> sizes(count);
  forEachLabelRun(
      labels, count, [](std::ptrdiff_t) {},
      [&](const LabelRun& run) { sizes[run.label] += run.end - run.begin; });
  std::vector<std::vector<float>> lists(count);
  for (std::size_t k = 0; k < count; ++k) lists[k].reserve(static_cast<std::size_t>(sizes[k]));
  PixelFloats pixels(brightness);
  const int nx = rowWidth(labels);
  const float* row = nullptr;
  forEachLabelRun(
      labels, count, [&](std::ptrdiff_t first) { row = pixels.read(first, nx); },
      [&](const LabelRun& run) {
        std::vector<float>& list = lists[run.label];
        list.insert(list.end(), row + run.begin, row + run.end);
      });
  if (sorted) {
    const bool areBytes = ownImage<unsigned char>(brightness) != nullptr;
    std::for_each(lists.begin(), lists.end(), areBytes ? sortBytes : sortValues);
  }
  return lists;
}

}  // namespace

std::vector<std::vector<float>> regionIntensityArrays(const image<short>& labels, int n,
                                                      const Image& brightness, bool sorted) {
  if (labels.isNull() || brightness.isNull() || !brightness.equalSize(labels)) return {};
  return exitOnBadAlloc([&] { return intensityLists(labels, n, brightness, sorted); });
}

std::vector<std::vector<float>> regionIntensityArrays(const image<short>& labels,
                                                      const Image& brightness, bool sorted) {
  return regionIntensityArrays(labels, regionNumber(labels), brightness, sorted);
}

}  // namespace orva::bip
