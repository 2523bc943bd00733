/// @file
/// Iterative circular voting: finds the centres of round, blob-like objects.
///
/// Every pixel of strong gradient casts votes in a cone along its gradient. Pass by pass the cones
/// turn towards the strongest votes and narrow, until the votes of one object gather at its centre.
///
/// @code
/// #include "orva/voting/circularvoting.h"
/// using orva::voting::CircularVoting;
/// CircularVoting voting;
/// voting.setParams(CircularVoting::Bright, 1, 20, 10, 2.0f, 0.3f, 3.0f,
///                  CircularVoting::Power, 0.5f, false, false);
/// voting.compute(img);
/// for (const orva::Point& p : voting.centers()) use(p.x, p.y);
/// @endcode
///
/// B. Parvin et al., Iterative voting for inference of structural saliency and characterization of
/// subcellular events, IEEE Transactions on Image Processing 16(3), 2007.
#ifndef ORVA_VOTING_CIRCULARVOTING_H
#define ORVA_VOTING_CIRCULARVOTING_H

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include "orva/image/image.h"
#include "orva/image/points.h"
#include "orva/util/export.h"

/// Iterative circular voting: cones, points and the engine.
namespace orva::voting {

/// One cell of a cone, relative to the voting point at its apex.
///
/// The widths and heights nx and ny of the three cone types are set by CircularVoting::compute() to
/// those of the accumulator, before cones are built; each thread has its own set.
struct ORVA_EXPORT WPoint2D {
  int x = 0;            ///< column offset
  int y = 0;            ///< row offset
  int offset = 0;       ///< linear offset in the accumulator, y * nx + x
  float weight = 0.0F;  ///< weight of the plain vote

  /// The apex, of weight 0.
  WPoint2D() = default;
  /// A cell of the given offsets and weight.
  WPoint2D(int cellX, int cellY, int cellOffset, float cellWeight)
      : x(cellX), y(cellY), offset(cellOffset), weight(cellWeight) {}

  static constinit thread_local int nx;  ///< width of the accumulator
  static constinit thread_local int ny;  ///< height of the accumulator; not read
};

/// One voting pixel.
struct VPoint2D {
  std::int16_t x = 0;      ///< column
  std::int16_t y = 0;      ///< row
  std::int16_t cx = 0;     ///< column of the cell that the cone last pointed to
  std::int16_t cy = 0;     ///< row of that cell
  std::int16_t angle = 0;  ///< direction, as an angle bin
  int offset = 0;          ///< linear index in the accumulator
  float weight = 0.0F;     ///< strength of the vote
};

/// The cells of a cone at one rounded distance from the apex.
struct ORVA_EXPORT ConePlane2D {
  std::vector<WPoint2D> points;  ///< in the order of their votes

  /// No cells.
  ConePlane2D() = default;
  /// @p n copies of @p p; none for a negative @p n.
  ConePlane2D(int n, const WPoint2D& p);

  /// Computes every cell's offset for the width WPoint2D::nx.
  void setPos();

  static constinit thread_local int nx;  ///< width of the accumulator; not read
  static constinit thread_local int ny;  ///< height of the accumulator; not read
};

/// A fan of cells that opens from the voting point along one direction.
struct ORVA_EXPORT Cone2D {
  std::vector<ConePlane2D> planes;  ///< one a distance, nearest first
  float dx = 1.0F;                  ///< direction, x component
  float dy = 0.0F;                  ///< direction, y component

  /// Stores the direction as it is.
  void setDirection(float x, float y);
  /// Computes the offsets of all cells.
  void init();

  /// @name Votes
  /// @p acc and @p prev point at the voting point's own cell in accumulators that are wide enough
  /// for every cell of the cone; there is no bounds test.
  /// @{

  /// Adds the point's weight times the cell's weight to every cell.
  void vote(float* acc, const VPoint2D& p) const;
  /// Spreads the point's weight over the cone in proportion to the previous votes @p prev. Casts
  /// nothing when these sum to less than 0.001. The cells' own weights play no part; this is
  /// intended.
  void vote(float* acc, float* prev, const VPoint2D& p) const;
  /// @}

