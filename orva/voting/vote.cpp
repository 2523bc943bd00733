#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <span>
#include <utility>
#include <vector>

#include "orva/image_io/image_io.h"
#include "orva/util/global.h"
#include "orva/util/narrow.h"
#include "orva/voting/circularvoting.h"
#include "orva/voting/cone_table.h"
#include "orva/voting/gather.h"
#include "orva/voting/negligible.h"
#include "orva/voting/vote_blocks.h"

namespace orva::voting {
namespace {

// The length of an integer vector, through doubles, as the squares may overflow an int.
float lengthOf(double x, double y) { return std::sqrt(static_cast<float>(x * x + y * y)); }

// One pass: every point turns to the strongest cell of its cone, then spreads its weight over the
// cone in the new direction, in proportion to the votes of the pass before.
template <class AngleIndex>
class Pass {
 public:
  Pass(ConeTable& cones, VoteBlocks& blocks, AngleIndex angleIndex, const float* prev, float* acc)
      : cones_(cones), blocks_(blocks), angleIndex_(angleIndex), prev_(prev), acc_(acc) {}

  // Turning reads the previous votes only, so the points of a batch turn before any of them votes.
  // All points vote in their order, on which the sums in the accumulator depend.
  void run(std::span<VPoint2D> points) {
    for (std::size_t first = 0; first < points.size(); first += kPointsPerBatch) {
      const auto batch = points.subspan(first, std::min(kPointsPerBatch, points.size() - first));
      turnAll(batch);
      blocks_.castShares(batch, stats_, prev_, acc_);
    }
  }

 private:
  // The previous votes that so many neighbouring points gather stay in the cache until they vote.
  static constexpr std::size_t kPointsPerBatch = 256;

  // Turns the points and leaves in stats_ the sums of the votes under their turned cones.
  void turnAll(std::span<VPoint2D> points) {
    placed_.clear();
    for (const VPoint2D& p : points) placed_.push_back(place(p));
    stats_.resize(points.size());
    gatherStats(placed_, cones_.size(), stats_.data());

    turned_.clear();
    placed_.clear();
    for (std::size_t i = 0; i < points.size(); ++i) {
      VPoint2D& p = points[i];
      const int before = p.angle;
      if (!cones_.has(before)) continue;
      turn(p, stats_[i]);
      if (p.angle == before) continue;
      turned_.push_back(i);
      placed_.push_back(place(p));
    }
    sums_.resize(turned_.size());
    gatherSums(placed_, cones_.size(), sums_.data());
    for (std::size_t k = 0; k < turned_.size(); ++k) stats_[turned_[k]].sum = sums_[k];
  }

  // The statistics of a point without a cone are not used; any cone serves.
  PlacedCone place(const VPoint2D& p) const {
    return {prev_ + p.offset, cones_.offsets(cones_.has(p.angle) ? p.angle : 0)};
  }

  void turn(VPoint2D& p, const ConeStats& stats) {
    if (stats.argmax < 0 || stats.max < kNegligible) return;
    const ConeTable::Cell cell = cones_.cell(p.angle, stats.argmax);
    std::int16_t& direction = cones_.direction(p.angle, stats.argmax);
    if (direction < 0) {
      const float length = lengthOf(cell.x, cell.y);
      if (!(length > kNegligible)) return;
      direction = fittedTo16(
          angleIndex_(static_cast<float>(cell.x) / length, static_cast<float>(cell.y) / length));
    }
    p.cx = fittedTo16(p.x + cell.x);
    p.cy = fittedTo16(p.y + cell.y);
    p.angle = direction;
  }

  ConeTable& cones_;
  VoteBlocks& blocks_;
  AngleIndex angleIndex_;
  const float* prev_;
  float* acc_;
  std::vector<ConeStats> stats_;     // one per point of the batch
  std::vector<std::size_t> turned_;  // indices of its points that have turned
  std::vector<float> sums_;          // one per turned point
  std::vector<PlacedCone> placed_;
};

}  // namespace

void CircularVoting::vote() { runPasses(historyWriter()); }

void CircularVoting::runPasses(const PassObserver& observer) {
  acc_ = image<float>(nx_, ny_, 1, 1, 1);
  prevAcc_ = image<float>(nx_, ny_, 1, 1, 1);
  for (VPoint2D& p : points_) p.offset = p.x + p.y * acc_.nx();
  const auto coneTable = [this](int width) {
    return ConeTable(prototypeCone(minRadius, maxRadius, width, regionType == Both), angleBins_,
                     angleStep_, WPoint2D::nx);
  };
  const auto angleIndex = [this](float cosine, float sine) {
    return computeAngleIndex(cosine, sine);
  };

  bool first = true;
  for (int width = coneWidth;; width = nextConeRadius(maxRadius, width)) {
    ConeTable cones = coneTable(width);
    VoteBlocks blocks(cones, acc_.npix());
    if (first) blocks.castWeights(points_, acc_.pixels());
    first = false;
    if (width < 0) break;
    if (observer && !acc_.isNull()) observer(width, votesWithoutMargin());
    std::swap(acc_, prevAcc_);
    std::fill_n(acc_.pixels(), acc_.npix(), 0.0F);
    Pass(cones, blocks, angleIndex, prevAcc_.pixels(), acc_.pixels()).run(points_);
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
