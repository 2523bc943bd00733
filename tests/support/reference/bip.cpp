#include "tests/support/reference/bip.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <set>

namespace orva::reference {
namespace {

struct LabelVoxel {
  int x;
  int y;
  int z;
};

constexpr int unlabelled = -2;

// The neighbours of p, which may include p and the same pixel more than once.
std::vector<LabelVoxel> neighbours(const Image& img, const LabelVoxel& p, int reach, int type) {
  const std::int64_t d = std::max(reach, 0);
  const auto low = [d](int at) { return static_cast<int>(std::max<std::int64_t>(at - d, 0)); };
  const auto high = [d](int at, int size) {
    return static_cast<int>(std::min<std::int64_t>(at + d, size - 1));
  };
  if (type == 4) {
    return {{p.x, low(p.y), p.z}, {p.x, high(p.y, img.ny()), p.z},
            {low(p.x), p.y, p.z}, {high(p.x, img.nx()), p.y, p.z},
            {p.x, p.y, low(p.z)}, {p.x, p.y, high(p.z, img.nz())}};
  }
  std::vector<LabelVoxel> box;
  if (type != 8) return box;
  for (int z = low(p.z); z <= high(p.z, img.nz()); ++z) {
    for (int y = low(p.y); y <= high(p.y, img.ny()); ++y) {
      for (int x = low(p.x); x <= high(p.x, img.nx()); ++x) box.push_back({x, y, z});
    }
  }
  return box;
}

// A region is everything that can be reached from its first pixel through unlabelled pixels of the
// same value. In which order they are reached does not matter.
template <class T, class Candidate>
image<short> label(const image<T>& in, int& n, int reach, int type, Candidate candidate) {
  if (in.isNull()) return {0, 1, 1, 1, 1};
  const auto at = [&in](const LabelVoxel& p) {
    return static_cast<std::size_t>(p.x + in.nx() * (p.y + in.ny() * p.z));
  };
  const auto size = static_cast<std::size_t>(in.volumeSize());
  std::vector<int> labels(size, -1);
  for (std::size_t i = 0; i < size; ++i) {
    if (candidate(in.pixels()[i])) labels[i] = unlabelled;
  }
  int count = 0;
  for (int z = 0; z < in.nz(); ++z) {
    for (int y = 0; y < in.ny(); ++y) {
      for (int x = 0; x < in.nx(); ++x) {
        const LabelVoxel seed{x, y, z};
        if (labels[at(seed)] != unlabelled) continue;
        labels[at(seed)] = count;
        std::vector<LabelVoxel> open{seed};
        while (!open.empty()) {
          const LabelVoxel p = open.back();
          open.pop_back();
          for (const LabelVoxel& q : neighbours(in, p, reach, type)) {
            if (labels[at(q)] != unlabelled || in.pixels()[at(q)] != in.pixels()[at(seed)])
              continue;
            labels[at(q)] = count;
            open.push_back(q);
          }
        }
        ++count;
      }
    }
  }
  constexpr int maxRegions = 32768;
  n = std::min(count, maxRegions);
  image<short> result(in.nx(), in.ny(), in.nz(), 1, 1);
  std::transform(labels.begin(), labels.end(), result.pixels(),
                 [](int k) { return static_cast<short>(k < maxRegions ? k : -1); });
  return result;
}

// The linear indices of each region's pixels, ascending.
std::vector<std::vector<int>> members(const image<short>& labels, int n) {
  std::vector<std::vector<int>> result(static_cast<std::size_t>(n));
  for (int i = 0; i < labels.npix(); ++i) {
    const int k = labels.pixels()[i];
    if (k >= 0 && k < n) result[static_cast<std::size_t>(k)].push_back(i);
  }
  return result;
}

// The values of the eight neighbours of an interior pixel.
template <class T>
std::vector<T> ring(const image<T>& img, int x, int y) {
  std::vector<T> values;
  for (int dy = -1; dy <= 1; ++dy) {
    for (int dx = -1; dx <= 1; ++dx) {
      if (dx != 0 || dy != 0) values.push_back(img.pixels()[x + dx + (y + dy) * img.nx()]);
    }
  }
  return values;
}

// Of plane 0, where all of a stack's first plane is border.
bool isInterior(const Image& img, int x, int y) {
  return img.nframes() == 1 && x > 0 && x < img.nx() - 1 && y > 0 && y < img.ny() - 1;
}

template <class T, class Object, class Outside>
void erodePlane(image<T>& img, T cleared, Object object, Outside outside) {
  if (img.isNull()) return;
  const image<T> before = img.duplicate();
  for (int y = 0; y < img.ny(); ++y) {
    for (int x = 0; x < img.nx(); ++x) {
      const T v = before.pixels()[x + y * img.nx()];
      if (!object(v)) continue;
      bool kept = isInterior(img, x, y);
      if (kept) {
        for (const T& w : ring(before, x, y)) kept = kept && !outside(v, w);
      }
      if (!kept) img.pixels()[x + y * img.nx()] = cleared;
    }
  }
}

}  // namespace

image<short> regions(const image<unsigned char>& in, int& n, int value, int reach, int type) {
  return label(in, n, reach, type, [value](int v) { return value < 0 || v == value; });
}

image<short> regions(const image<short>& in, int& n) {
  return label(in, n, 1, 8, [](int) { return true; });
}

int regionNumber(const image<short>& labels) {
  int n = 0;
  for (int i = 0; i < labels.npix(); ++i) n = std::max(n, labels.pixels()[i] + 1);
  return n;
}

void relabel(image<short>& labels) {
  std::set<short> used;
  for (int i = 0; i < labels.npix(); ++i) {
    if (labels.pixels()[i] >= 0) used.insert(labels.pixels()[i]);
  }
  for (int i = 0; i < labels.npix(); ++i) {
    short& k = labels.pixels()[i];
    if (k >= 0) k = static_cast<short>(std::distance(used.begin(), used.find(k)));
  }
}

bool isBinaryImage(const Image& img) {
  if (img.format() != BYTE) return false;
  const auto* bytes = static_cast<const unsigned char*>(img.data());
  return std::all_of(bytes, bytes + img.npix(), [](int v) { return v == 0 || v == 255; });
}

void reverse(image<unsigned char>& img) {
  for (int i = 0; i < img.npix(); ++i) {
    img.pixels()[i] = static_cast<unsigned char>(255 - img.pixels()[i]);
  }
}

std::vector<RegionFeature> regionFeatures(const image<short>& labels, int n,
                                          const Image* brightness) {
  if (labels.isNull()) return {};
  const bool measured = brightness != nullptr && !brightness->isNull() &&
                        brightness->nx() == labels.nx() && brightness->ny() == labels.ny() &&
                        brightness->nframes() == labels.nframes();
  std::vector<RegionFeature> result;
  for (const std::vector<int>& all : members(labels, n)) {
    // The geometry is that of the first volume, the brightness that of all pixels.
    const std::vector<int> pixels(all.begin(),
                                  std::lower_bound(all.begin(), all.end(), labels.volumeSize()));
    RegionFeature f;
    f.npix = static_cast<int>(pixels.size());
    const auto axis = [&pixels](auto coordinate, int& low, int& high, int& center) {
      std::int64_t sum = 0;
      low = high = coordinate(pixels[0]);
      for (int i : pixels) {
        low = std::min(low, coordinate(i));
        high = std::max(high, coordinate(i));
        sum += coordinate(i);
      }
      center = static_cast<int>(sum / static_cast<std::int64_t>(pixels.size()));
    };
    if (f.npix > 0) {
      const int nx = labels.nx();
      const int ny = labels.ny();
      axis([nx](int i) { return i % nx; }, f.xmin, f.xmax, f.cx);
      axis([nx, ny](int i) { return i / nx % ny; }, f.ymin, f.ymax, f.cy);
      axis([nx, ny](int i) { return i / nx / ny; }, f.zmin, f.zmax, f.cz);
      const auto r =
          static_cast<float>(labels.nz() == 1 ? std::sqrt(f.npix / 3.14159)
                                              : std::pow(f.npix * 3.0 / 12.56636, 1.0 / 3));
      f.radius = std::max(static_cast<int>(r), 1);
    }
    if (measured) {
      for (int i : all) f.mean += brightness->pixel(i);
      if (f.npix > 0) f.mean /= static_cast<float>(f.npix);
      float squares = 0.0F;
      for (int i : all) {
        const float d = brightness->pixel(i) - f.mean;
        squares += d * d;
      }
      if (f.npix > 1) f.var = squares / static_cast<float>(f.npix - 1);
    }
    result.push_back(f);
  }
  return result;
}

std::vector<std::vector<float>> regionIntensityArrays(const image<short>& labels, int n,
                                                      const Image& brightness, bool sorted) {
  if (labels.isNull() || brightness.nx() != labels.nx() || brightness.ny() != labels.ny() ||
      brightness.nframes() != labels.nframes()) {
    return {};
  }
  std::vector<std::vector<float>> result;
  for (const std::vector<int>& pixels : members(labels, n)) {
    std::vector<float> values;
    for (int i : pixels) values.push_back(brightness.pixel(i));
    if (sorted) {
      const auto numbers = std::stable_partition(values.begin(), values.end(),
                                                 [](float v) { return !std::isnan(v); });
      std::sort(values.begin(), numbers);
    }
    result.push_back(values);
  }
  return result;
}

std::vector<int> histogram(const image<unsigned char>& img, int low, int high) {
  std::vector<int> counts;
  for (int v = 0; v < 256; ++v) {
    const auto times = std::count(img.pixels(), img.pixels() + img.npix(), v);
    counts.push_back(v >= low && v <= high ? static_cast<int>(times) : 0);
  }
  return counts;
}

void erode(image<short>& labels) {
  erodePlane(
      labels, short{-1}, [](short v) { return v >= 0; }, [](short v, short w) { return v != w; });
}

void erode(image<unsigned char>& mask) {
  erodePlane(
      mask, static_cast<unsigned char>(0), [](int v) { return v == 255; },
      [](int, int w) { return w < 255; });
}

void dilate(image<unsigned char>& mask) {
  if (mask.isNull()) return;
  const image<unsigned char> before = mask.duplicate();
  for (int y = 0; y < mask.ny(); ++y) {
    for (int x = 0; x < mask.nx(); ++x) {
      if (before.pixels()[x + y * mask.nx()] != 0) continue;
      for (int qy = std::max(y - 1, 0); qy <= std::min(y + 1, mask.ny() - 1); ++qy) {
        for (int qx = std::max(x - 1, 0); qx <= std::min(x + 1, mask.nx() - 1); ++qx) {
          if (before.pixels()[qx + qy * mask.nx()] == 255 && isInterior(mask, qx, qy)) {
            mask.pixels()[x + y * mask.nx()] = 255;
          }
        }
      }
    }
  }
}

template <class T>
image<unsigned char> edge(const image<T>& img) {
  if (img.isNull()) return {0, 1, 1, 1, 1};
  image<unsigned char> result(img.nx(), img.ny(), 1, 1, 1);
  for (int y = 1; y <= img.ny() - 2; ++y) {
    for (int x = 1; x <= img.nx() - 2; ++x) {
      const T center = img.pixels()[x + y * img.nx()];
      int equal = center == center ? 1 : 0;
      for (const T& v : ring(img, x, y)) equal += v == center ? 1 : 0;
      if (equal <= 7) result.pixels()[x + y * img.nx()] = 255;
    }
  }
  return result;
}

template image<unsigned char> edge(const image<unsigned char>&);
template image<unsigned char> edge(const image<short>&);
template image<unsigned char> edge(const image<int>&);
template image<unsigned char> edge(const image<float>&);

bool isEdge(const image<short>& labels, int x, int y, int z) {
  const auto value = [&labels](const LabelVoxel& p) {
    return labels.pixels()[p.x + labels.nx() * (p.y + labels.ny() * p.z)];
  };
  const std::vector<LabelVoxel> box = neighbours(labels, {x, y, z}, 1, 8);
  return std::any_of(box.begin(), box.end(), [&](const LabelVoxel& p) {
    return value(p) != value({x, y, z});
  });
}

std::vector<std::vector<Point>> boundaries(const image<short>& labels) {
  const image<unsigned char> e = reference::edge(labels);
  std::vector<std::vector<Point>> result;
  for (int k = 0; k < reference::regionNumber(labels); ++k) {
    std::vector<Point> points;
    for (int i = 0; i < e.npix(); ++i) {
      if (labels.pixels()[i] == k && e.pixels()[i] == 255) {
        points.emplace_back(i % e.nx(), i / e.nx());
      }
    }
    result.push_back(points);
  }
  return result;
}

void removeInternalStructures(image<unsigned char>& mask) {
  if (mask.isNull()) return;
  const int dz = mask.nz() == 1 ? 0 : 1;
  image<unsigned char> padded(mask.nx() + 2, mask.ny() + 2, mask.nz() + 2 * dz, 1, 1);
  const auto forEach = [&](auto action) {
    for (int z = 0; z < mask.nz(); ++z) {
      for (int y = 0; y < mask.ny(); ++y) {
        for (int x = 0; x < mask.nx(); ++x) {
          action(mask.pixels()[x + mask.nx() * (y + mask.ny() * z)],
                 x + 1 + padded.nx() * (y + 1 + padded.ny() * (z + dz)));
        }
      }
    }
  };
  forEach([&](unsigned char v, int i) { padded.pixels()[i] = v; });
  int n = 0;
  const image<short> labels = reference::regions(padded, n, 0, 1, 4);
  // The region that touches the frame spans the whole padded image, which no other region can.
  const short outside = labels.pixels()[0];
  forEach([&](unsigned char& v, int i) {
    v = static_cast<unsigned char>(labels.pixels()[i] == outside ? 0 : 255);
  });
}

}  // namespace orva::reference
