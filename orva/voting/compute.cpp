#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <iostream>
#include <limits>
#include <vector>

#include "orva/bip/bip.h"
#include "orva/image/bad_alloc.h"
#include "orva/scalespace/scalespace.h"
#include "orva/util/cpu_path.h"
#include "orva/util/narrow.h"
#include "orva/voting/circularvoting.h"
#include "orva/voting/find_centers.h"
#include "orva/voting/negligible.h"

namespace orva::voting {
namespace {

// Coordinates of voting points have 16 bits.
constexpr std::int64_t kMaxSide = std::numeric_limits<std::int16_t>::max();

struct Gradient {
  image<float> x;
  image<float> y;
  image<float> magnitude;
};

Gradient gradientOf(const Image& img, float sigma) {
  Gradient g{scalespace::dX(img, sigma), scalespace::dY(img, sigma),
             image<float>(img.nx(), img.ny(), 1, 1, 1)};
  if (g.x.isNull()) return g;
  onWidestPath(
      [x = g.x.pixels(), y = g.y.pixels(), m = g.magnitude.pixels(), count = g.magnitude.npix()] {
        for (int i = 0; i < count; ++i) m[i] = std::sqrt(x[i] * x[i] + y[i] * y[i]);
      });
  return g;
}

// Sets magnitudes below the threshold to 0 and divides the others by the maximum unless absolute.
// Intended: the threshold applies to the undivided magnitudes in both cases.
void suppressWeak(image<float>& magnitude, float threshold, bool absolute) {
  const float max = magnitude.max();
  if (!(max > kNegligible)) return;
  const float divisor = absolute ? 1.0F : max;
  onWidestPath([=, m = magnitude.pixels(), count = magnitude.npix()] {
    for (int i = 0; i < count; ++i) m[i] = m[i] < threshold ? 0.0F : m[i] / divisor;
  });
}

// Sets magnitudes off the edges of the regions of negative Laplacian to 0.
void suppressNonEdges(image<float>& magnitude, const Image& img, float sigma) {
  const image<unsigned char> edges =
      bip::edge(scalespace::features(img, sigma, LAPLACIAN_NEGATIVE, 1.0F));
  for (int i = 0; i < magnitude.npix(); ++i) {
    if (edges.pixels()[i] == 0) magnitude.pixels()[i] = 0.0F;
  }
}

// Turns magnitudes into weights. Intended: Exponential leaves them as they are.
void applyWeighting(image<float>& magnitude, CircularVoting::WeightingMethod weighting,
                    float exponent) {
  if (weighting != CircularVoting::Power || !(std::abs(exponent - 1.0) > kNegligible)) return;
  for (int i = 0; i < magnitude.npix(); ++i) {
    float& m = magnitude.pixels()[i];
    if (m > kNegligible) m = std::pow(m, exponent);
  }
}

}  // namespace

void CircularVoting::setSize(int nx, int ny) {
  nx_ = nx;
  ny_ = ny;
  npix_ = static_cast<int>(static_cast<unsigned>(nx) * static_cast<unsigned>(ny));
}

void CircularVoting::collectPoints(const Image& img) {
  Gradient g = gradientOf(img, sigma);
  if (g.x.isNull()) return;  // no pixels, or a format without a float form
  const float sign = regionType == Dark ? -1.0F : 1.0F;
  suppressWeak(g.magnitude, gradThreshold, absoluteValues);
  if (useEdges) suppressNonEdges(g.magnitude, img, sigma);
  applyWeighting(g.magnitude, weighting, weightParam);
  for (int y = 0, i = 0; y < ny_; ++y) {
    for (int x = 0; x < nx_; ++x, ++i) {
      const float weight = g.magnitude.pixels()[i];
      if (!(weight > kNegligible)) continue;
      VPoint2D p;
      p.x = fittedTo16(x + margin_);
      p.y = fittedTo16(y + margin_);
      float gx = sign * g.x.pixels()[i];
      float gy = sign * g.y.pixels()[i];
      const float length = std::sqrt(gx * gx + gy * gy);
      if (length > kNegligible) {
        gx /= length;
        gy /= length;
      }
      p.angle = fittedTo16(computeAngleIndex(gx, gy));
      p.weight = weight;
      points_.push_back(p);
    }
  }
}

void CircularVoting::compute(const Image& img) { compute(img, historyWriter()); }

void CircularVoting::compute(const Image& img, const PassObserver& observer) {
  exitOnBadAlloc([&] { findCenters(img, observer); });
}

void CircularVoting::findCenters(const Image& img, const PassObserver& observer) {
  setSize(img.nx(), img.ny());
  points_.clear();
  centerWeights_.clear();
  const std::int64_t margin = voteMargin(coneWidth, maxRadius);
  const bool hasPixels = !img.isNull() && npix_ != 0;
  if (std::max(nx_, ny_) + 2 * margin > kMaxSide) {
    if (hasPixels) {
      std::cerr << "In CircularVoting::compute\n"
                << "   Warning: image is too large, no centers\n";
    }
    acc_ = prevAcc_ = image<float>(0, 1, 1, 1, 1);
    const bool addressable = std::int64_t{nx_} * ny_ <= std::numeric_limits<std::int32_t>::max();
    votingImage_ = addressable ? image<float>(nx_, ny_, 1, 1, 1) : acc_;
    return;
  }

  margin_ = static_cast<int>(margin);
  points_.reserve(static_cast<std::size_t>(std::max(npix_, 0)) / 2);
  collectPoints(img);

  const int pad = 2 * margin_;
  setSize(nx_ + pad, ny_ + pad);
  WPoint2D::nx = ConePlane2D::nx = Cone2D::nx = nx_;
  WPoint2D::ny = ConePlane2D::ny = Cone2D::ny = ny_;
  runPasses(hasPixels ? observer : PassObserver());
  setSize(nx_ - pad, ny_ - pad);
  if (hasPixels) {
    extractCenters();
  } else {
    votingImage_ = image<float>(nx_, ny_, 1, 1, 1);
  }

  for (VPoint2D& p : points_) {
    p.x = fittedTo16(p.x - margin_);
    p.y = fittedTo16(p.y - margin_);
    p.cx = fittedTo16(p.cx - margin_);
    p.cy = fittedTo16(p.cy - margin_);
  }
}

image<float> CircularVoting::votesWithoutMargin() const {
  const int nx = acc_.nx() - 2 * margin_;
  const int ny = acc_.ny() - 2 * margin_;
  image<float> votes(nx, ny, 1, 1, 1);
  for (int y = 0; y < ny; ++y) {
    const float* row = acc_.pixels() + margin_ + std::ptrdiff_t{y + margin_} * acc_.nx();
    std::copy_n(row, nx, votes.pixels() + std::ptrdiff_t{y} * nx);
  }
  return votes;
}

// Makes a center of each region of votes above the threshold. Its position is the centroid, its
// weight the mean vote.
void CircularVoting::extractCenters() {
  votingImage_ = votesWithoutMargin();
  float* votes = votingImage_.pixels();
  float max = 0.0F;
  for (int i = 0; i < npix_; ++i) {
    if (votes[i] > max) max = votes[i];
  }

  const float threshold = absoluteValues ? centerThreshold : centerThreshold * max;
  image<unsigned char> mask(nx_, ny_, 1, 1, 1);
  for (int i = 0; i < npix_; ++i) mask.pixels()[i] = votes[i] > threshold ? 255 : 0;
  int n = 0;
  const image<short> labels = bip::regions(mask, n, 255, 1, NEIGHBORHOOD_4);
  const std::vector<RegionFeature> features = bip::regionFeatures(labels, n, votingImage_);

  std::fill_n(votes, npix_, 0.0F);
  for (const RegionFeature& f : features) {
    if (f.cx < 0 || f.cx >= nx_ || f.cy < 0 || f.cy >= ny_) continue;
    votingImage_.setPixel(f.cx, f.cy, f.mean);
    centers_.emplace_back(f.cx, f.cy);
    centerWeights_.push_back(f.mean);
  }
}

}  // namespace orva::voting
