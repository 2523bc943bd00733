#include "orva/bip/connected_components.h"

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <limits>
#include <memory>
#include <numeric>
#include <utility>
#include <vector>

#include "orva/bip/memory_budget.h"
#include "orva/bip/run_length_encoding.h"
#include "orva/bip/union_find.h"
#include "orva/util/cpu_path.h"
#include "orva/util/narrow.h"
#include "orva/util/parallel_for.h"

namespace orva::bip {
namespace {

template <class T>
using BudgetVector = std::vector<T, BudgetAllocator<T>>;
template <class Pixel>
using RunEncoder = RunLengthEncoder<Pixel, BudgetAllocator<int>>;

using LabelVector [[gnu::vector_size(16)]] = short;
constexpr std::ptrdiff_t kVectorSize = sizeof(LabelVector) / sizeof(short);

// Sets the n labels from `to` on and returns their end. Writes whole vectors: up to kVectorSize
// labels behind the end are overwritten.
short* fillVectors(short* to, std::ptrdiff_t n, short label) {
  const LabelVector all = LabelVector{} + label;
  std::memcpy(to, &all, sizeof all);
  for (std::ptrdiff_t i = kVectorSize; i < n; i += kVectorSize) {
    std::memcpy(to + i, &all, sizeof all);
  }
  return to + n;
}

// Source of RunLabelling: the runs of pixels of one value. Runs that touch are connected.
class Objects {
 public:
  using Pixel = unsigned char;
  static constexpr bool kHasGaps = true;  // between the runs of a row
  Objects(const Pixel* in, Pixel value) : in_(in), value_(value) {}
  int encode(std::ptrdiff_t row, int nx, RunEncoder<Pixel>& encoder) const {
    return encoder.encodeValue(in_ + row, nx, value_);
  }
  static bool areConnected(std::ptrdiff_t /*i*/, std::ptrdiff_t /*j*/) { return true; }
  // Writes a row whose runs all have one label.
  void write(std::ptrdiff_t row, int nx, short label, short* to) const {
    const Pixel* in = in_ + row;
    const Pixel value = value_;
    onWidestPath([=] {
      ORVA_INDEPENDENT
      for (int x = 0; x < nx; ++x) to[x] = in[x] == value ? label : short{-1};
    });
  }

 private:
  const Pixel* in_;
  Pixel value_;
};

// Source of RunLabelling: the runs of equal pixels. Runs that touch are connected if their values
// are equal.
template <class T>
class Areas {
 public:
  using Pixel = T;
  static constexpr bool kHasGaps = false;
  explicit Areas(const T* in) : in_(in) {}
  int encode(std::ptrdiff_t row, int nx, RunEncoder<T>& encoder) const {
    return encoder.encodeEqual(in_ + row, nx);
  }
  bool areConnected(std::ptrdiff_t i, std::ptrdiff_t j) const { return in_[i] == in_[j]; }
  static void write(std::ptrdiff_t /*row*/, int nx, short label, short* to) {
    std::fill_n(to, nx, label);
  }

 private:
  const T* in_;
};

// The rows of a plane, or the planes of a volume, first .. end - 1.
struct Slices {
  int first;
  int end;
};

// Two passes over the rows. The first gives every run a provisional label and unites those of runs
// that touch. If there are many, it stores them where they take no further memory: at the start of
// the run's own row of the label image. The second pass encodes the runs once more, which costs
// less than to keep them, and writes the final labels.
//
// Several threads label a band of slices each, whose regions are then joined across the edges.
//
// L. He, Y. Chao, K. Suzuki, A run-based two-scan labeling algorithm, IEEE Transactions on Image
// Processing 17, 2008.
template <class Source>
class RunLabelling {
 public:
  // `apartLabels` provisional labels, of few runs, are stored apart from the label image: to touch
  // its rows in the first pass, too, takes longer.
  RunLabelling(Source source, Connectivity connectivity, MemoryBudget& budget,
               std::size_t apartLabels, const Slices& slices, image<short>& labels)
      : source_(std::move(source)),
        connectivity_(connectivity),
        apartLabels_(apartLabels),
        slices_(slices),
        nx_(labels.nx()),
        labels_(labels),
        sets_(budget),
        counts_(budget),
        plane_(budget),
        before_(budget),
        apart_(budget),
        current_(budget),
        next_(budget),
        buffer_(budget),
        firstLabels_(budget) {
    // A plane is a volume of planes of one row: only one row is then kept.
    ny_ = labels.nz() == 1 ? 1 : labels.ny();
  }

