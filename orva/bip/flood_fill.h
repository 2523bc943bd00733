// Connected components by flood fill, for every reach and type of neighbours, in bounded memory.
// For the library's own sources; not installed.
#ifndef ORVA_BIP_FLOOD_FILL_H
#define ORVA_BIP_FLOOD_FILL_H

#include <algorithm>
#include <cstddef>
#include <deque>
#include <limits>

#include "orva/bip/bip.h"
#include "orva/util/narrow.h"

namespace orva::bip {

constexpr short kBackground = -1;
constexpr short kUnvisited = -2;  // a candidate that no region has reached

// Grows regions of equal input value over the kUnvisited pixels of a label image, breadth first.
// The label image doubles as the visited set.
//
// The queue holds a limited number of pixels. Those that it cannot take are marked in the label
// image and found again by a scan once the queue is empty. Before each scan the queue was full, so
// a fill takes at most as many scans as full queues hold its pixels.
template <class Pixel>
class FloodFill {
 public:
  // `bytes` limits the memory of the queue.
  FloodFill(const Pixel* in, image<short>& labels, int reach, NeighborhoodType type,
            std::size_t bytes)
      : in_(in),
        labels_(labels),
        reach_(std::clamp(reach, 0, std::max({labels.nx(), labels.ny(), labels.nz()}))),
        type_(type),
        limit_(std::max<std::size_t>(bytes / kBytesPerVoxel, 1)) {}

  // Labels the first `maxRegions` regions in raster order and returns their number. If there are
  // more, it returns maxRegions + 1, and their pixels become kBackground.
  int run(int maxRegions) {
    int n = 0;
    short* labels = labels_.pixels();
    for (int z = 0; z < labels_.nz(); ++z) {
      for (int y = 0; y < labels_.ny(); ++y) {
        for (int x = 0; x < labels_.nx(); ++x) {
          if (labels[indexOf(x, y, z)] != kUnvisited) continue;
          if (n == maxRegions) {
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

  static constexpr short kPending = -3;  // reached while the queue was full
  // With the blocks of std::deque and the pointers to them, which grow by doubling.
  static constexpr std::size_t kBytesPerVoxel = sizeof(Voxel) + 1;

  std::ptrdiff_t indexOf(int x, int y, int z) const {
    return x + labels_.nx() * (y + std::ptrdiff_t{labels_.ny()} * z);
  }

  void grow(Voxel seed, short label) {
    const std::ptrdiff_t first = indexOf(seed.x, seed.y, seed.z);
    const Pixel value = in_[first];
    labels_.pixels()[first] = label;
    queue_.push_back(seed);
    const auto visit = [&](int x, int y, int z) {
      const std::ptrdiff_t i = indexOf(x, y, z);
      short& own = labels_.pixels()[i];
      if (own != kUnvisited || in_[i] != value) return;
      if (queue_.size() < limit_) {
        own = label;
        queue_.push_back({x, y, z});
      } else {
        own = kPending;
        firstPending_ = std::min(firstPending_, i);
        lastPending_ = std::max(lastPending_, i);
      }
    };
    do {
      while (!queue_.empty()) {
        visitNeighbours(queue_.front(), visit);
        queue_.pop_front();
      }
      queuePending(label);
    } while (!queue_.empty());
  }

  // Moves as many pending pixels to the queue as it takes.
  void queuePending(short label) {
    const std::ptrdiff_t plane = std::ptrdiff_t{labels_.nx()} * labels_.ny();
    for (; firstPending_ <= lastPending_; ++firstPending_) {
      short& own = labels_.pixels()[firstPending_];
      if (own != kPending) continue;
      if (queue_.size() == limit_) return;
      own = label;
      const std::ptrdiff_t inPlane = firstPending_ % plane;
      queue_.push_back({static_cast<int>(inPlane % labels_.nx()),
                        static_cast<int>(inPlane / labels_.nx()),
                        static_cast<int>(firstPending_ / plane)});
    }
    firstPending_ = kNone;
    lastPending_ = -1;
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

  static constexpr std::ptrdiff_t kNone = std::numeric_limits<std::ptrdiff_t>::max();

  const Pixel* in_;
  image<short>& labels_;
  int reach_;
  NeighborhoodType type_;
  std::size_t limit_;
  std::deque<Voxel> queue_;
  std::ptrdiff_t firstPending_ = kNone;  // every pending pixel lies in firstPending_ ..
  std::ptrdiff_t lastPending_ = -1;      // .. lastPending_
};

}  // namespace orva::bip

#endif
