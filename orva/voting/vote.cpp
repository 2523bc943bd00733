#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>
#include <utility>
#include <vector>

#include "orva/image/uninitialized_image.h"
#include "orva/image_io/image_io.h"
#include "orva/util/global.h"
#include "orva/util/narrow.h"
#include "orva/util/parallel_for.h"
#include "orva/voting/circularvoting.h"
#include "orva/voting/cone_table.h"
#include "orva/voting/gather.h"
#include "orva/voting/negligible.h"
#include "orva/voting/vote_blocks.h"

namespace orva::voting {
namespace {

// The length of an integer vector, through doubles, as the squares may overflow an int.
float lengthOf(double x, double y) { return std::sqrt(static_cast<float>(x * x + y * y)); }

// An estimate of the share of all passes that come before that of a cone's width. The widths are
// about a geometric series, and so is the time of their passes, beside what each takes for a cone
// of width 0.
double shareBefore(double width, int widest) {
  const auto timeFrom = [](double w) { return w + 2 + std::log1p(std::max(w, 0.0)); };
  return 1 - (timeFrom(width) - timeFrom(0)) / (timeFrom(widest) - timeFrom(0) + 1);
}

// Turns points to the strongest cells of their cones. The working memory of one thread.
template <class AngleIndex>
class Turner {
 public:
  Turner(const ConeTable& cones, AngleIndex angleIndex, const float* prev)
      : cones_(cones), angleIndex_(angleIndex), prev_(prev) {}

  // Turns the points and sets sums[0], sums[1], ... to the sums of the votes under their turned
  // cones.
  void turnAll(std::span<VPoint2D> points, float* sums) {
    placed_.clear();
    for (const VPoint2D& p : points) placed_.push_back(place(p));
    stats_.resize(points.size());
    gatherStats(placed_, cones_.size(), stats_.data());

    turned_.clear();
    placed_.clear();
    for (std::size_t i = 0; i < points.size(); ++i) {
      VPoint2D& p = points[i];
      sums[i] = stats_[i].sum;
      const int before = p.angle;
      if (!cones_.has(before)) continue;
      turn(p, stats_[i]);
      if (p.angle == before) continue;
      turned_.push_back(i);
      placed_.push_back(place(p));
    }
    turnedSums_.resize(turned_.size());
    gatherSums(placed_, cones_.size(), turnedSums_.data());
    for (std::size_t k = 0; k < turned_.size(); ++k) sums[turned_[k]] = turnedSums_[k];
  }

 private:
  // The statistics of a point without a cone are not used; any cone serves.
  PlacedCone place(const VPoint2D& p) const {
    return {prev_ + p.offset, cones_.offsets(cones_.has(p.angle) ? p.angle : 0)};
  }

  void turn(VPoint2D& p, const ConeStats& stats) {
    if (stats.argmax < 0 || stats.max < kNegligible) return;
    const ConeTable::Cell cell = cones_.cell(p.angle, stats.argmax);
    std::int16_t direction = cones_.direction(p.angle, stats.argmax);
    if (direction < 0) {
      const float length = lengthOf(cell.x, cell.y);
      if (!(length > kNegligible)) return;
      direction = fittedTo16(
          angleIndex_(static_cast<float>(cell.x) / length, static_cast<float>(cell.y) / length));
      cones_.setDirection(p.angle, stats.argmax, direction);
    }
    p.cx = fittedTo16(p.x + cell.x);
    p.cy = fittedTo16(p.y + cell.y);
    p.angle = direction;
  }

  const ConeTable& cones_;
  AngleIndex angleIndex_;
  const float* prev_;
  std::vector<ConeStats> stats_;     // one per point of the batch
  std::vector<std::size_t> turned_;  // indices of its points that have turned
  std::vector<float> turnedSums_;    // one per turned point
  std::vector<PlacedCone> placed_;
};

// Calls visit(batch, first) for the points in batches, with the index of the first point of each.
// What so many neighbouring points gather stays in the cache until they vote, and a batch of points
// with very large cones is done within milliseconds.
template <class Visit>
void forEachBatch(std::span<VPoint2D> points, std::size_t cellsPerCone, const Visit& visit) {
  constexpr std::size_t kPoints = 256;
  constexpr std::size_t kCells = std::size_t{1} << 20U;
  const std::size_t size = std::clamp(kCells / (cellsPerCone + 1), std::size_t{4}, kPoints);
  for (std::size_t first = 0; first < points.size(); first += size) {
    visit(points.subspan(first, std::min(size, points.size() - first)), first);
  }
}

std::ptrdiff_t signedSize(std::span<const VPoint2D> points) {
  return static_cast<std::ptrdiff_t>(points.size());
}

// The votes of the points of an image under cones of one width.
class Votes {
 public:
  // Accumulators have `pixels` pixels in rows of `nx`, and need not be initialized.
  // `inRasterOrder` states whether the points are.
  Votes(const ConeTable& cones, std::span<VPoint2D> points, bool inRasterOrder, int nx, int pixels)
      : cones_(cones),
        blocks_(cones, pixels),
        points_(points),
        pixels_(pixels),
        bands_(pixels, bandPixels(cones.extent(), nx), kAlignment),
        inBands_(hasRunner() && bands_.count() > 1),
        inRasterOrder_(inRasterOrder) {}

