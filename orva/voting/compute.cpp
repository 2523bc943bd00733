#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <iostream>
#include <limits>
#include <numeric>
#include <vector>

#include "orva/bip/bip.h"
#include "orva/image/bad_alloc.h"
#include "orva/image/uninitialized_image.h"
#include "orva/scalespace/scalespace.h"
#include "orva/util/cpu_path.h"
#include "orva/util/narrow.h"
#include "orva/util/parallel_for.h"
#include "orva/voting/circularvoting.h"
#include "orva/voting/find_centers.h"
#include "orva/voting/negligible.h"

namespace orva::voting {
namespace {

// Coordinates of voting points have 16 bits.
constexpr std::int64_t kMaxSide = std::numeric_limits<std::int16_t>::max();

// Estimated shares of the time up to the end of the points and of the votes.
constexpr double kPointsShare = 0.12;
constexpr double kVotesShare = 0.98;

struct Gradient {
  image<float> x;
  image<float> y;
  image<float> magnitude;
};

Gradient gradientOf(const Image& img, float sigma) {
  const auto derivative = [&](int ox, int oy, double begin, double end) {
    const Step step("gradient", begin, end);
    return scalespace::gaussian(img, sigma, ox, oy, 0);
  };
  Gradient g{derivative(1, 0, 0, 0.5), derivative(0, 1, 0.5, 1),
             uninitializedImage<float>(img.nx(), img.ny(), 1, 1, 1)};
  if (g.x.isNull()) return g;
  parallelPixels(g.magnitude.npix(), [&g](std::ptrdiff_t begin, std::ptrdiff_t end) {
    onWidestPath([=, x = g.x.pixels(), y = g.y.pixels(), m = g.magnitude.pixels()] {
      for (std::ptrdiff_t i = begin; i < end; ++i) m[i] = std::sqrt(x[i] * x[i] + y[i] * y[i]);
    });
  });
  return g;
}

// Sets magnitudes below the threshold to 0 and divides the others by the maximum unless absolute.
// Intended: the threshold applies to the undivided magnitudes in both cases.
void suppressWeak(image<float>& magnitude, float threshold, bool absolute) {
  const float max = magnitude.max();
  if (!(max > kNegligible)) return;
  const float divisor = absolute ? 1.0F : max;
  parallelPixels(magnitude.npix(), [&](std::ptrdiff_t begin, std::ptrdiff_t end) {
    onWidestPath([=, m = magnitude.pixels()] {
      for (std::ptrdiff_t i = begin; i < end; ++i) m[i] = m[i] < threshold ? 0.0F : m[i] / divisor;
    });
  });
}

// Sets magnitudes off the edges of the regions of negative Laplacian to 0.
void suppressNonEdges(image<float>& magnitude, const Image& img, float sigma) {
  const image<unsigned char> edges =
      bip::edge(scalespace::features(img, sigma, LAPLACIAN_NEGATIVE, 1.0F));
  parallelPixels(magnitude.npix(), [&](std::ptrdiff_t begin, std::ptrdiff_t end) {
    for (std::ptrdiff_t i = begin; i < end; ++i) {
      if (edges.pixels()[i] == 0) magnitude.pixels()[i] = 0.0F;
    }
  });
}

// Turns magnitudes into weights. Intended: Exponential leaves them as they are.
void applyWeighting(image<float>& magnitude, CircularVoting::WeightingMethod weighting,
                    float exponent) {
  if (weighting != CircularVoting::Power || !(std::abs(exponent - 1.0) > kNegligible)) return;
  parallelPixels(magnitude.npix(), [&](std::ptrdiff_t begin, std::ptrdiff_t end) {
    for (std::ptrdiff_t i = begin; i < end; ++i) {
      float& m = magnitude.pixels()[i];
      if (m > kNegligible) m = std::pow(m, exponent);
    }
  });
}

}  // namespace

void CircularVoting::setSize(int nx, int ny) {
  nx_ = nx;
  ny_ = ny;
  npix_ = static_cast<int>(static_cast<unsigned>(nx) * static_cast<unsigned>(ny));
}

void CircularVoting::collectPoints(const Image& img) {
  Gradient g = [&] {
    const Step step("gradient", 0, 0.7);
    return gradientOf(img, sigma);
  }();
  if (g.x.isNull()) return;  // no pixels, or a format without a float form
  const Step step("gradient", 0.7, 1);
  suppressWeak(g.magnitude, gradThreshold, absoluteValues);
  if (useEdges) suppressNonEdges(g.magnitude, img, sigma);
  applyWeighting(g.magnitude, weighting, weightParam);

  const float sign = regionType == Dark ? -1.0F : 1.0F;
  const auto pointAt = [&](int x, int y, std::ptrdiff_t i) {
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
    p.weight = g.magnitude.pixels()[i];
    return p;
  };
  const Parts rows = rowParts(nx_, ny_);
  const float* weights = g.magnitude.pixels();
  std::vector<std::ptrdiff_t> places(rows.count());  // of the first point of each part
  parallelFor(rows.count(), [&](std::size_t k) {
    places[k] = std::count_if(weights + rows.begin(k) * nx_, weights + rows.end(k) * nx_,
                              [](float w) { return w > kNegligible; });
  });
  const std::ptrdiff_t all = std::accumulate(places.begin(), places.end(), std::ptrdiff_t{0});
  points_.resize(static_cast<std::size_t>(all));
  std::exclusive_scan(places.begin(), places.end(), places.begin(), std::ptrdiff_t{0});
  parallelFor(rows.count(), [&](std::size_t k) {
    VPoint2D* p = points_.data() + places[k];
    for (std::ptrdiff_t y = rows.begin(k); y < rows.end(k); ++y) {
      for (int x = 0; x < nx_; ++x) {
        const std::ptrdiff_t i = y * nx_ + x;
        if (weights[i] > kNegligible) *p++ = pointAt(x, static_cast<int>(y), i);
      }
    }
  });
}

void CircularVoting::compute(const Image& img) { compute(img, historyWriter()); }

void CircularVoting::compute(const Image& img, const PassObserver& observer) {
  exitOnBadAlloc([&] { findCenters(img, observer); });
}

// The results change at the end only: what is thrown before leaves them as they were.
void CircularVoting::findCenters(const Image& img, const PassObserver& observer) {
  setSize(img.nx(), img.ny());
  points_.clear();
  const std::int64_t margin = voteMargin(coneWidth, maxRadius);
  const bool hasPixels = !img.isNull() && npix_ != 0;
  if (std::max(nx_, ny_) + 2 * margin > kMaxSide) {
    if (hasPixels) {
      std::cerr << "In CircularVoting::compute\n"
                << "   Warning: image is too large, no centers\n";
    }
    centerWeights_.clear();
    acc_ = prevAcc_ = image<float>(0, 1, 1, 1, 1);
    const bool addressable = std::int64_t{nx_} * ny_ <= std::numeric_limits<std::int32_t>::max();
    votingImage_ = addressable ? image<float>(nx_, ny_, 1, 1, 1) : acc_;
    return;
  }

  margin_ = static_cast<int>(margin);
  {
    const Step step("gradient", 0, kPointsShare);
    collectPoints(img);
  }

  const int pad = 2 * margin_;
  setSize(nx_ + pad, ny_ + pad);
  WPoint2D::nx = ConePlane2D::nx = Cone2D::nx = nx_;
  WPoint2D::ny = ConePlane2D::ny = Cone2D::ny = ny_;
  {
    const Step step("votes", kPointsShare, kVotesShare);
    runPasses(hasPixels ? observer : PassObserver());
  }
  const Step step("centers", kVotesShare, 1);
  setSize(nx_ - pad, ny_ - pad);
  if (hasPixels) {
    extractCenters();
  } else {
    centerWeights_.clear();
    votingImage_ = image<float>(nx_, ny_, 1, 1, 1);
  }

  parallelPixels(
      static_cast<std::ptrdiff_t>(points_.size()),
      [this](std::ptrdiff_t begin, std::ptrdiff_t end) {
        for (VPoint2D* p = points_.data() + begin; p != points_.data() + end; ++p) {
          p->x = fittedTo16(p->x - margin_);
          p->y = fittedTo16(p->y - margin_);
          p->cx = fittedTo16(p->cx - margin_);
          p->cy = fittedTo16(p->cy - margin_);
        }
      },
      Interruption::Off);
}

image<float> CircularVoting::votesWithoutMargin() const {
  const int nx = acc_.nx() - 2 * margin_;
  const int ny = acc_.ny() - 2 * margin_;
  image<float> votes = uninitializedImage<float>(nx, ny, 1, 1, 1);
  parallelParts(rowParts(nx, ny), [&](std::ptrdiff_t begin, std::ptrdiff_t end) {
    for (std::ptrdiff_t y = begin; y < end; ++y) {
      const float* row = acc_.pixels() + margin_ + (y + margin_) * acc_.nx();
      std::copy_n(row, nx, votes.pixels() + y * nx);
    }
  });
  return votes;
}

// Makes a center of each region of votes above the threshold. Its position is the centroid, its
// weight the mean vote.
void CircularVoting::extractCenters() {
  image<float> voting = votesWithoutMargin();
  float* votes = voting.pixels();
  const Parts rows = rowParts(nx_, ny_);
  std::vector<float> maxima(rows.count());
  parallelFor(rows.count(), [&](std::size_t k) {
    for (std::ptrdiff_t i = rows.begin(k) * nx_; i < rows.end(k) * nx_; ++i) {
      if (votes[i] > maxima[k]) maxima[k] = votes[i];
    }
  });
  const float max = *std::max_element(maxima.begin(), maxima.end());

  const float threshold = absoluteValues ? centerThreshold : centerThreshold * max;
  image<unsigned char> mask = uninitializedImage<unsigned char>(nx_, ny_, 1, 1, 1);
  parallelPixels(npix_, [&](std::ptrdiff_t begin, std::ptrdiff_t end) {
    onWidestPath([=, to = mask.pixels()] {
      for (std::ptrdiff_t i = begin; i < end; ++i) to[i] = votes[i] > threshold ? 255 : 0;
    });
  });
  int n = 0;
  const image<short> labels = bip::regions(mask, n, 255, 1, NEIGHBORHOOD_4);
  const std::vector<RegionFeature> features = bip::regionFeatures(labels, n, voting);

  std::fill_n(votes, npix_, 0.0F);
  centerWeights_.clear();
  for (const RegionFeature& f : features) {
    if (f.cx < 0 || f.cx >= nx_ || f.cy < 0 || f.cy >= ny_) continue;
    voting.setPixel(f.cx, f.cy, f.mean);
    centers_.emplace_back(f.cx, f.cy);
    centerWeights_.push_back(f.mean);
  }
  votingImage_ = voting;
}

}  // namespace orva::voting
