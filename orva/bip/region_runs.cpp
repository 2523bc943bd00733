#include "orva/bip/region_runs.h"

#include <algorithm>
#include <cstring>
#include <limits>
#include <utility>
#include <vector>

#include "orva/bip/row_runs.h"
#include "orva/util/cpu_path.h"
#include "orva/util/narrow.h"

namespace orva::bip {
namespace {

// Sets of provisional labels. Each is named by its least, so that a set begins where its region
// does.
class LabelSets {
 public:
  int add() {
    parents_.push_back(static_cast<int>(parents_.size()));
    return parents_.back();
  }

  // The name of the set that holds both.
  int join(int a, int b) {
    if (a == b) return a;
    a = nameOf(a);
    b = nameOf(b);
    if (b < a) std::swap(a, b);
    parents_[static_cast<std::size_t>(b)] = a;
    return a;
  }

  // Numbers the sets in the order of their names, and returns how many there are; at() then gives
  // a label's number, or -1 where that is `most` or above.
  std::ptrdiff_t number(std::ptrdiff_t most) {
    std::ptrdiff_t sets = 0;
    for (std::size_t i = 0; i < parents_.size(); ++i) {
      const auto parent = static_cast<std::size_t>(parents_[i]);
      if (parent == i) {
        parents_[i] = sets < most ? static_cast<int>(sets) : -1;
        ++sets;
      } else {
        parents_[i] = parents_[parent];  // already the number of its set
      }
    }
    return sets;
  }

  int at(int label) const { return parents_[static_cast<std::size_t>(label)]; }

 private:
  int nameOf(int a) {
    for (;;) {
      int& parent = parents_[static_cast<std::size_t>(a)];
      if (parent == a) return a;
      parent = at(parent);
      a = parent;
    }
  }

  std::vector<int> parents_;
};

// Eight labels at once.
using Labels [[gnu::vector_size(16)]] = short;
constexpr std::ptrdiff_t kTogether = sizeof(Labels) / sizeof(short);

// Sets n labels, and up to kTogether more, which are set again later.
short* fillRoughly(short* to, std::ptrdiff_t n, short label) {
  const Labels all = Labels{} + label;
  std::memcpy(to, &all, sizeof all);
  for (std::ptrdiff_t i = kTogether; i < n; i += kTogether) std::memcpy(to + i, &all, sizeof all);
  return to + n;
}

// The runs of pixels that belong to regions, in which two runs that touch are of one region.
class Objects {
 public:
  using Pixel = unsigned char;
  static constexpr bool kApart = true;  // whether there are pixels between runs
  Objects(const Pixel* in, Pixel value) : in_(in), value_(value) {}
  int find(std::ptrdiff_t row, int nx, RowRuns<Pixel>& runs) const {
    return runs.findValue(in_ + row, nx, value_);
  }
  static bool same(std::ptrdiff_t /*i*/, std::ptrdiff_t /*j*/) { return true; }
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

// Runs of equal pixels, in which two runs that touch are of one region if their values are equal.
template <class T>
class Areas {
 public:
  using Pixel = T;
  static constexpr bool kApart = false;
  explicit Areas(const T* in) : in_(in) {}
  int find(std::ptrdiff_t row, int nx, RowRuns<T>& runs) const {
    return runs.findEqual(in_ + row, nx);
  }
  bool same(std::ptrdiff_t i, std::ptrdiff_t j) const { return in_[i] == in_[j]; }
  static void write(std::ptrdiff_t /*row*/, int nx, short label, short* to) {
    std::fill_n(to, nx, label);
  }

 private:
  const T* in_;
};

template <class Source>
class RunLabelling {
 public:
  RunLabelling(Source source, Contact contact, image<short>& labels)
      : source_(std::move(source)), contact_(contact), nx_(labels.nx()), labels_(labels) {
    // A plane is a volume of planes of one row: only one row is then kept.
    const bool isPlane = labels.nz() == 1;
    ny_ = isPlane ? 1 : labels.ny();
    nz_ = isPlane ? labels.ny() : labels.nz();
  }

  std::ptrdiff_t run(std::ptrdiff_t most) {
    for (int z = 0; z < nz_; ++z) {
      std::swap(plane_, before_);
      plane_.runs.keepNone();
      plane_.rows.clear();
      for (int y = 0; y < ny_; ++y) addRow(y, z);
    }
    const std::ptrdiff_t count = sets_.number(most);
    write();
    return count;
  }

 private:
  struct Row {
    std::ptrdiff_t pixels;    // index of its first pixel
    std::size_t ends;         // where the ends of its runs begin
    std::size_t provisional;  // where their labels do
  };
  struct Plane {
    RowRuns<typename Source::Pixel> runs;  // all kept; a run that no run reaches follows a row's
    std::vector<Row> rows;
  };

  std::ptrdiff_t pixelsOf(int y, int z) const { return (std::ptrdiff_t{z} * ny_ + y) * nx_; }