  // Sets `acc` to the votes before the first pass: every point adds its weight to all cells of its
  // cone.
  void castWeights(float* acc) {
    if (inBands_) {
      parallelParts(pointParts(), [&](std::ptrdiff_t begin, std::ptrdiff_t end) {
        blocks_.note(part(begin, end));
      });
      return castInBands(
          acc, [&](const Band& band) { blocks_.castWeights(points_, inRasterOrder_, band, acc); });
    }
    std::fill_n(acc, pixels_, 0.0F);
    forEachBatch(points_, cones_.size(), [&](std::span<VPoint2D> batch, std::size_t first) {
      checkpoint(static_cast<std::ptrdiff_t>(first), signedSize(points_));
      blocks_.castWeights(batch, acc);
    });
  }

  // Sets `acc` to the votes of one pass: every point turns to the strongest cell of its
  // cone in `prev`, the votes of the pass before, then spreads its weight over the cone in the new
  // direction, in proportion to those votes.
  //
  // Turning reads the previous votes only, so points may turn before or after others vote. All
  // points vote in their order, on which the sums in the accumulator depend.
  template <class AngleIndex>
  void castShares(AngleIndex angleIndex, const float* prev, float* acc) {
    if (inBands_) {
      std::vector<float> sums(points_.size());
      turnInParts(angleIndex, prev, sums.data());
      const Step step("votes", 0.5, 1);
      return castInBands(acc, [&](const Band& band) {
        blocks_.castShares(points_, sums.data(), prev, inRasterOrder_, band, acc);
      });
    }
    std::fill_n(acc, pixels_, 0.0F);
    Turner turner(cones_, angleIndex, prev);
    std::vector<float> sums;
    forEachBatch(points_, cones_.size(), [&](std::span<VPoint2D> batch, std::size_t first) {
      checkpoint(static_cast<std::ptrdiff_t>(first), signedSize(points_));
      sums.resize(batch.size());
      turner.turnAll(batch, sums.data());
      blocks_.castShares(batch, sums.data(), prev, acc);
    });
  }

 private:
  static constexpr std::ptrdiff_t kAlignment = 16;  // of bands, in pixels: a cache line

  // Bands of three times the height of a cone: a point that votes in two of them takes longer.
  static std::ptrdiff_t bandPixels(const ConeTable::Extent& extent, int nx) {
    constexpr std::ptrdiff_t kMinRows = 32;
    return std::max(3 * (std::ptrdiff_t{extent.max} - extent.min), kMinRows * nx);
  }

  std::span<VPoint2D> part(std::ptrdiff_t begin, std::ptrdiff_t end) const {
    return points_.subspan(static_cast<std::size_t>(begin), static_cast<std::size_t>(end - begin));
  }

  Parts pointParts() const {
    constexpr std::ptrdiff_t kPoints = 16384;
    return {signedSize(points_), kPoints};
  }

  template <class AngleIndex>
  void turnInParts(AngleIndex angleIndex, const float* prev, float* sums) {
    const Step step("votes", 0, 0.5);
    Workspaces<Turner<AngleIndex>> workspaces;
    parallelParts(pointParts(), [&](std::ptrdiff_t begin, std::ptrdiff_t end) {
      const auto turner = workspaces.take(
          [&] { return std::make_unique<Turner<AngleIndex>>(cones_, angleIndex, prev); });
      const std::span<VPoint2D> points = part(begin, end);
      forEachBatch(points, cones_.size(), [&](std::span<VPoint2D> batch, std::size_t first) {
        checkpoint();
        turner->turnAll(batch, sums + begin + static_cast<std::ptrdiff_t>(first));
      });
      blocks_.note(points);
    });
  }

  template <class Cast>
  void castInBands(float* acc, const Cast& cast) {
    blocks_.buildNoted();
    parallelParts(bands_, [&](std::ptrdiff_t begin, std::ptrdiff_t end) {
      std::fill(acc + begin, acc + end, 0.0F);
      cast(Band{begin, end});
    });
  }

