// Disjoint sets of whole numbers (union-find), for the provisional labels of connected components.
// For the library's own sources; not installed.
//
// The elements are 0, 1, 2, ... in the order of add(). The representative of a set is its smallest
// element, so where elements are added in raster order a set comes where its component begins.
// Paths are halved as they are followed.
//
// R. E. Tarjan, Efficiency of a good but not linear set union algorithm, Journal of the ACM 22,
// 1975.
#ifndef ORVA_BIP_UNION_FIND_H
#define ORVA_BIP_UNION_FIND_H

#include <cstddef>
#include <memory>
#include <utility>
#include <vector>

namespace orva::bip {

template <class Allocator = std::allocator<int>>
class UnionFind {
 public:
  explicit UnionFind(const Allocator& allocator = Allocator()) : parents_(allocator) {}

  // The number of elements.
  std::size_t size() const { return parents_.size(); }

  // Adds an element in a set of its own and returns it.
  int add() {
    parents_.push_back(static_cast<int>(parents_.size()));
    return parents_.back();
  }

  // Unites the sets of two elements and returns the representative.
  int join(int a, int b) {
    if (a == b) return a;
    a = find(a);
    b = find(b);
    if (b < a) std::swap(a, b);
    parents_[static_cast<std::size_t>(b)] = a;
    return a;
  }

  // Numbers the sets from 0 in the order of their representatives and returns how many there are.
  // After that only numberOf() may be called.
  std::ptrdiff_t number(std::ptrdiff_t limit) {
    std::ptrdiff_t sets = 0;
    for (std::size_t i = 0; i < parents_.size(); ++i) {
      const auto parent = static_cast<std::size_t>(parents_[i]);
      if (parent == i) {
        parents_[i] = sets < limit ? static_cast<int>(sets) : -1;
        ++sets;
      } else {
        parents_[i] = parents_[parent];  // smaller, so it holds its number already
      }
    }
    return sets;
  }

  // Replaces the number of every set by numberOf[number].
  void renumber(const int* numberOf) {
    for (int& number : parents_) number = numberOf[number];
  }

  // The number of an element's set, or -1 for numbers from the limit on.
  int numberOf(int a) const { return parents_[static_cast<std::size_t>(a)]; }
  // Those of all elements.
  const int* numbers() const { return parents_.data(); }

 private:
  int find(int a) {
    for (;;) {
      int& parent = parents_[static_cast<std::size_t>(a)];
      if (parent == a) return a;
      parent = parents_[static_cast<std::size_t>(parent)];
      a = parent;
    }
  }

  std::vector<int, Allocator> parents_;
};

}  // namespace orva::bip

#endif
