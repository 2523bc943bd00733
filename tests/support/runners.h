// Runners for orva::ParallelScope: a pool of threads, and one thread that shuffles the tasks.
#ifndef ORVA_TESTS_SUPPORT_RUNNERS_H
#define ORVA_TESTS_SUPPORT_RUNNERS_H

#include <algorithm>
#include <cstddef>
#include <numeric>
#include <random>
#include <vector>

#include "formats/thread_pool.h"
#include "orva/util/parallel.h"

namespace orva::test {

using formats::ThreadPool;

// Runs all tasks on the calling thread, in random order.
class ShuffledTasks {
 public:
  static int run(void* runner, ParallelTask task, void* job, std::size_t count) {
    std::vector<std::size_t> order(count);
    std::iota(order.begin(), order.end(), std::size_t{0});
    std::shuffle(order.begin(), order.end(), static_cast<ShuffledTasks*>(runner)->random_);
    for (const std::size_t i : order) task(job, i);
    return 0;
  }

 private:
  std::mt19937 random_;
};

}  // namespace orva::test

#endif