  static constinit thread_local int nx;  ///< width of the accumulator; not read
  static constinit thread_local int ny;  ///< height of the accumulator; not read
};

/// The voting engine: set its parameters, compute an image, read the centres.
class ORVA_EXPORT CircularVoting {
 public:
  /// Which objects are looked for.
  enum RegionType : int {
    Bright = 0,  ///< bright objects: cones open along the gradient
    Dark = 1,    ///< dark objects: gradients are negated
    Both = 2     ///< two-sided cones, along the gradient and against it
  };

  /// How a point's gradient magnitude becomes its weight.
  enum WeightingMethod : int {
    Power = 0,       ///< the magnitude raised to weightParam
    Exponential = 1  ///< leaves the magnitude as it is; this is intended
  };

  CircularVoting();
  virtual ~CircularVoting();
  /// Shares the pixels of its images with the copy, until either computes again.
  CircularVoting(const CircularVoting&) = default;
  /// @copydoc CircularVoting(const CircularVoting&)
  CircularVoting& operator=(const CircularVoting&) = default;

  /// Sets everything that compute() needs; call it first.
  /// @param type which objects are looked for
  /// @param nearest nearest distance of a vote, minRadius, in pixels; values below 1 count as 1
  /// @param farthest farthest distance of a vote, maxRadius, in pixels; raised to minRadius
  /// @param width half-width of the widest cone at maxRadius, coneWidth, in pixels; a negative one
  ///        counts as 0
  /// @param gradient gradient magnitudes below it cast no vote, in grey levels a pixel
  /// @param threshold votes above it make a centre: a number of votes when @p absolute, else a
  ///        share of the strongest vote, held in 0.05 .. 1 (a NaN becomes 1)
  /// @param scale sigma of the gradient in pixels; negative values and NaN become 0
  /// @param method how magnitudes become weights
  /// @param param the exponent of Power
  /// @param edges keep only points on the edges of the bright side (LAPLACIAN_NEGATIVE)
  /// @param absolute take the centre threshold as it is, and do not divide magnitudes by the
  ///        largest
  void setParams(RegionType type, int nearest, int farthest, int width, float gradient,
                 float threshold, float scale, WeightingMethod method, float param, bool edges,
                 bool absolute);

  /// Whether the accumulator is written, without its margin, as an ICS pair before every narrowing
  /// pass: prefix, "vote_" and the cone width in at least two digits. Off at first.
  void saveHistory(bool on) { saveHistory_ = on; }
  /// The start of the history files' names; a directory must exist.
  void setPrefix(const std::string& prefix) { prefix_ = prefix; }

  /// Finds the centres in plane 0 of @p img. (Filters run along the frames of a stack, too.)
  ///
  /// The border sample is repeated outside the image for the gradient, and votes that fall outside
  /// are lost. Of more than 32768 regions of votes the first become centres, after the message of
  /// bip::regions().
  ///
  /// Centres are appended to those of earlier calls, while weights are those of the last call only;
  /// this is intended. An image without pixels has no centres. Nor has one whose side, with the
  /// margin for the cones, exceeds 32767 pixels; it is reported on standard error by "In
  /// CircularVoting::compute" and "   Warning: image is too large, no centers". In both cases
  /// votingImage() is black, or null where width times height does not fit 32 bits. When memory
  /// runs out, "Error: out of memory" goes to standard error and the process ends with status 1.
  /// Cost: for each pass, the voting points times the cells of a cone; the gradient, the pixels
  /// times the sigma. The cones take memory by the product of farthest distance and width: with a
  /// width of half of it, 1.2 gigabytes for a distance of 1000, and twice that for Both. Two
  /// accumulators hold the image with its margin: for a distance of 12000 some 5 gigabytes, however
  /// small the image is.
  void compute(const Image& img);
  /// Called before every narrowing pass with the cone width in pixels and the votes so far, of the
  /// image's width and height.
  using PassObserver = std::function<void(int width, const image<float>& votes)>;
  /// As compute(img), and calls @p observer before every narrowing pass; no history is written. An
  /// exception of @p observer ends the search and leaves centers() as they were.
  void compute(const Image& img, const PassObserver& observer);