  void addRow(int y, int z) {
    const std::ptrdiff_t pixels = pixelsOf(y, z);
    const auto count = static_cast<std::size_t>(source_.find(pixels, nx_, plane_.runs));
    const Row row{pixels, plane_.runs.keep(std::numeric_limits<int>::max()), used_};
    plane_.rows.push_back(row);
    counts_.push_back(static_cast<int>(count));
    used_ += count;
    if (provisional_.size() < used_) {
      provisional_.resize(std::max(used_, 2 * provisional_.size()), -1);
    }
    int* own = provisional_.data() + row.provisional;

    const bool boxes = contact_ == Contact::Box;
    if (z > 0) {
      if (boxes && y > 0) link(row, count, before_, y - 1, 1);
      link(row, count, before_, y, boxes ? 1 : 0);
      if (boxes && y < ny_ - 1) link(row, count, before_, y + 1, 1);
    }
    if (y > 0) link(row, count, plane_, y - 1, boxes ? 1 : 0);
    for (std::size_t i = 0; i < count; ++i) {
      if (own[i] < 0) own[i] = sets_.add();
    }
  }

  // The number of runs, of `most`, that begin and end alike.
  static std::size_t alikeRuns(const int* a, const int* b, std::size_t most) {
    std::size_t n = 0;
    while (n < most && std::memcmp(a + 2 * n, b + 2 * n, 2 * sizeof(int)) == 0) ++n;
    return n;
  }

  // Gives the runs of a row the labels of those that they touch in row y of `plane`; runs touch
  // that are less than `reach` columns apart.
  void link(const Row& row, std::size_t count, const Plane& plane, int y, int reach) {
    const Row& other = plane.rows[static_cast<std::size_t>(y)];
    const int* own = plane_.runs.kept() + row.ends;
    const int* ends = plane.runs.kept() + other.ends;
    int* labels = provisional_.data() + row.provisional;
    const int* found = provisional_.data() + other.provisional;
    const auto skip = [&] {
      while (ends[1] <= own[0] - reach) {
        ends += 2;
        ++found;
      }
    };
    for (std::size_t i = 0; i < count; ++i, own += 2) {
      skip();
      if constexpr (Source::kApart) {
        const std::size_t alike = alikeRuns(own, ends, count - i);
        // Each touches its like alone.
        for (std::size_t k = 0; k < alike; ++k, ++i) {
          labels[i] = labels[i] < 0 ? found[k] : sets_.join(labels[i], found[k]);
        }
        if (i == count) return;
        own += 2 * alike;
        ends += 2 * alike;
        found += alike;
        skip();
      }
      for (std::ptrdiff_t k = 0; ends[2 * k] - reach < own[1]; ++k) {
        if (!source_.same(row.pixels + own[0], other.pixels + ends[2 * k])) continue;
        labels[i] = labels[i] < 0 ? found[k] : sets_.join(labels[i], found[k]);
      }
    }
  }

  void write() {
    const int* provisional = provisional_.data();
    plane_.runs.keepNone();
    std::vector<short> last;
    std::ptrdiff_t at = 0;
    for (const std::ptrdiff_t count : counts_) {
      short* row = labels_.pixels() + at;
      if (haveOneNumber(provisional, count)) {
        const int number = count > 0 ? sets_.at(*provisional) : -1;
        source_.write(at, nx_, fittedTo16(number), row);
      } else {
        // To find the runs once more costs less than to keep them.
        source_.find(at, nx_, plane_.runs);
        if (at + nx_ + kTogether <= labels_.npix()) {
          writeRow(count, provisional, row);
        } else {
          last.resize(static_cast<std::size_t>(nx_ + kTogether));
          writeRow(count, provisional, last.data());
          std::copy_n(last.data(), nx_, row);
        }
      }
      provisional += count;
      at += nx_;
    }
  }

  bool haveOneNumber(const int* provisional, std::ptrdiff_t count) const {
    return std::all_of(provisional, provisional + count, [&](int label) {
      return label == *provisional || sets_.at(label) == sets_.at(*provisional);
    });
  }

  void writeRow(std::ptrdiff_t count, const int* provisional, short* row) const {
    const int* ends = plane_.runs.ends();
    short* to = row;
    for (std::ptrdiff_t k = 0; k < count; ++k, ends += 2) {
      to = fillRoughly(to, row + ends[0] - to, -1);
      to = fillRoughly(to, ends[1] - ends[0], fittedTo16(sets_.at(provisional[k])));
    }
    fillRoughly(to, row + nx_ - to, -1);
  }

  Source source_;
  Contact contact_;
  int nx_;
  int ny_;
  int nz_;
  image<short>& labels_;
  LabelSets sets_;
  std::vector<int> provisional_;  // a label for each run
  std::vector<int> counts_;       // the runs of each row
  std::size_t used_ = 0;
  Plane plane_;
  Plane before_;
};

}  // namespace

std::ptrdiff_t labelObjects(const unsigned char* in, unsigned char value, Contact contact,
                            std::ptrdiff_t most, image<short>& labels) {
  return RunLabelling(Objects(in, value), contact, labels).run(most);
}

std::ptrdiff_t labelAreas(const unsigned char* in, Contact contact, std::ptrdiff_t most,
                          image<short>& labels) {
  return RunLabelling(Areas(in), contact, labels).run(most);
}

std::ptrdiff_t labelAreas(const short* in, Contact contact, std::ptrdiff_t most,
                          image<short>& labels) {
  return RunLabelling(Areas(in), contact, labels).run(most);
}

}  // namespace orva::bip
