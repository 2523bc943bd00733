#include "orva/bip/region_runs.h"

#include <algorithm>
#include <cstring>
#include <limits>
#include <utility>
#include <vector>

#include "orva/bip/row_runs.h"

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
  int find(std::ptrdiff_t row, int nx) { return runs_.findValue(in_ + row, nx, value_); }
  const int* ends() const { return runs_.ends(); }
  static bool same(std::ptrdiff_t /*i*/, std::ptrdiff_t /*j*/) { return true; }

 private:
  const Pixel* in_;
  Pixel value_;
  RowRuns<Pixel> runs_;
};

// Runs of equal pixels, in which two runs that touch are of one region if their values are equal.
template <class T>
class Areas {
 public:
  static constexpr bool kApart = false;
  explicit Areas(const T* in) : in_(in) {}
  int find(std::ptrdiff_t row, int nx) { return runs_.findEqual(in_ + row, nx); }
  const int* ends() const { return runs_.ends(); }
  bool same(std::ptrdiff_t i, std::ptrdiff_t j) const { return in_[i] == in_[j]; }

 private:
  const T* in_;
  RowRuns<T> runs_;
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
      plane_.ends.clear();
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
    std::vector<int> ends;  // a run that no run reaches follows those of a row
    std::vector<Row> rows;
  };

  std::ptrdiff_t pixelsOf(int y, int z) const { return (std::ptrdiff_t{z} * ny_ + y) * nx_; }

  void addRow(int y, int z) {
    const Row row{pixelsOf(y, z), plane_.ends.size(), used_};
    const auto count = static_cast<std::size_t>(source_.find(row.pixels, nx_));
    plane_.rows.push_back(row);
    plane_.ends.insert(plane_.ends.end(), source_.ends(), source_.ends() + 2 * count);
    plane_.ends.insert(plane_.ends.end(), 2, std::numeric_limits<int>::max());
    used_ += count;
    if (provisional_.size() < used_) provisional_.resize(std::max(used_, 2 * provisional_.size()));
    int* own = provisional_.data() + row.provisional;
    std::fill_n(own, count, -1);

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

  // Gives the runs of a row the labels of those that they touch in row y of `plane`; runs touch
  // that are less than `reach` columns apart.
  void link(const Row& row, std::size_t count, const Plane& plane, int y, int reach) {
    const Row& other = plane.rows[static_cast<std::size_t>(y)];
    const int* own = plane_.ends.data() + row.ends;
    const int* ends = plane.ends.data() + other.ends;
    int* labels = provisional_.data() + row.provisional;
    const int* found = provisional_.data() + other.provisional;
    std::size_t i = 0;
    if (Source::kApart) {
      // Where rows begin alike, each run touches its like alone.
      for (; i < count && own[0] == ends[0] && own[1] == ends[1] && labels[i] < 0;
           ++i, own += 2, ends += 2) {
        labels[i] = *found++;
      }
    }
    for (; i < count; ++i, own += 2) {
      while (ends[1] <= own[0] - reach) {
        ends += 2;
        ++found;
      }
      for (std::ptrdiff_t k = 0; ends[2 * k] - reach < own[1]; ++k) {
        if (!source_.same(row.pixels + own[0], other.pixels + ends[2 * k])) continue;
        labels[i] = labels[i] < 0 ? found[k] : sets_.join(labels[i], found[k]);
      }
    }
  }

  // Finds the runs once more, which costs less than to keep them.
  void write() {
    const int* provisional = provisional_.data();
    std::vector<short> last;
    for (int z = 0; z < nz_; ++z) {
      for (int y = 0; y < ny_; ++y) {
        const std::ptrdiff_t at = pixelsOf(y, z);
        const int count = source_.find(at, nx_);
        if (at + nx_ + kTogether <= labels_.npix()) {
          writeRow(count, provisional, labels_.pixels() + at);
        } else {
          last.resize(static_cast<std::size_t>(nx_ + kTogether));
          writeRow(count, provisional, last.data());
          std::copy_n(last.data(), nx_, labels_.pixels() + at);
        }
        provisional += count;
      }
    }
  }

  void writeRow(int count, const int* provisional, short* row) const {
    const int* ends = source_.ends();
    short* to = row;
    for (int k = 0; k < count; ++k, ends += 2) {
      to = fillRoughly(to, row + ends[0] - to, -1);
      to = fillRoughly(to, ends[1] - ends[0], static_cast<short>(sets_.at(provisional[k])));
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
