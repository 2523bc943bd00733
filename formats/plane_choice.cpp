#include "formats/plane_choice.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <numeric>
#include <utility>

#include "formats/file_error.h"
#include "formats/image_file.h"
#include "formats/text.h"

namespace orva::formats {
namespace {

std::string listOf(const std::vector<std::string>& names) {
  return numberedList(names.size(), [&](std::size_t c) { return quotedName(names[c]); });
}

void requireBelow(int number, int count, const char* axis) {
  if (number < count) return;
  throw FileError(std::string("has no ") + axis + ' ' + std::to_string(number) + "; " +
                  numbersBelow(count));
}

int channelOf(const ImageAxes& axes, const PlaneChoice& choice) {
  if (choice.channel) return numberOfChannel(axes, *choice.channel);
  if (axes.nc == 1) return 0;
  throw FileError("has " + std::to_string(axes.nc) + " channels: " + listOf(axes.channelNames) +
                  "; choose one with --channel");
}

// The axes with pages of unknown meaning along the axis that the choice names.
ImageAxes meant(const ImageAxes& axes, const PlaneChoice& choice) {
  if (axes.areKnown) return axes;
  const int named =
      (choice.channel ? 1 : 0) + (choice.hasSlices() ? 1 : 0) + (choice.hasTimes() ? 1 : 0);
  if (named != 1) {
    const std::string pages = "has " + std::to_string(axes.nz) +
                              " pages, and does not say whether they are channels, slices or times";
    if (named > 1) throw FileError(pages + "; choose along one axis only");
    throw FileError(pages +
                    "; choose one with --frame K, or say what they are with --channel K, "
                    "--z K|max|mean|all or --time K|all");
  }
  ImageAxes result = axes;
  if (choice.channel) std::swap(result.nc, result.nz);
  if (choice.hasTimes()) std::swap(result.nt, result.nz);
  result.channelNames.resize(static_cast<std::size_t>(result.nc));
  return result;
}

template <class T>
void takeMax(image<T>& max, const image<T>& plane) {
  std::transform(max.pixels(), max.pixels() + max.npix(), plane.pixels(), max.pixels(),
                 [](T a, T b) { return b > a || std::isnan(static_cast<float>(a)) ? b : a; });
}

// Calls use(a, b) with both as images of their pixel type. False for other types.
template <class T, class... Others, class Use>
bool withType(orva::Image& a, const orva::Image& b, Use use) {
  auto* first = dynamic_cast<image<T>*>(&a);
  const auto* second = dynamic_cast<const image<T>*>(&b);
  if (first != nullptr && second != nullptr) {
    use(*first, *second);
    return true;
  }
  if constexpr (sizeof...(Others) > 0) {
    return withType<Others...>(a, b, use);
  } else {
    return false;
  }
}

std::unique_ptr<orva::Image> readSlice(const ImageSource& source, const ImageAxes& axes,
                                       const PlanarImage& image, int z, int level,
                                       ColourUse colour = ColourUse::kLuminance) {
  return source.read(requiredPage(axes, {image.c, z, image.t}), colour, level);
}

}  // namespace

int numberOfChannel(const ImageAxes& axes, const std::string& channel) {
  const std::vector<std::string>& names = axes.channelNames;
  const std::optional<int> number = parsedNumber<int>(channel);
  if (number && *number >= 0 && *number < axes.nc) return *number;
  const auto named = std::count(names.begin(), names.end(), channel);
  if (named == 1) {
    return static_cast<int>(std::find(names.begin(), names.end(), channel) - names.begin());
  }
  const std::string shown = number ? channel : '"' + channel + '"';
  throw FileError((named == 0 ? "has no channel " : "has several channels ") + shown +
                  (names.size() == 1 ? "; there is only " : "; there are ") + listOf(names));
}

int requiredPage(const ImageAxes& axes, const PlaneIndex& plane) {
  const int page = axes.pageOf(plane);
  if (page >= 0) return page;
  throw FileError("lacks the plane of channel " + std::to_string(plane.c) + ", slice " +
                  std::to_string(plane.z) + " and time " + std::to_string(plane.t));
}

PlaneSelection selectPlanes(const ImageAxes& stated, const PlaneChoice& choice) {
  const ImageAxes axes = meant(stated, choice);
  PlanarImage first;
  first.c = channelOf(axes, choice);
  if (choice.z) requireBelow(*choice.z, axes.nz, "slice");
  if (choice.t) requireBelow(*choice.t, axes.nt, "time");
  PlaneSelection selection;
  selection.axes = axes;
  selection.variesInT = axes.nt > 1 && !choice.t;
  selection.variesInZ = axes.nz > 1 && choice.eachSlice;
  if (axes.nz == 1) {
    first.z = 0;
  } else if (choice.projection) {
    first.projection = *choice.projection;
  } else if (choice.z) {
    first.z = choice.z;
  } else if (!choice.eachSlice) {
    selection.note = "maximum of " + std::to_string(axes.nz) + " slices; --z chooses";
  }
  for (int t = choice.t.value_or(0); t < (choice.t ? *choice.t + 1 : axes.nt); ++t) {
    first.t = t;
    if (!selection.variesInZ) {
      selection.images.push_back(first);
      continue;
    }
    for (int z = 0; z < axes.nz; ++z) {
      selection.images.push_back(first);
      selection.images.back().z = z;
    }
  }
  return selection;
}

KeptPlanes keepPlanes(const ImageAxes& stated, const PlaneChoice& choice) {
  const bool isOpen = !choice.channel && !choice.hasSlices() && !choice.hasTimes();
  KeptPlanes result;
  result.axes = stated.areKnown || isOpen ? stated : meant(stated, choice);
  const ImageAxes& axes = result.axes;
  if (choice.z) requireBelow(*choice.z, axes.nz, "slice");
  if (choice.t) requireBelow(*choice.t, axes.nt, "time");
  const auto range = [](std::optional<int> one, int count) {
    return one ? std::array{*one, *one + 1} : std::array{0, count};
  };
  const auto channels =
      range(choice.channel ? std::optional(channelOf(axes, choice)) : std::nullopt, axes.nc);
  const bool isProjected = choice.projection && axes.nz > 1;
  const auto slices = isProjected ? std::array{0, 1} : range(choice.z, axes.nz);
  const auto times = range(choice.t, axes.nt);
  for (int t = times[0]; t < times[1]; ++t) {
    for (int z = slices[0]; z < slices[1]; ++z) {
      for (int c = channels[0]; c < channels[1]; ++c) {
        result.images.push_back({c, isProjected ? std::nullopt : std::optional(z),
                                 choice.projection.value_or(Projection::kMax), t});
      }
    }
  }
  result.kept = axes;
  result.kept.nc = channels[1] - channels[0];
  result.kept.nz = slices[1] - slices[0];
  result.kept.nt = times[1] - times[0];
  if (choice.channel) {
    result.kept.channelNames = {axes.channelNames[static_cast<std::size_t>(channels[0])]};
  }
  result.kept.pages.resize(result.images.size());
  std::iota(result.kept.pages.begin(), result.kept.pages.end(), 0);
  if (isProjected) {
    result.kept.pixelSize.z.reset();
    if (choice.projection == Projection::kMean) result.kept.bitDepth.reset();
  }
  return result;
}

std::unique_ptr<orva::Image> readPlanar(const ImageSource& source, const ImageAxes& axes,
                                        const PlanarImage& image, int level, ColourUse colour) {
  const auto read = [&](int z) { return readSlice(source, axes, image, z, level, colour); };
  if (image.z) return read(*image.z);
  // A projection is of brightness.
  colour = ColourUse::kLuminance;
  std::unique_ptr<orva::Image> result = read(0);
  const int nz = axes.nz;
  const auto mean =
      image.projection == Projection::kMean
          ? std::make_unique<std::vector<double>>(static_cast<std::size_t>(result->npix()))
          : nullptr;
  for (int z = 0; z < nz; ++z) {
    const std::unique_ptr<orva::Image> plane = z == 0 ? nullptr : read(z);
    const orva::Image& now = plane ? *plane : *result;
    if (!now.equalSize(*result)) failForPages();
    if (mean) {
      for (int i = 0; i < now.npix(); ++i) (*mean)[static_cast<std::size_t>(i)] += now.pixel(i);
    } else if (plane && !withType<unsigned char, short, int, unsigned int, float>(
                            *result, now, [](auto& a, const auto& b) { takeMax(a, b); })) {
      throw FileError("its slices differ in pixel type; choose one with --z");
    }
  }
  if (!mean) return result;
  auto average = std::make_unique<orva::image<float>>(result->nx(), result->ny(), 1, 1, 1);
  std::transform(mean->begin(), mean->end(), average->pixels(),
                 [nz](double sum) { return static_cast<float>(sum / nz); });
  return average;
}

std::unique_ptr<orva::Image> readVolume(const ImageSource& source, const ImageAxes& axes,
                                        const PlanarImage& image, int level) {
  PlaneStack slices;
  for (int z = 0; z < axes.nz; ++z) slices.add(readSlice(source, axes, image, z, level));
  return slices.take();
}

}  // namespace orva::formats
