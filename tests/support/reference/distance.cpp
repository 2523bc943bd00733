#include "tests/support/reference/distance.h"

#include <algorithm>
#include <cmath>
#include <vector>

#include "tests/support/reference/bip.h"

namespace orva::reference {
namespace {

constexpr float unknown = 10000.0F;

struct Step {
  int dx;
  int dy;
  int dz;
  float length;
};

using Steps = std::vector<Step>;

// The steps whose coordinate sum is not positive (forward) or not negative, z outermost.
Steps stepsOf(bool volume, bool forward) {
  Steps steps;
  for (int dz = volume ? -1 : 0; dz <= (volume ? 1 : 0); ++dz) {
    for (int dy = -1; dy <= 1; ++dy) {
      for (int dx = -1; dx <= 1; ++dx) {
        const int sum = dx + dy + dz;
        const int squares = dx * dx + dy * dy + dz * dz;
        if (squares == 0 || (forward ? sum > 0 : sum < 0)) continue;
        steps.push_back({dx, dy, dz, std::sqrt(static_cast<float>(squares))});
      }
    }
  }
  return steps;
}

int at(const Image& img, int x, int y, int z) { return x + img.nx() * (y + img.ny() * z); }

// Where the cheapest of the steps from (x, y, z) leads, the first of equals, if its cost is below
// both the unknown distance and the present one, which it then replaces; else -1.
int lower(image<float>& distance, const Steps& steps, int x, int y, int z) {
  float minCost = unknown;
  int from = -1;
  for (const Step& s : steps) {
    const int q = at(distance, x + s.dx, y + s.dy, z + s.dz);
    const float cost = distance.pixels()[q] + s.length;
    if (cost < minCost) {
      minCost = cost;
      from = q;
    }
  }
  float& own = distance.pixels()[at(distance, x, y, z)];
  if (from < 0 || own <= minCost) return -1;
  own = minCost;
  return from;
}

// Every pixel off the border, upward and with the forward steps, then downward with the others. The
// action gets a pixel that was lowered and the one it was lowered from.
template <class Action>
void twoPasses(image<float>& distance, Action action) {
  const bool volume = distance.nz() > 1;
  const int nx = distance.nx();
  const int ny = distance.ny();
  struct Voxel {
    int x;
    int y;
    int z;
  };
  std::vector<Voxel> order;
  for (int z = volume ? 1 : 0; z < (volume ? distance.nz() - 1 : distance.nz()); ++z) {
    for (int y = 1; y < ny - 1; ++y) {
      for (int x = 1; x < nx - 1; ++x) order.push_back({x, y, z});
    }
  }
  for (const bool forward : {true, false}) {
    const Steps steps = stepsOf(volume, forward);
    for (const Voxel& v : order) {
      const int p = at(distance, v.x, v.y, v.z);
      // Values of 0 or 1 cannot be lowered by steps of at least 1.
      if (distance.pixels()[p] <= 1.0F) continue;
      const int from = lower(distance, steps, v.x, v.y, v.z);
      if (from >= 0) action(p, from);
    }
    std::reverse(order.begin(), order.end());
  }
}

void repair(image<float>& distance) {
  for (int z = 0; z < distance.nz(); ++z) {
    for (int y = 0; y < distance.ny(); ++y) {
      for (int x = 0; x < distance.nx(); ++x) {
        float& own = distance.pixels()[at(distance, x, y, z)];
        if (own < 9999.0F) continue;
        for (int dz = -1; dz <= 1; ++dz) {
          for (int dy = -1; dy <= 1; ++dy) {
            for (int dx = -1; dx <= 1; ++dx) {
              const bool outside = x + dx < 0 || x + dx >= distance.nx() || y + dy < 0 ||
                                   y + dy >= distance.ny() || z + dz < 0 || z + dz >= distance.nz();
              if (outside) continue;
              own = std::min(own, distance.pixels()[at(distance, x + dx, y + dy, z + dz)] + 1.0F);
            }
          }
        }
      }
    }
  }
}

// The first volume of the image, each pixel at its start value.
template <class T, class Start>
image<float> started(const image<T>& in, Start start) {
  image<float> distance(in.nx(), in.ny(), in.nz(), 1, 1);
  for (int z = 0; z < in.nz(); ++z) {
    for (int y = 0; y < in.ny(); ++y) {
      for (int x = 0; x < in.nx(); ++x) distance.pixels()[at(in, x, y, z)] = start(x, y, z);
    }
  }
  return distance;
}

image<float> completed(image<float> distance) {
  twoPasses(distance, [](int, int) {});
  repair(distance);
  return distance;
}

}  // namespace

image<float> fchamfer(const image<unsigned char>& mask) {
  if (mask.isNull()) return {0, 1, 1, 1, 1};
  return completed(started(mask, [&mask](int x, int y, int z) {
    return mask.pixels()[at(mask, x, y, z)] == 0 ? 0.0F : unknown;
  }));
}

image<float> fchamfer(const image<short>& labels) {
  if (labels.isNull()) return {0, 1, 1, 1, 1};
  return completed(started(labels, [&labels](int x, int y, int z) {
    if (labels.pixels()[at(labels, x, y, z)] < 0) return 0.0F;
    return isEdge(labels, x, y, z) ? 1.0F : unknown;
  }));
}

image<unsigned char> chamferBytes(const image<float>& distance, bool invert) {
  image<unsigned char> bytes(distance.nx(), distance.ny(), distance.nz(), 1, 1);
  if (distance.isNull()) return bytes;
  const auto [low, high] =
      std::minmax_element(distance.pixels(), distance.pixels() + distance.npix());
  for (int i = 0; i < distance.npix(); ++i) {
    const float v = distance.pixels()[i];
    int byte = 0;
    if (*high - *low >= 0.0001F) {
      byte = v == *high ? 255 : static_cast<int>((v - *low) * 255.0F / (*high - *low));
    }
    bytes.pixels()[i] = static_cast<unsigned char>(invert ? 255 - byte : byte);
  }
  return bytes;
}

void propagate(image<short>& labels, float maxDistance) {
  if (labels.isNull()) return;
  image<float> distance = started(labels, [&labels](int x, int y, int z) {
    return labels.pixels()[at(labels, x, y, z)] < 0 ? unknown : 0.0F;
  });
  twoPasses(distance, [&labels](int p, int from) { labels.pixels()[p] = labels.pixels()[from]; });
  for (int i = 0; i < distance.npix(); ++i) {
    if (distance.pixels()[i] >= maxDistance) labels.pixels()[i] = -1;
  }
}

}  // namespace orva::reference
