/// @file
/// Iterative circular voting: finds the centers of round, blob-like objects.
///
/// Every pixel of strong gradient votes into a cone along its gradient. Pass by pass the cones turn
/// towards the strongest votes and narrow, until the votes of one object gather at its center.
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
#ifndef ORVA_VOTING_CIRCULARVOTING_H
#define ORVA_VOTING_CIRCULARVOTING_H

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include "orva/image/image.h"
#include "orva/image/points.h"
#include "orva/util/export.h"

/// Iterative circular voting: voting points, cones and the computation.
namespace orva::voting {

/// One cell of a cone, relative to the voting point at its apex.
///
/// CircularVoting::compute() sets the class-wide sizes nx and ny of the three cone types to the
/// size of the accumulator, margin included, before it builds cones. Each thread has its own set.
struct ORVA_EXPORT WPoint2D {
  int x = 0;            ///< column offset
  int y = 0;            ///< row offset
  int offset = 0;       ///< linear offset in the accumulator, y * nx + x
  float weight = 0.0F;  ///< factor of the plain vote; 1 in all cones that are built here

  /// A cell at the apex, of weight 0.
  WPoint2D() = default;
  /// A cell with the given fields; @p cellOffset is not checked against the coordinates.
  WPoint2D(int cellX, int cellY, int cellOffset, float cellWeight)
      : x(cellX), y(cellY), offset(cellOffset), weight(cellWeight) {}

  static constinit thread_local int nx;  ///< width of the accumulator
  static constinit thread_local int ny;  ///< height of the accumulator; not read
};

/// One voting pixel.
struct VPoint2D {
  std::int16_t x = 0;      ///< column in the accumulator; in the image after compute()
  std::int16_t y = 0;      ///< row, likewise
  std::int16_t cx = 0;     ///< column of the cell that the point last turned to
  std::int16_t cy = 0;     ///< row of that cell
  std::int16_t angle = 0;  ///< direction of the cone, as an angle bin
  int offset = 0;          ///< linear index x + y * width in the accumulator
  float weight = 0.0F;     ///< weight of the vote: the weighted gradient magnitude
};

/// The cells of a cone at one distance from the apex, rounded to whole pixels.
struct ORVA_EXPORT ConePlane2D {
  std::vector<WPoint2D> points;  ///< cells, in the order in which they are voted for

  /// No cells.
  ConePlane2D() = default;
  /// @p n copies of @p p; none for a negative @p n.
  ConePlane2D(int n, const WPoint2D& p);

  /// Sets the offset of every cell to y * WPoint2D::nx + x, modulo 2^32.
  void setPos();

  static constinit thread_local int nx;  ///< width of the accumulator; not read
  static constinit thread_local int ny;  ///< height of the accumulator; not read
};

/// A fan of cells that opens from its apex, the voting point, along one direction.
struct ORVA_EXPORT Cone2D {
  std::vector<ConePlane2D> planes;  ///< one per distance, nearest first; a two-sided cone has its
                                    ///< forward planes before its backward ones
  float dx = 1.0F;                  ///< unit direction, x component
  float dy = 0.0F;                  ///< unit direction, y component

  /// Stores the direction without normalising it.
  void setDirection(float x, float y);
  /// Calls ConePlane2D::setPos() on every plane.
  void init();

  /// @name Votes
  /// @p acc and @p prev point at the pixel of the voting point in accumulators that hold every cell
  /// of the cone: bounds are not checked. Cost: one addition per cell.
  /// @{

  /// Adds the point's weight times the cell's weight to every cell of @p acc.
  void vote(float* acc, const VPoint2D& p) const;
  /// Spreads the point's weight over the cells of @p acc in proportion to the votes @p prev of the
  /// pass before. Casts nothing when these sum to less than 0.001. The cells' own weights play no
  /// part; this is intended.
  void vote(float* acc, float* prev, const VPoint2D& p) const;
  /// @}

  static constinit thread_local int nx;  ///< width of the accumulator; not read
  static constinit thread_local int ny;  ///< height of the accumulator; not read
};

/// Circular voting on an image: set the parameters, call compute(), read the centers.
class ORVA_EXPORT CircularVoting {
 public:
  /// The objects to find.
  enum RegionType : int {
    Bright = 0,  ///< bright objects: cones open along the gradient
    Dark = 1,    ///< dark objects: cones open against the gradient
    Both = 2     ///< two-sided cones, along the gradient and against it
  };

