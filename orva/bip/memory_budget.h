// A limit to the scratch memory of a computation that has a slower form with less. For the
// library's own sources; not installed.
#ifndef ORVA_BIP_MEMORY_BUDGET_H
#define ORVA_BIP_MEMORY_BUDGET_H

#include <cstddef>
#include <exception>
#include <memory>
#include <type_traits>

namespace orva::bip {

// Thrown by an allocation that would exceed the budget. The system may have more memory, so this is
// no std::bad_alloc.
class BudgetExceeded : public std::exception {
 public:
  const char* what() const noexcept override { return "memory budget exceeded"; }
};

// Counts the bytes that the containers of one computation hold at a time.
class MemoryBudget {
 public:
  explicit MemoryBudget(std::size_t bytes) : left_(bytes) {}
  MemoryBudget(const MemoryBudget&) = delete;
  MemoryBudget& operator=(const MemoryBudget&) = delete;
  ~MemoryBudget() = default;

  void take(std::size_t bytes) {
    if (bytes > left_) throw BudgetExceeded();
    left_ -= bytes;
  }
  void giveBack(std::size_t bytes) noexcept { left_ += bytes; }

 private:
  std::size_t left_;
};

// The standard allocator, charged to a budget. While a vector grows, its old and its new block both
// count.
template <class T>
class BudgetAllocator {
 public:
  using value_type = T;
  // A block that moves to another container stays charged to its budget.
  using propagate_on_container_move_assignment = std::true_type;

  // Convertible, so that a container takes the budget itself.
  BudgetAllocator(MemoryBudget& budget) : budget_(&budget) {}
  template <class U>
  BudgetAllocator(const BudgetAllocator<U>& other) : budget_(&other.budget()) {}

  T* allocate(std::size_t n) {
    budget_->take(n * sizeof(T));
    try {
      return std::allocator<T>().allocate(n);
    } catch (...) {
      budget_->giveBack(n * sizeof(T));
      throw;
    }
  }
  void deallocate(T* block, std::size_t n) noexcept {
    std::allocator<T>().deallocate(block, n);
    budget_->giveBack(n * sizeof(T));
  }

  MemoryBudget& budget() const { return *budget_; }
  friend bool operator==(const BudgetAllocator& a, const BudgetAllocator& b) {
    return a.budget_ == b.budget_;
  }

 private:
  MemoryBudget* budget_;
};

}  // namespace orva::bip

#endif
