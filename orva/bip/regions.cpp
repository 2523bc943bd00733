#include <algorithm>
#include <cstddef>
#include <deque>
#include <iostream>
#include <limits>
#include <vector>

#include "orva/bip/bip.h"
#include "orva/bip/region_runs.h"
#include "orva/image/unset_image.h"
#include "orva/image/with_memory.h"
#include "orva/util/cpu_path.h"
#include "orva/util/narrow.h"

namespace orva::bip {
namespace {

constexpr short kBackground = -1;
constexpr short kUnvisited = -2;  // a candidate that no region has reached; never survives
constexpr int kMaxRegions = std::numeric_limits<short>::max() + 1;

// Grows regions of equal input value over the unvisited pixels of a label image, breadth first.
class Flood {
 public:
  Flood(const image<unsigned char>& in, image<short>& labels, int reach, NeighborhoodType type)
      : in_(in.pixels()),
        labels_(labels),
        reach_(std::clamp(reach, 0, std::max({labels.nx(), labels.ny(), labels.nz()}))),
        type_(type) {}

  // Labels the first kMaxRegions regions and returns their number, or one more if there are more.
  int run() {
    int n = 0;
    short* labels = labels_.pixels();
    for (int z = 0; z < labels_.nz(); ++z) {
      for (int y = 0; y < labels_.ny(); ++y) {
        for (int x = 0; x < labels_.nx(); ++x) {
          if (labels[indexOf(x, y, z)] != kUnvisited) continue;
          if (n == kMaxRegions) {
            std::replace(labels, labels + labels_.npix(), kUnvisited, kBackground);
            return n + 1;
          }
          grow({x, y, z}, fittedTo16(n++));
        }
      }
    }
    return n;
  }

 private:
  struct Voxel {
    int x;
    int y;
    int z;
  };

  std::ptrdiff_t indexOf(int x, int y, int z) const {
    return x + labels_.nx() * (y + std::ptrdiff_t{labels_.ny()} * z);
  }

  void grow(Voxel seed, short label) {
    const std::ptrdiff_t first = indexOf(seed.x, seed.y, seed.z);
    const unsigned char value = in_[first];
    labels_.pixels()[first] = label;
    queue_.push_back(seed);
    const auto visit = [&](int x, int y, int z) {
      const std::ptrdiff_t i = indexOf(x, y, z);
      if (labels_.pixels()[i] != kUnvisited || in_[i] != value) return;
      labels_.pixels()[i] = label;
      queue_.push_back({x, y, z});
    };
    while (!queue_.empty()) {
      visitNeighbours(queue_.front(), visit);
      queue_.pop_front();
    }
  }

  template <class Visit>
  void visitNeighbours(const Voxel p, Visit visit) const {
    const int x0 = std::max(p.x - reach_, 0);
    const int y0 = std::max(p.y - reach_, 0);
    const int z0 = std::max(p.z - reach_, 0);
    const int x1 = p.x + std::min(reach_, labels_.nx() - 1 - p.x);
    const int y1 = p.y + std::min(reach_, labels_.ny() - 1 - p.y);
    const int z1 = p.z + std::min(reach_, labels_.nz() - 1 - p.z);
    if (type_ == NEIGHBORHOOD_8) {
      for (int z = z0; z <= z1; ++z) {
        for (int y = y0; y <= y1; ++y) {
          for (int x = x0; x <= x1; ++x) visit(x, y, z);
        }
      }
    } else if (type_ == NEIGHBORHOOD_4) {
      visit(p.x, y0, p.z);
      visit(p.x, y1, p.z);
      visit(x0, p.y, p.z);
      visit(x1, p.y, p.z);
      visit(p.x, p.y, z0);
      visit(p.x, p.y, z1);
    }
  }