  /// How the gradient magnitude of a point becomes its weight.
  enum WeightingMethod : int {
    Power = 0,       ///< the magnitude raised to weightParam
    Exponential = 1  ///< the magnitude as it is; this is intended
  };

  /// Empty images and lists; setParams() must be called before compute().
  CircularVoting();
  virtual ~CircularVoting();
  /// The copy shares the pixels of the images until either object computes again.
  CircularVoting(const CircularVoting&) = default;
  /// @copydoc CircularVoting(const CircularVoting&)
  CircularVoting& operator=(const CircularVoting&) = default;

  /// Sets all parameters of compute(). Values out of range are replaced as listed, silently.
  /// @param type the objects to find
  /// @param nearest minRadius, the smallest distance of a vote from its point in pixels; below 1: 1
  /// @param farthest maxRadius, the largest distance in pixels; raised to minRadius
  /// @param width coneWidth, the half-width of the widest cone at maxRadius in pixels; negative: 0
  /// @param gradient points with smaller gradient magnitudes do not vote; in grey levels per pixel,
  ///        whatever @p absolute is
  /// @param threshold votes above it form centers: a number of votes if @p absolute, else a
  ///        fraction of the largest vote, clamped to 0.05 .. 1 (NaN: 1)
  /// @param scale sigma of the gradient in pixels; negative and NaN: 0
  /// @param method how magnitudes become weights
  /// @param param weightParam, the exponent of Power
  /// @param edges only points on the edges of the regions of negative Laplacian vote
  ///        (LAPLACIAN_NEGATIVE)
  /// @param absolute take @p threshold as a number of votes, and do not divide gradient magnitudes
  ///        by their maximum
  void setParams(RegionType type, int nearest, int farthest, int width, float gradient,
                 float threshold, float scale, WeightingMethod method, float param, bool edges,
                 bool absolute);

  /// Switches the history on or off; it is off by default. With it, the accumulator without its
  /// margin is written before every narrowing pass, as an ICS pair named by the prefix, "vote_" and
  /// the cone width in at least two digits. An image without pixels has no history. Files that
  /// cannot be written are reported as image_io::writeICS() does and otherwise ignored.
  void saveHistory(bool on) { saveHistory_ = on; }
  /// The start of the names of the history files; its directory must exist.
  void setPrefix(const std::string& prefix) { prefix_ = prefix; }

  /// Finds the centers in plane 0 of @p img. (The derivatives smooth along the frames of a stack,
  /// too.)
  ///
  /// The gradient sees the border pixels repeated outside the image; votes that fall outside are
  /// lost. Centers are appended to those of earlier calls, while weights are those of the last call
  /// only; this is intended. Of more than 32768 regions of votes the first 32768 become centers,
  /// with the warning of bip::regions().
  ///
  /// A null image goes through all steps with the size that it states, but has no voting points, no
  /// centers and no history. An image of a pixel format without a float form has no voting points.
  ///
  /// An image whose side and margins together exceed 32767 pixels has no centers either, and no
  /// step takes place; "In CircularVoting::compute" and "   Warning: image is too large, no
  /// centers" go to standard error, unless the image is null. votingImage() is then all zero, or
  /// null if its width times height does not fit 32 bits.
  ///
  /// When memory runs out, "Error: out of memory" goes to standard error and the process ends with
  /// status 1.
  ///
  /// Cost in time: the voting points times the cells of a cone, for each pass; the pixels times
  /// sigma for the gradient. In memory: the cones take space in proportion to farthest distance
  /// times width, 1.2 GB for a distance of 1000 and a width of 500, twice that for Both; the two
  /// accumulators hold the image with its margins, some 5 GB for a distance of 12000, however small
  /// the image is.
  void compute(const Image& img);
  /// Called before every narrowing pass with the cone width in pixels and the votes so far, of the
  /// image's width and height; not for an image without pixels.
  using PassObserver = std::function<void(int width, const image<float>& votes)>;
  /// As compute(img), and calls @p observer before every narrowing pass; no history is written. An
  /// exception of @p observer ends the search and leaves centers(), center_weights() and
  /// votingImage() as they were, and so does Cancelled.
  void compute(const Image& img, const PassObserver& observer);

