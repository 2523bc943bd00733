#include "orva/voting/walk.h"

#include "orva/util/cpu_path.h"

namespace orva::voting {
namespace {

void gather(const float* const* at, std::ptrdiff_t offset, Lanes& to) {
  to = Lanes{at[0][offset], at[1][offset], at[2][offset], at[3][offset],
             at[4][offset], at[5][offset], at[6][offset], at[7][offset]};
}

}  // namespace

Views look(const float* const* at, const int* offsets, std::size_t count) {
  Views views;
  onWidestPath([=, &views] {
    const float* const from[kLanes] = {at[0], at[1], at[2], at[3], at[4], at[5], at[6], at[7]};
    Lanes sums = {};
    Lanes most = {};
    IntLanes strongest = IntLanes{} - 1;
    for (std::size_t i = 0; i < count; ++i) {
      Lanes v;
      gather(from, offsets[i], v);
      sums += v;
      const IntLanes larger = v > most;
      most = larger ? v : most;
      strongest = larger ? IntLanes{} + static_cast<int>(i) : strongest;
    }
    std::memcpy(views.sums, &sums, sizeof sums);
    std::memcpy(views.most, &most, sizeof most);
    std::memcpy(views.strongest, &strongest, sizeof strongest);
  });
  return views;
}

void sumVotes(const float* const* at, const int* offsets, std::size_t count, float* sums) {
  onWidestPath([=] {
    const float* const from[kLanes] = {at[0], at[1], at[2], at[3], at[4], at[5], at[6], at[7]};
    Lanes sum = {};
    for (std::size_t i = 0; i < count; ++i) {
      Lanes v;
      gather(from, offsets[i], v);
      sum += v;
    }
    store(sum, sums);
  });
}

}  // namespace orva::voting