  const unsigned char* in_;
  image<short>& labels_;
  int reach_;
  NeighborhoodType type_;
  std::deque<Voxel> queue_;
};

// The number of regions that keep their labels.
int keptRegions(std::ptrdiff_t found) {
  if (found <= kMaxRegions) return static_cast<int>(found);
  std::cerr << "In bip::regions\n"
            << "   Warning: more than 32768 regions, the rest are ignored\n";
  return kMaxRegions;
}

// For every reach and type of neighbours.
image<short> floodRegions(const image<unsigned char>& in, int& n, int value, int reach,
                          NeighborhoodType type) {
  image<short> labels(in.nx(), in.ny(), in.nz(), 1, 1);
  std::transform(in.pixels(), in.pixels() + labels.npix(), labels.pixels(),
                 [value](int v) { return value < 0 || v == value ? kUnvisited : kBackground; });
  n = keptRegions(Flood(in, labels, reach, type).run());
  return labels;
}

image<short> labelled(const image<unsigned char>& in, int& n, int value, int reach,
                      NeighborhoodType type) {
  if (reach != 1 || (type != NEIGHBORHOOD_4 && type != NEIGHBORHOOD_8)) {
    return floodRegions(in, n, value, reach, type);
  }
  image<short> labels = unsetImage<short>(in.nx(), in.ny(), in.nz(), 1, 1);
  const Contact contact = type == NEIGHBORHOOD_4 ? Contact::Axes : Contact::Box;
  if (value < 0) {
    n = keptRegions(labelAreas(in.pixels(), contact, kMaxRegions, labels));
  } else if (value <= 255) {
    n = keptRegions(
        labelObjects(in.pixels(), static_cast<unsigned char>(value), contact, kMaxRegions, labels));
  } else {
    std::fill_n(labels.pixels(), labels.npix(), kBackground);
    n = 0;
  }
  return labels;
}

image<short> labelled(const image<short>& in, int& n) {
  image<short> labels = unsetImage<short>(in.nx(), in.ny(), in.nz(), 1, 1);
  n = keptRegions(labelAreas(in.pixels(), Contact::Box, kMaxRegions, labels));
  return labels;
}

}  // namespace

image<short> regions(const image<unsigned char>& in, int& n, int value, int reach,
                     NeighborhoodType type) {
  if (in.isNull()) return image<short>(0, 1, 1, 1, 1);
  return withMemory([&] { return labelled(in, n, value, reach, type); });
}

image<short> regions(const image<unsigned char>& in) {
  int n = 0;
  return regions(in, n, 255, 1, NEIGHBORHOOD_4);
}

image<short> regions(const image<short>& in, int& n) {
  if (in.isNull()) return image<short>(0, 1, 1, 1, 1);
  return withMemory([&] { return labelled(in, n); });
}

image<short> regions(const image<short>& in) {
  int n = 0;
  return regions(in, n);
}

int regionNumber(const image<short>& labels) {
  return labels.isNull() ? 0 : std::max<int>(labels.max(), -1) + 1;
}

void relabel(image<short>& labels) {
  const int n = regionNumber(labels);
  auto renamed =
      withMemory([n] { return std::vector<short>(static_cast<std::size_t>(n), kBackground); });
  short* first = labels.pixels();
  short* last = first + labels.npix();
  std::for_each(first, last, [&](short k) {
    if (k >= 0) renamed[static_cast<std::size_t>(k)] = 0;
  });
  short next = 0;
  for (short& name : renamed) {
    if (name == 0) name = next++;
  }
  std::for_each(first, last, [&](short& k) {
    if (k >= 0) k = renamed[static_cast<std::size_t>(k)];
  });
}

bool isBinaryImage(const Image& img) {
  if (img.format() != BYTE) return false;
  const auto* bytes = static_cast<const unsigned char*>(img.data());
  constexpr std::ptrdiff_t kTogether = 4096;
  for (std::ptrdiff_t i = 0; i < img.npix(); i += kTogether) {
    const std::ptrdiff_t count = std::min(kTogether, img.npix() - i);
    unsigned char others = 0;
    unsigned char* found = &others;
    onWidestPath([=] {
      unsigned char any = 0;
      for (std::ptrdiff_t k = i; k < i + count; ++k) {
        any = static_cast<unsigned char>(any | (static_cast<unsigned char>(bytes[k] + 1) > 1));
      }
      *found = any;
    });
    if (others != 0) return false;
  }
  return true;
}

void reverse(image<unsigned char>& img) {
  unsigned char* pixels = img.pixels();
  const std::ptrdiff_t count = img.npix();
  onWidestPath([=] {
    ORVA_INDEPENDENT
    for (std::ptrdiff_t i = 0; i < count; ++i) pixels[i] = static_cast<unsigned char>(~pixels[i]);
  });
}

}  // namespace orva::bip