  // Gives the runs provisional labels.
  void scan() {
    const std::ptrdiff_t slices = slices_.end - std::ptrdiff_t{slices_.first};
    counts_.reserve(static_cast<std::size_t>(ny_ * slices));
    apart_.reserve(apartLabels_);
    for (int z = slices_.first; z < slices_.end; ++z) {
      std::swap(plane_, before_);
      plane_.encoder.discardKept();
      plane_.provisional.clear();
      plane_.rows.clear();
      for (int y = 0; y < ny_; ++y) {
        if (counts_.size() % kRowsPerCheckpoint == 0) checkpoint(z - slices_.first, 2 * slices);
        addRow(y, z);
      }
      if (z == slices_.first && slices_.first > 0) firstLabels_ = plane_.provisional;
    }
    plane_.encoder.discardKept();
  }

  // Numbers the regions in the order of their first pixels and returns how many there are.
  std::ptrdiff_t number(std::ptrdiff_t limit) { return sets_.number(limit); }
  void renumber(const int* numberOf) { sets_.renumber(numberOf); }

  // Calls join(a, b) for regions of this band, whose last slice touches, and of the next.
  template <class Join>
  void joinNext(RunLabelling& next, MemoryBudget& budget, const Join& join) const {
    RunEncoder<typename Source::Pixel> own(budget);
    RunEncoder<typename Source::Pixel> other(budget);
    const bool isBox = connectivity_ == Connectivity::Box;
    const int* otherLabels = next.firstLabels_.data();
    for (int y = 0; y < ny_; ++y) {
      const std::ptrdiff_t otherRow = pixelsOf(y, slices_.end);
      const int otherCount = next.source_.encode(otherRow, nx_, other);
      for (int v = isBox ? std::max(y - 1, 0) : y; v <= (isBox ? std::min(y + 1, ny_ - 1) : y);
           ++v) {
        const std::ptrdiff_t row = pixelsOf(v, slices_.end - 1);
        const int count = source_.encode(row, nx_, own);
        const int* labels =
            plane_.provisional.data() + plane_.rows[static_cast<std::size_t>(v)].provisional;
        const Run* run = own.runs();
        const Run* const end = run + count;
        const int reach = isBox ? 1 : 0;
        for (int k = 0; k < otherCount; ++k) {
          const Run& mine = other.runs()[k];
          for (; run != end && run->end <= mine.begin - reach; ++run) ++labels;
          for (std::ptrdiff_t n = 0; run + n != end && run[n].begin - reach < mine.end; ++n) {
            if (source_.areConnected(row + run[n].begin, otherRow + mine.begin)) {
              join(sets_.numberOf(labels[n]), next.sets_.numberOf(otherLabels[k]));
            }
          }
        }
      }
      otherLabels += otherCount;
    }
  }

  // Writes the numbers of the regions.
  void write() {
    const std::size_t rows = counts_.size();
    if (rows > 0) load(0, next_);
    for (std::size_t y = 0; y < rows; ++y) {
      if (y % kRowsPerCheckpoint == 0) {
        checkpoint(static_cast<std::ptrdiff_t>(rows + y), static_cast<std::ptrdiff_t>(2 * rows));
      }
      std::swap(current_, next_);
      // Before this row is written, which overwrites the start of the next.
      if (y + 1 < rows) load(y + 1, next_);
      writeRow(pixelsOf(0, slices_.first) + static_cast<std::ptrdiff_t>(y) * nx_);
    }
  }

 private:
  static constexpr std::size_t kRowsPerCheckpoint = 64;

