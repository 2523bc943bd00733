#include "tests/support/reference/voting.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <utility>

#include "tests/support/reference/bip.h"
#include "tests/support/reference/image.h"
#include "tests/support/reference/scalespace.h"

namespace orva::reference {
namespace {

constexpr int bins = 256;
constexpr float pi = 3.14159265358979F;
constexpr float angleStep = (pi + pi) * 0.00390625F;

// Toward zero, plus one from a rest of one half; 0 for a NaN.
int rounded(double v) {
  if (std::isnan(v)) return 0;
  const double whole = std::trunc(v);
  return static_cast<int>(v - whole >= 0.5 ? whole + 1.0 : whole);
}

// The planes of a cone along +x for a sign of 1, along -x for a sign of -1.
std::vector<voting::ConePlane2D> prototype(int sign, int r0, int R, int w) {
  std::vector<voting::ConePlane2D> planes;
  for (int d = r0; d <= R; ++d) {
    planes.emplace_back();
    planes.back().points.emplace_back(sign * d, 0, 0, 1.0F);
  }
  for (int r = r0; r <= R; ++r) {
    const int h = r * w / R;
    for (int dy = -h; dy <= h; ++dy) {
      if (dy == 0) continue;
      const int d = rounded(static_cast<float>(std::sqrt(static_cast<double>(dy * dy + r * r))));
      if (d >= r0 && d <= R) {
        planes[static_cast<std::size_t>(d - r0)].points.emplace_back(sign * r, dy, 0, 1.0F);
      }
    }
  }
  return planes;
}

const voting::Cone2D& coneOf(const voting::VPoint2D& p, const std::vector<voting::Cone2D>& cones) {
  return cones[static_cast<std::size_t>(p.angle)];
}

template <class Action>
void forEachCell(const voting::Cone2D& cone, Action action) {
  for (const voting::ConePlane2D& plane : cone.planes) {
    for (const voting::WPoint2D& cell : plane.points) action(cell);
  }
}

void castPlain(const voting::VPoint2D& p, const voting::Cone2D& cone, float* acc) {
  forEachCell(cone,
              [&](const voting::WPoint2D& c) { acc[p.offset + c.offset] += p.weight * c.weight; });
}

void castAgain(const voting::VPoint2D& p, const voting::Cone2D& cone, float* acc,
               const float* prev) {
  float sum = 0.0F;
  forEachCell(cone, [&](const voting::WPoint2D& c) { sum += prev[p.offset + c.offset]; });
  if (sum < 0.001) return;
  const float k = p.weight / sum;
  forEachCell(cone, [&](const voting::WPoint2D& c) {
    acc[p.offset + c.offset] += k * prev[p.offset + c.offset];
  });
}

// The border around the image that holds all votes.
int margin(const VotingParams& s) {
  return static_cast<int>(
      std::sqrt(1.0 * s.coneWidth * s.coneWidth + 1.0 * s.maxRadius * s.maxRadius) + 3.0);
}

std::int16_t to16(int v) { return static_cast<std::int16_t>(v); }

// The weights of all pixels of plane 0, with the unit directions in gx and gy.
image<float> magnitudes(const VotingParams& s, const Image& img, image<float>& gx,
                        image<float>& gy) {
  image<float> m(img.nx(), img.ny(), 1, 1, 1);
  const float sign = s.regionType == 1 ? -1.0F : 1.0F;
  for (int i = 0; i < m.npix(); ++i) {
    float& x = gx.pixels()[i];
    float& y = gy.pixels()[i];
    x *= sign;
    y *= sign;
    const float norm = std::sqrt(x * x + y * y);
    if (norm > 0.001) {
      x /= norm;
      y /= norm;
    }
    m.pixels()[i] = norm;
  }
  // From the first on: a NaN there is the largest, and none is selected.
  const float maxMagnitude = Typed<float>::largest(m);
  for (int i = 0; i < m.npix() && maxMagnitude > 0.001; ++i) {
    float& v = m.pixels()[i];
    if (v < s.gradThreshold) {
      v = 0.0F;
    } else if (!s.absoluteValues) {
      v /= maxMagnitude;
    }
  }
  if (s.useEdges) {
    const image<unsigned char> e =
        reference::edge(reference::features(img, s.sigma, LAPLACIAN_NEGATIVE, 1.0F));
    for (int i = 0; i < m.npix(); ++i) {
      if (e.pixels()[i] == 0) m.pixels()[i] = 0.0F;
    }
  }
  if (s.weighting == 0 && std::abs(s.weightParam - 1.0) > 0.001) {
    for (int i = 0; i < m.npix(); ++i) {
      if (m.pixels()[i] > 0.001) m.pixels()[i] = std::pow(m.pixels()[i], s.weightParam);
    }
  }
  return m;
}

// The centers from the final votes; what was found before stays in the lists of points.
void extractCenters(const VotingParams& s, int nx, int ny, Voting& v) {
  image<float> votes(nx, ny, 1, 1, 1);
  float maxVote = 0.0F;
  for (int y = 0; y < ny; ++y) {
    for (int x = 0; x < nx; ++x) {
      const float vote = v.acc.pixels()[x + v.margin + (y + v.margin) * v.acc.nx()];
      votes.pixels()[x + y * nx] = vote;
      maxVote = std::max(maxVote, vote);
    }
  }
  const float threshold = s.absoluteValues ? s.centerThreshold : s.centerThreshold * maxVote;
  image<unsigned char> mask(nx, ny, 1, 1, 1);
  for (int i = 0; i < mask.npix(); ++i) mask.pixels()[i] = votes.pixels()[i] > threshold ? 255 : 0;
  const image<short> labels = reference::regions(mask, v.regions, 255, 1, 4);
  v.votingImage = image<float>(nx, ny, 1, 1, 1);
  for (const RegionFeature& f : reference::regionFeatures(labels, v.regions, &votes)) {
    v.votingImage.pixels()[f.cx + f.cy * nx] = f.mean;
    v.centers.emplace_back(f.cx, f.cy);
    v.weights.push_back(f.mean);
  }
}

}  // namespace

VotingParams repaired(VotingParams p) {
  p.minRadius = p.minRadius > 0 ? p.minRadius : 1;
  p.maxRadius = p.maxRadius >= p.minRadius ? p.maxRadius : p.minRadius;
  p.coneWidth = p.coneWidth >= 0 ? p.coneWidth : 0;
  if (!p.absoluteValues) {
    p.centerThreshold = p.centerThreshold <= 1.0F ? p.centerThreshold : 1.0F;
    p.centerThreshold = p.centerThreshold >= 0.05F ? p.centerThreshold : 0.05F;
  }
  p.sigma = p.sigma > 0.0F ? p.sigma : 0.0F;
  return p;
}

std::vector<voting::Cone2D> cones(int regionType, int minRadius, int maxRadius, int coneWidth,
                                  int width) {
  std::vector<voting::ConePlane2D> along = prototype(1, minRadius, maxRadius, coneWidth);
  if (regionType == 2) {
    for (const voting::ConePlane2D& plane : prototype(-1, minRadius, maxRadius, coneWidth)) {
      along.push_back(plane);
    }
  }
  std::vector<voting::Cone2D> result;
  for (int a = 0; a < bins; ++a) {
    const float angle = static_cast<float>(a) * angleStep;
    const float c = std::cos(angle);
    const float s = std::sin(angle);
    voting::Cone2D cone;
    cone.planes = along;
    cone.dx = c;
    cone.dy = s;
    for (voting::ConePlane2D& plane : cone.planes) {
      for (voting::WPoint2D& cell : plane.points) {
        const auto x = static_cast<float>(cell.x);
        const auto y = static_cast<float>(cell.y);
        cell.x = rounded(c * x - s * y);
        cell.y = rounded(s * x + c * y);
        cell.offset = cell.y * width + cell.x;
      }
    }
    result.push_back(cone);
  }
  return result;
}

int nextConeRadius(int maxRadius, int width) {
  const double R = maxRadius;
  return static_cast<int>(R * std::tan(0.7 * std::atan(width / R)));
}

int angleIndex(float cosine, float sine) {
  float angle = std::acos(cosine);
  if (sine < 0.0F) angle = 6.2831855F - angle;
  return std::clamp(rounded(angle / angleStep), 0, bins - 1);
}

void turnToMax(voting::VPoint2D& p, const std::vector<voting::Cone2D>& cones,
               const image<float>& acc) {
  float best = 0.0F;
  int bx = 0;
  int by = 0;
  forEachCell(coneOf(p, cones), [&](const voting::WPoint2D& c) {
    const float v = acc.pixels()[p.offset + c.offset];
    if (v > best) {
      best = v;
      bx = c.x;
      by = c.y;
    }
  });
  if (best < 0.001) return;
  const float length = std::sqrt(static_cast<float>(bx * bx + by * by));
  if (!(length > 0.001)) return;
  p.cx = to16(p.x + bx);
  p.cy = to16(p.y + by);
  p.angle = to16(angleIndex(static_cast<float>(bx) / length, static_cast<float>(by) / length));
}

void turnToMean(voting::VPoint2D& p, const std::vector<voting::Cone2D>& cones,
                const image<float>& acc) {
  float sx = 0.0F;
  float sy = 0.0F;
  int n = 0;
  forEachCell(coneOf(p, cones), [&](const voting::WPoint2D& c) {
    const float v = acc.pixels()[p.offset + c.offset];
    sx += static_cast<float>(c.x) * v;
    sy += static_cast<float>(c.y) * v;
    ++n;
  });
  if (n < 1) return;
  const int mx = rounded(sx / static_cast<float>(n));
  const int my = rounded(sy / static_cast<float>(n));
  const float length = std::sqrt(static_cast<float>(mx * mx + my * my));
  if (!(length > 0.001)) return;
  p.angle = to16(angleIndex(static_cast<float>(mx) / length, static_cast<float>(my) / length));
}

Voting vote(const VotingParams& s, std::vector<voting::VPoint2D> points, int nx, int ny) {
  Voting v;
  v.margin = margin(s);
  v.points = std::move(points);
  v.acc = image<float>(nx, ny, 1, 1, 1);
  v.prevAcc = image<float>(nx, ny, 1, 1, 1);
  const auto conesOf = [&](int w) {
    return reference::cones(s.regionType, s.minRadius, s.maxRadius, w, nx);
  };
  v.cones = conesOf(s.coneWidth);
  for (voting::VPoint2D& p : v.points) {
    p.offset = p.x + p.y * nx;
    castPlain(p, coneOf(p, v.cones), v.acc.pixels());
  }
  for (int w = s.coneWidth; w >= 0; w = reference::nextConeRadius(s.maxRadius, w)) {
    v.cones = conesOf(w);
    v.history.emplace_back(w, v.acc.duplicate());
    for (voting::VPoint2D& p : v.points) turnToMax(p, v.cones, v.acc);
    v.prevAcc = v.acc;
    v.acc = image<float>(nx, ny, 1, 1, 1);
    for (const voting::VPoint2D& p : v.points) {
      castAgain(p, coneOf(p, v.cones), v.acc.pixels(), v.prevAcc.pixels());
    }
    if (w == 0) break;
  }
  v.cones = conesOf(0);
  return v;
}

Voting compute(const VotingParams& params, const Image& img) {
  const VotingParams s = repaired(params);
  const Triple scale{s.sigma, s.sigma, s.sigma};
  image<float> gx = reference::gaussian(img, scale, {1, 0, 0});
  image<float> gy = reference::gaussian(img, scale, {0, 1, 0});
  const image<float> m = magnitudes(s, img, gx, gy);
  const int border = margin(s);
  std::vector<voting::VPoint2D> points;
  for (int i = 0; i < m.npix(); ++i) {
    if (!(m.pixels()[i] > 0.001)) continue;
    voting::VPoint2D p;
    p.x = to16(i % img.nx() + border);
    p.y = to16(i / img.nx() + border);
    p.angle = to16(angleIndex(gx.pixels()[i], gy.pixels()[i]));
    p.weight = m.pixels()[i];
    points.push_back(p);
  }
  Voting v = reference::vote(s, points, img.nx() + 2 * border, img.ny() + 2 * border);
  extractCenters(s, img.nx(), img.ny(), v);
  for (voting::VPoint2D& p : v.points) {
    p.x = to16(p.x - border);
    p.y = to16(p.y - border);
    p.cx = to16(p.cx - border);
    p.cy = to16(p.cy - border);
  }
  return v;
}

}  // namespace orva::reference