  /// After compute(): the mean vote of its region at every centre, 0 elsewhere. Shares its pixels.
  image<float> votingImage() { return votingImage_; }
  /// The centres, in the order of their regions' first pixels.
  const std::vector<Point>& centers() const { return centers_; }
  /// The mean vote of each centre's region.
  const std::vector<float>& center_weights() const { return centerWeights_; }

  /// @name Steps of compute()
  /// For derived classes and tests. vote() and the two direction steps do not test bounds: the
  /// working size, WPoint2D::nx and the points must be such that every cone lies inside the
  /// accumulator, as they are while compute() runs and not after it.
  /// @{

  /// Runs all passes over points_ and leaves the final votes in acc_, the cones of width 0 and the
  /// refined offset, angle, cx and cy of every point.
  void vote();
  /// Turns @p p towards the strongest cell of its cone, the first of equals; nothing when that
  /// holds less than 0.001.
  void getMaxDirection(VPoint2D& p);
  /// Turns @p p towards the mean of its cone's cells, weighted by their votes and divided by their
  /// number, not by the sum of the votes; this is intended. No pass uses it.
  void getMeanDirection(VPoint2D& p);
  /// Rebuilds the cones, one an angle bin, for the distances @p nearest to @p farthest and the
  /// half-width @p width at the farthest. Cells that land on the same pixel stay apart, which is
  /// intended. Distances are held in -32767 .. 32767. A farthest distance below the nearest leaves
  /// no cells, and a negative width only the axis.
  void computeCones(int nearest, int farthest, int width);
  /// The half-width whose angle is 0.7 times that of @p width, rounded down. For a radius of 0 or
  /// less or a negative width 0, after "Error in CircularVoting::nextConeRadius: null cone" on
  /// standard error.
  int nextConeRadius(int farthest, int width);
  /// The angle bin of a unit direction. An angle just below 360 degrees belongs to the last bin,
  /// not to bin 0; this is intended. A cosine outside -1 .. 1 gives bin 0.
  int computeAngleIndex(float cosine, float sine) const;
  /// @}

 protected:
  std::vector<Point> centers_;        ///< of all images computed, as centers() gives them
  std::vector<float> centerWeights_;  ///< of the last image
  image<float> acc_;                  ///< the votes of this pass, the margin included
  image<float> prevAcc_;              ///< the votes of the pass before
  image<float> votingImage_;          ///< as votingImage() gives it
  std::vector<VPoint2D> points_;      ///< the voting pixels
  std::vector<Cone2D> cones_;         ///< one an angle bin
  float angleStep_;                   ///< radians from one angle bin to the next
  int angleBins_ = 256;               ///< directions of a full turn
  int nx_ = 0;                        ///< working width; within compute() with both margins
  int ny_ = 0;                        ///< working height
  int npix_ = 0;                      ///< nx_ * ny_
  int margin_ = 0;                    ///< columns and rows around the image that cones may reach
  float gradThreshold = 1.0F;         ///< weaker gradients cast no vote
  int minRadius = 1;                  ///< nearest vote in pixels
  int maxRadius = 20;                 ///< farthest vote in pixels
  int coneWidth = 10;                 ///< half-width of the widest cone at maxRadius
  RegionType regionType = Both;       ///< which objects are looked for
  float centerThreshold = 0.0F;       ///< votes above it make a centre
  float sigma = 0.0F;                 ///< scale of the gradient in pixels
  WeightingMethod weighting = Power;  ///< how a magnitude becomes a weight
  float weightParam = 0.0F;           ///< exponent of Power
  bool useEdges = false;              ///< whether votes come from edges only
  std::string prefix_;                ///< begins the names of the history files
  bool saveHistory_ = false;          ///< whether they are written
  bool absoluteValues = true;         ///< centre threshold in votes, magnitudes as they are

 private:
  void setSize(int nx, int ny);
  void findCenters(const Image& img, const PassObserver& observer);
  void collectPoints(const Image& img);
  void extractCenters();
  void runPasses(const PassObserver& observer);
  PassObserver historyWriter() const;
  bool hasCone(const VPoint2D& p) const;
};

}  // namespace orva::voting

#endif