  struct Row {
    std::ptrdiff_t pixels;    // index of its first pixel
    std::size_t runs;         // where its runs begin
    std::size_t provisional;  // where their labels begin
  };
  struct Plane {
    explicit Plane(MemoryBudget& budget) : encoder(budget), provisional(budget), rows(budget) {}
    RunEncoder<typename Source::Pixel> encoder;  // keeps all runs; an empty one ends each row
    BudgetVector<int> provisional;               // a label per run
    BudgetVector<Row> rows;
  };

  std::ptrdiff_t pixelsOf(int y, int z) const { return (std::ptrdiff_t{z} * ny_ + y) * nx_; }

  void addRow(int y, int z) {
    const std::ptrdiff_t pixels = pixelsOf(y, z);
    const auto count = static_cast<std::size_t>(source_.encode(pixels, nx_, plane_.encoder));
    const Row row{pixels, plane_.encoder.keep(std::numeric_limits<int>::max()),
                  plane_.provisional.size()};
    plane_.rows.push_back(row);
    plane_.provisional.resize(row.provisional + count, -1);
    int* own = plane_.provisional.data() + row.provisional;

    const bool isBox = connectivity_ == Connectivity::Box;
    if (z > slices_.first) {
      if (isBox && y > 0) link(row, count, before_, y - 1, 1);
      link(row, count, before_, y, isBox ? 1 : 0);
      if (isBox && y < ny_ - 1) link(row, count, before_, y + 1, 1);
    }
    if (y > 0) link(row, count, plane_, y - 1, isBox ? 1 : 0);
    for (std::size_t i = 0; i < count; ++i) {
      if (own[i] < 0) own[i] = sets_.add();
    }
    store(own, count, labels_.pixels() + pixels);
    counts_.push_back(static_cast<int>(count));
  }

  // The number of runs, up to `limit`, in which two rows begin alike.
  static std::size_t equalRuns(const Run* a, const Run* b, std::size_t limit) {
    std::size_t n = 0;
    while (n < limit && std::memcmp(a + n, b + n, sizeof(Run)) == 0) ++n;
    return n;
  }

  // Gives the runs of a row the labels of those that they touch in row y of `plane`. Runs touch
  // that are less than `reach` columns apart.
  void link(const Row& row, std::size_t count, const Plane& plane, int y, int reach) {
    const Row& other = plane.rows[static_cast<std::size_t>(y)];
    const Run* own = plane_.encoder.kept() + row.runs;
    const Run* run = plane.encoder.kept() + other.runs;
    int* labels = plane_.provisional.data() + row.provisional;
    const int* found = plane.provisional.data() + other.provisional;
    const auto skip = [&] {
      while (run->end <= own->begin - reach) {
        ++run;
        ++found;
      }
    };
    for (std::size_t i = 0; i < count; ++i, ++own) {
      skip();
      if constexpr (Source::kHasGaps) {
        const std::size_t equal = equalRuns(own, run, count - i);
        // Each touches its equal alone.
        for (std::size_t k = 0; k < equal; ++k, ++i) {
          labels[i] = labels[i] < 0 ? found[k] : sets_.join(labels[i], found[k]);
        }
        if (i == count) return;
        own += equal;
        run += equal;
        found += equal;
        skip();
      }
      for (std::ptrdiff_t k = 0; run[k].begin - reach < own->end; ++k) {
        if (!source_.areConnected(row.pixels + own->begin, other.pixels + run[k].begin)) continue;
        labels[i] = labels[i] < 0 ? found[k] : sets_.join(labels[i], found[k]);
      }
    }
  }

  // Stores the provisional labels of a row: apart while they are few, else at the start of the row,
  // in 16 bits while all labels so far fit and in 32 bits from then on. Those for which the row has
  // no room are stored apart.
  void store(const int* provisional, std::size_t count, short* row) {
    constexpr std::size_t kNarrowSets = std::numeric_limits<std::uint16_t>::max() + std::size_t{1};
    const std::size_t y = counts_.size();
    std::size_t inRow = 0;
    if (apartRows_ == y && apart_.size() + count <= apart_.capacity()) {
      apartRows_ = narrowRows_ = y + 1;
    } else if (narrowRows_ == y && sets_.size() <= kNarrowSets) {
      narrowRows_ = y + 1;
      for (std::size_t i = 0; i < count; ++i) row[i] = static_cast<short>(provisional[i]);
      return;
    } else {
      inRow = std::min(count, wideRoom());
      if (inRow > 0) std::memcpy(row, provisional, inRow * sizeof(int));
    }
    apart_.insert(apart_.end(), provisional + inRow, provisional + count);
  }

