#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <numeric>
#include <span>
#include <utility>
#include <vector>

#include "orva/image_io/image_io.h"
#include "orva/util/global.h"
#include "orva/voting/circularvoting.h"
#include "orva/voting/cone_table.h"
#include "orva/voting/negligible.h"
#include "orva/voting/vote_blocks.h"
#include "orva/voting/walk.h"

namespace orva::voting {
namespace {

// The length of a vector of whole numbers, rounded once.
float lengthOf(double x, double y) { return std::sqrt(static_cast<float>(x * x + y * y)); }

// One pass: every point turns to the strongest votes in its cone and spreads its weight over the
// cone in that direction, in proportion to the votes before.
//
// Looking changes no votes, so points look in any order: in groups of one direction, several at a
// time. They vote in their own order, which the sums in the accumulator depend on.
template <class AngleIndex>
class Pass {
 public:
  Pass(ConeTable& cones, VoteBlocks& blocks, AngleIndex angleIndex, const float* prev, float* acc)
      : cones_(cones), blocks_(blocks), angleIndex_(angleIndex), prev_(prev), acc_(acc) {}

  void run(std::vector<VPoint2D>& points) {
    // A band of neighbouring points at a time, whose votes stay in the cache.
    constexpr std::size_t kBand = 8192;
    for (std::size_t first = 0; first < points.size(); first += kBand) {
      band_ = std::span(points).subspan(first, std::min(kBand, points.size() - first));
      turnAndSum();
      blocks_.castShares(band_, sums_, prev_, acc_);
    }
  }

 private:
  void turnAndSum() {
    sums_.assign(band_.size(), 0.0F);
    turned_.clear();
    order_.resize(band_.size());
    std::iota(order_.begin(), order_.end(), 0);
    forGroups([this](int bin, const int* group, std::size_t count, const float* const* at) {
      const Views views = look(at, cones_.offsets(bin), cones_.size());
      for (std::size_t j = 0; j < count; ++j) {
        VPoint2D& p = band_[static_cast<std::size_t>(group[j])];
        turn(p, views.strongest[j], views.most[j]);
        sums_[static_cast<std::size_t>(group[j])] = views.sums[j];
        if (p.angle != bin) turned_.push_back(group[j]);
      }
    });
    std::swap(order_, turned_);
    forGroups([this](int bin, const int* group, std::size_t count, const float* const* at) {
      float sums[kLanes];
      sumVotes(at, cones_.offsets(bin), cones_.size(), sums);
      for (std::size_t j = 0; j < count; ++j) sums_[static_cast<std::size_t>(group[j])] = sums[j];
    });
  }

  // Calls `f` for groups of up to kLanes points of order_ that look in one direction; a smaller
  // group is filled up with its last point.
  template <class F>
  void forGroups(const F& f) {
    sortByAngle();
    const float* at[kLanes];
    for (std::size_t i = 0; i < sorted_.size();) {
      const int bin = band_[static_cast<std::size_t>(sorted_[i])].angle;
      std::size_t count = 0;
      while (count < kLanes && i + count < sorted_.size()) {
        const VPoint2D& p = band_[static_cast<std::size_t>(sorted_[i + count])];
        if (p.angle != bin) break;
        at[count++] = prev_ + p.offset;
      }
      std::fill(at + count, at + kLanes, at[count - 1]);
      f(bin, sorted_.data() + i, count, at);
      i += count;
    }
  }

  // The points of order_ that have a cone, by angle.
  void sortByAngle() {
    ends_.assign(static_cast<std::size_t>(cones_.bins()) + 1, 0);
    const auto angleOf = [this](int i) { return band_[static_cast<std::size_t>(i)].angle; };
    for (const int i : order_) {
      if (cones_.has(angleOf(i))) ++ends_[static_cast<std::size_t>(angleOf(i)) + 1];
    }
    std::partial_sum(ends_.begin(), ends_.end(), ends_.begin());
    sorted_.resize(static_cast<std::size_t>(ends_.back()));
    for (const int i : order_) {
      if (!cones_.has(angleOf(i))) continue;
      sorted_[static_cast<std::size_t>(ends_[static_cast<std::size_t>(angleOf(i))]++)] = i;
    }
  }

  void turn(VPoint2D& p, int strongest, float most) {
    if (strongest < 0 || most < kNegligible) return;
    const ConeTable::Cell cell = cones_.cell(p.angle, strongest);
    std::int16_t& direction = cones_.direction(p.angle, strongest);
    if (direction < 0) {
      const float length = lengthOf(cell.x, cell.y);
      if (!(length > kNegligible)) return;
      direction = static_cast<std::int16_t>(
          angleIndex_(static_cast<float>(cell.x) / length, static_cast<float>(cell.y) / length));
    }
    p.cx = static_cast<std::int16_t>(p.x + cell.x);
    p.cy = static_cast<std::int16_t>(p.y + cell.y);
    p.angle = direction;
  }

  ConeTable& cones_;
  VoteBlocks& blocks_;
  AngleIndex angleIndex_;
  const float* prev_;
  float* acc_;
  std::span<VPoint2D> band_;
  std::vector<float> sums_;
  std::vector<int> order_;   // points of the band
  std::vector<int> turned_;  // those whose direction changed
  std::vector<int> sorted_;
  std::vector<int> ends_;  // of the angles in sorted_
};

}  // namespace

void CircularVoting::vote() {
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

  for (int width = coneWidth, pass = 0; pass == 0 || width >= 0; ++pass) {
    ConeTable cones = coneTable(width);
    VoteBlocks blocks(cones, acc_.npix());
    if (pass == 0) blocks.castWeights(points_, acc_.pixels());
    if (width < 0) break;
    if (saveHistory_) writeHistory(width);
    std::swap(acc_, prevAcc_);
    std::fill_n(acc_.pixels(), acc_.npix(), 0.0F);
    Pass(cones, blocks, angleIndex, prevAcc_.pixels(), acc_.pixels()).run(points_);
    if (width == 0) break;
    width = nextConeRadius(maxRadius, width);
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
  float most = 0.0F;
  for (const ConePlane2D& plane : cones_[static_cast<std::size_t>(p.angle)].planes) {
    for (const WPoint2D& c : plane.points) {
      if (acc[c.offset] > most) {
        most = acc[c.offset];
        best = &c;
      }
    }
  }
  if (best == nullptr || most < kNegligible) return;
  const float length = lengthOf(best->x, best->y);
  if (!(length > kNegligible)) return;
  p.cx = static_cast<std::int16_t>(p.x + best->x);
  p.cy = static_cast<std::int16_t>(p.y + best->y);
  p.angle = static_cast<std::int16_t>(computeAngleIndex(static_cast<float>(best->x) / length,
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
  p.angle = static_cast<std::int16_t>(
      computeAngleIndex(static_cast<float>(x) / length, static_cast<float>(y) / length));
}

void CircularVoting::writeHistory(int width) const {
  const std::unique_ptr<Image> votes(
      Roi::getSubImage(acc_, margin_, margin_, nx_ - margin_ - 1, ny_ - margin_ - 1));
  if (!votes) return;
  const std::string label = std::string(width <= 9 ? "0" : "") + toString(width);
  image_io::writeICS(prefix_ + "vote_" + label, *votes);
}

}  // namespace orva::voting