  const ConeTable& cones_;
  VoteBlocks blocks_;
  std::span<VPoint2D> points_;
  int pixels_;
  Parts bands_;
  bool inBands_;
  bool inRasterOrder_;
};

}  // namespace

void CircularVoting::vote() { runPasses(historyWriter()); }

void CircularVoting::runPasses(const PassObserver& observer) {
  acc_ = uninitializedImage<float>(nx_, ny_, 1, 1, 1);
  prevAcc_ = uninitializedImage<float>(nx_, ny_, 1, 1, 1);
  parallelPixels(signedSize(points_), [this](std::ptrdiff_t begin, std::ptrdiff_t end) {
    for (VPoint2D* p = points_.data() + begin; p != points_.data() + end; ++p) {
      p->offset = p->x + p->y * acc_.nx();
    }
  });
  const auto isBefore = [](const VPoint2D& p, const VPoint2D& q) { return p.offset < q.offset; };
  const bool inRasterOrder =
      hasRunner() && std::is_sorted(points_.begin(), points_.end(), isBefore);
  const auto coneTable = [this](int width) {
    return ConeTable(prototypeCone(minRadius, maxRadius, width, regionType == Both), angleBins_,
                     angleStep_, WPoint2D::nx);
  };
  const auto angleIndex = [this](float cosine, float sine) {
    return computeAngleIndex(cosine, sine);
  };
  bool isFirst = true;
  for (int width = coneWidth;; width = nextConeRadius(maxRadius, width)) {
    const Step step("votes", shareBefore(width, coneWidth), shareBefore(0.7 * width, coneWidth));
    const ConeTable cones = coneTable(width);
    Votes votes(cones, points_, inRasterOrder, acc_.nx(), acc_.npix());
    if (isFirst) votes.castWeights(acc_.pixels());
    isFirst = false;
    if (width < 0) {
      std::fill_n(prevAcc_.pixels(), prevAcc_.npix(), 0.0F);
      break;
    }
    if (observer && !acc_.isNull()) observer(width, votesWithoutMargin());
    std::swap(acc_, prevAcc_);
    votes.castShares(angleIndex, prevAcc_.pixels(), acc_.pixels());
    if (width == 0) break;
  }
  computeCones(minRadius, maxRadius, 0);
}

bool CircularVoting::hasCone(const VPoint2D& p) const {
  return p.angle >= 0 && static_cast<std::size_t>(p.angle) < cones_.size();
}

void CircularVoting::getMaxDirection(VPoint2D& p) {
  if (!hasCone(p)) return;
  const float* acc = acc_.pixels() + p.offset;
  const WPoint2D* best = nullptr;
  float max = 0.0F;
  for (const ConePlane2D& plane : cones_[static_cast<std::size_t>(p.angle)].planes) {
    for (const WPoint2D& c : plane.points) {
      if (acc[c.offset] > max) {
        max = acc[c.offset];
        best = &c;
      }
    }
  }
  if (best == nullptr || max < kNegligible) return;
  const float length = lengthOf(best->x, best->y);
  if (!(length > kNegligible)) return;
  // A caller's own cones may reach past 16 bits.
  p.cx = wrapTo16(std::int64_t{p.x} + best->x);
  p.cy = wrapTo16(std::int64_t{p.y} + best->y);
  p.angle = fittedTo16(computeAngleIndex(static_cast<float>(best->x) / length,
                                         static_cast<float>(best->y) / length));
}

void CircularVoting::getMeanDirection(VPoint2D& p) {
  if (!hasCone(p)) return;
  const float* acc = acc_.pixels() + p.offset;
  float sumX = 0.0F;
  float sumY = 0.0F;
  int cells = 0;
  for (const ConePlane2D& plane : cones_[static_cast<std::size_t>(p.angle)].planes) {
    for (const WPoint2D& c : plane.points) {
      const float v = acc[c.offset];
      sumX += static_cast<float>(c.x) * v;
      sumY += static_cast<float>(c.y) * v;
      ++cells;
    }
  }
  if (cells < 1) return;
  const auto n = static_cast<float>(cells);
  const int x = round_double(sumX / n);
  const int y = round_double(sumY / n);
  const float length = lengthOf(x, y);
  if (!(length > kNegligible)) return;
  p.angle =
      fittedTo16(computeAngleIndex(static_cast<float>(x) / length, static_cast<float>(y) / length));
}

CircularVoting::PassObserver CircularVoting::historyWriter() const {
  if (!saveHistory_) return {};
  return [prefix = prefix_](int width, const image<float>& votes) {
    const std::string label = std::string(width <= 9 ? "0" : "") + toString(width);
    image_io::writeICS(prefix + "vote_" + label, votes);
  };
}

}  // namespace orva::voting