  // The number of provisional labels of 32 bits that a row has room for.
  std::size_t wideRoom() const {
    return static_cast<std::size_t>(nx_) * sizeof(short) / sizeof(int);
  }

  // Reads the region numbers of a row's runs. To be called for all rows in order.
  void load(std::size_t y, BudgetVector<int>& numbers) {
    const auto count = static_cast<std::size_t>(counts_[y]);
    const short* row =
        labels_.pixels() + pixelsOf(0, slices_.first) + static_cast<std::ptrdiff_t>(y) * nx_;
    numbers.resize(count);
    if (count == 0) return;
    if (y >= apartRows_ && y < narrowRows_) {
      std::transform(row, row + count, numbers.begin(), [this](short label) {
        return sets_.numberOf(static_cast<std::uint16_t>(label));
      });
      return;
    }
    const std::size_t inRow = y < apartRows_ ? 0 : std::min(count, wideRoom());
    std::memcpy(numbers.data(), row, inRow * sizeof(int));
    std::copy_n(apart_.data() + apartRead_, count - inRow, numbers.data() + inRow);
    apartRead_ += count - inRow;
    for (int& number : numbers) number = sets_.numberOf(number);
  }

  void writeRow(std::ptrdiff_t first) {
    short* row = labels_.pixels() + first;
    const bool isUniform = std::all_of(current_.begin(), current_.end(),
                                       [this](int number) { return number == current_.front(); });
    if (isUniform) {
      source_.write(first, nx_, fittedTo16(current_.empty() ? -1 : current_.front()), row);
      return;
    }
    source_.encode(first, nx_, plane_.encoder);
    if (nx_ >= kVectorSize && first + nx_ + kVectorSize <= pixelsOf(0, slices_.end)) {
      writeRuns(row);
    } else {
      buffer_.resize(static_cast<std::size_t>(nx_ + kVectorSize));
      writeRuns(buffer_.data());
      std::copy_n(buffer_.data(), nx_, row);
    }
  }

  void writeRuns(short* row) const {
    const Run* run = plane_.encoder.runs();
    short* to = row;
    for (const int number : current_) {
      to = fillVectors(to, row + run->begin - to, -1);
      to = fillVectors(to, run->end - run->begin, fittedTo16(number));
      ++run;
    }
    fillVectors(to, row + nx_ - to, -1);
  }