  /// The image of the last compute(), of its width and height: the mean vote of its region at every
  /// center, 0 elsewhere. The result shares its pixels.
  image<float> votingImage() { return votingImage_; }
  /// The centers of all images computed: the centroids of the regions of votes, in the order of the
  /// first pixel of each region.
  const std::vector<Point>& centers() const { return centers_; }
  /// The mean votes of the regions of the last image, in the order of its centers.
  const std::vector<float>& center_weights() const { return centerWeights_; }

  /// @name Steps of compute()
  /// For derived classes and tests. vote(), getMaxDirection() and getMeanDirection() do not check
  /// bounds: the working size, WPoint2D::nx and the points must place every cone inside the
  /// accumulator, as they do while compute() runs but not after it.
  /// @{

  /// Runs all passes over points_. Leaves the final votes in acc_, those of the pass before in
  /// prevAcc_, cones of width 0 in cones_, and the last offset, angle, cx and cy in every point.
  void vote();
  /// Turns @p p towards the cell of its cone with the largest vote, the first of equals. Leaves it
  /// unchanged if that vote is less than 0.001 or the angle of @p p is no bin of cones_.
  void getMaxDirection(VPoint2D& p);
  /// Turns @p p towards the mean of its cone's cells, weighted by their votes and divided by the
  /// number of cells, not by the sum of the votes; this is intended. No pass uses it.
  void getMeanDirection(VPoint2D& p);
  /// Builds cones_, one per angle bin, for distances of @p nearest to @p farthest pixels and the
  /// half-width @p width at the farthest. Distances are clamped to -32767 .. 32767; a farthest one
  /// below the nearest leaves no cells, and a negative width only those on the axis. Cells that
  /// land on the same pixel are kept, which is intended.
  void computeCones(int nearest, int farthest, int width);
  /// The half-width of the next pass at distance @p farthest, rounded down: its cone has 0.7 times
  /// the half-angle of a cone of half-width @p width. For a distance of 0 or less or a negative
  /// width the result is 0, after "Error in CircularVoting::nextConeRadius: null cone" on standard
  /// error.
  int nextConeRadius(int farthest, int width);
  /// The angle bin, 0 to angleBins_ - 1, of a unit direction, counted from +x towards +y. An angle
  /// just below 360 degrees belongs to the last bin, not to bin 0; this is intended. A cosine
  /// outside -1 .. 1 gives bin 0.
  int computeAngleIndex(float cosine, float sine) const;
  /// The votes of the current pass as an image of the working size without its margins.
  image<float> votesWithoutMargin() const;
  /// @}

 protected:
  std::vector<Point> centers_;        ///< result of centers()
  std::vector<float> centerWeights_;  ///< result of center_weights()
  image<float> acc_;                  ///< votes of the current pass, margin included
  image<float> prevAcc_;              ///< votes of the pass before
  image<float> votingImage_;          ///< result of votingImage()
  std::vector<VPoint2D> points_;      ///< voting points, in raster order
  std::vector<Cone2D> cones_;         ///< one per angle bin
  float angleStep_;                   ///< radians from one angle bin to the next
  int angleBins_ = 256;               ///< number of angle bins of a full turn
  int nx_ = 0;                        ///< working width; with both margins during vote()
  int ny_ = 0;                        ///< working height, likewise
  int npix_ = 0;                      ///< nx_ * ny_
  int margin_ = 0;                    ///< width of the accumulator's border in pixels
  float gradThreshold = 1.0F;         ///< smaller gradient magnitudes do not vote
  int minRadius = 1;                  ///< smallest distance of a vote in pixels
  int maxRadius = 20;                 ///< largest distance of a vote in pixels
  int coneWidth = 10;                 ///< half-width of the widest cone at maxRadius, in pixels
  RegionType regionType = Both;       ///< objects to find
  float centerThreshold = 0.0F;       ///< votes above it form centers
  float sigma = 0.0F;                 ///< sigma of the gradient in pixels
  WeightingMethod weighting = Power;  ///< how a magnitude becomes a weight
  float weightParam = 0.0F;           ///< exponent of Power
  bool useEdges = false;              ///< whether only points on edges vote
  std::string prefix_;                ///< start of the names of the history files
  bool saveHistory_ = false;          ///< whether history files are written
  bool absoluteValues = true;         ///< threshold in votes, magnitudes not divided

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