  Source source_;
  Connectivity connectivity_;
  std::size_t apartLabels_;
  Slices slices_;
  int nx_;
  int ny_;  // rows of a slice
  image<short>& labels_;
  UnionFind<BudgetAllocator<int>> sets_;
  BudgetVector<int> counts_;    // the number of runs of each row
  std::size_t apartRows_ = 0;   // the first rows, whose provisional labels are all stored apart
  std::size_t narrowRows_ = 0;  // end of the rows after them with 16-bit labels
  Plane plane_;
  Plane before_;
  BudgetVector<int> apart_;  // the provisional labels that are not in the label image
  std::size_t apartRead_ = 0;
  BudgetVector<int> current_;  // the region numbers of the row that is written
  BudgetVector<int> next_;
  BudgetVector<short> buffer_;     // a row and what is overwritten behind it
  BudgetVector<int> firstLabels_;  // provisional labels of the first slice, if others precede it
};

// The share of the memory for the provisional labels that are stored apart.
std::size_t apartLabelsOf(std::size_t bytes) { return bytes / 8 / sizeof(int); }

template <class Source>
std::ptrdiff_t labelOnOneThread(const Source& source, Connectivity connectivity,
                                std::ptrdiff_t limit, std::size_t bytes, const Slices& slices,
                                image<short>& labels) {
  MemoryBudget budget(bytes);
  RunLabelling labelling(source, connectivity, budget, apartLabelsOf(bytes), slices, labels);
  labelling.scan();
  const std::ptrdiff_t regions = labelling.number(limit);
  labelling.write();
  return regions;
}

// Regions are numbered within each band, then all together: those of a band come, in their order,
// after those of the bands before it.
template <class Source>
std::ptrdiff_t labelInBands(const Source& source, Connectivity connectivity, std::ptrdiff_t limit,
                            std::size_t bytes, const Parts& bands, image<short>& labels) {
  struct Band {
    MemoryBudget budget;
    RunLabelling<Source> labelling;
    Band(const Source& from, Connectivity by, std::size_t size, const Slices& slices,
         image<short>& to)
        : budget(size), labelling(from, by, budget, apartLabelsOf(size), slices, to) {}
  };
  std::vector<std::unique_ptr<Band>> parts(bands.count());
  std::vector<int> firsts(bands.count() + 1);  // numbers of the first region of each band
  {
    const Step step("regions", 0, 0.6);
    parallelFor(parts.size(), [&](std::size_t k) {
      const Slices slices{static_cast<int>(bands.begin(k)), static_cast<int>(bands.end(k))};
      parts[k] =
          std::make_unique<Band>(source, connectivity, bytes / 2 / bands.count(), slices, labels);
      parts[k]->labelling.scan();
      firsts[k + 1] = static_cast<int>(parts[k]->labelling.number(labels.npix()));
    });
  }
  std::partial_sum(firsts.begin(), firsts.end(), firsts.begin());
  MemoryBudget budget(bytes / 2);
  UnionFind<BudgetAllocator<int>> sets(budget);
  for (int i = 0; i < firsts.back(); ++i) sets.add();
  for (std::size_t k = 0; k + 1 < parts.size(); ++k) {
    parts[k]->labelling.joinNext(parts[k + 1]->labelling, budget, [&](int a, int b) {
      sets.join(firsts[k] + a, firsts[k + 1] + b);
    });
  }
  const std::ptrdiff_t regions = sets.number(limit);
  const Step step("regions", 0.6, 1);
  parallelFor(parts.size(), [&](std::size_t k) {
    if (firsts[k + 1] > firsts[k]) parts[k]->labelling.renumber(sets.numbers() + firsts[k]);
    parts[k]->labelling.write();
  });
  return regions;
}

template <class Source>
std::optional<std::ptrdiff_t> labelRuns(const Source& source, Connectivity connectivity,
                                        std::ptrdiff_t limit, std::size_t bytes,
                                        image<short>& labels) {
  const Step step("regions", 0, 1);
  const bool isPlane = labels.nz() == 1;
  const int slices = isPlane ? labels.ny() : labels.nz();
  const std::ptrdiff_t slicePixels = isPlane ? labels.nx() : labels.frameSize();
  constexpr std::ptrdiff_t kPixelsPerBand = std::ptrdiff_t{1} << 18U;
  const Parts bands(slices, kPixelsPerBand / std::max<std::ptrdiff_t>(slicePixels, 1) + 1);
  if (hasRunner() && bands.count() > 1) {
    try {
      return labelInBands(source, connectivity, limit, bytes, bands, labels);
    } catch (const BudgetExceeded&) {
      // One thread needs less.
    }
  }
  try {
    return labelOnOneThread(source, connectivity, limit, bytes, {0, slices}, labels);
  } catch (const BudgetExceeded&) {
    return std::nullopt;
  }
}

}  // namespace

std::optional<std::ptrdiff_t> labelObjects(const unsigned char* in, unsigned char value,
                                           Connectivity connectivity, std::ptrdiff_t limit,
                                           std::size_t bytes, image<short>& labels) {
  return labelRuns(Objects(in, value), connectivity, limit, bytes, labels);
}

std::optional<std::ptrdiff_t> labelAreas(const unsigned char* in, Connectivity connectivity,
                                         std::ptrdiff_t limit, std::size_t bytes,
                                         image<short>& labels) {
  return labelRuns(Areas(in), connectivity, limit, bytes, labels);
}

std::optional<std::ptrdiff_t> labelAreas(const short* in, Connectivity connectivity,
                                         std::ptrdiff_t limit, std::size_t bytes,
                                         image<short>& labels) {
  return labelRuns(Areas(in), connectivity, limit, bytes, labels);
}

}  // namespace orva::bip
