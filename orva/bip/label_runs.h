// The runs of equal label in a label image. For the library's own sources; not installed.
#ifndef ORVA_BIP_LABEL_RUNS_H
#define ORVA_BIP_LABEL_RUNS_H

#include <cstddef>

#include "orva/bip/run_length_encoding.h"
#include "orva/image/image.h"
#include "orva/util/parallel_for.h"

namespace orva::bip {

// Pixels of one label in a row: the columns begin .. end - 1.
struct LabelRun {
  std::size_t label;
  std::ptrdiff_t begin;
  std::ptrdiff_t end;
};

// The width of the rows as forEachLabelRun() sees them. Where sizes below zero have a positive
// product, all pixels are one row.
inline int rowWidth(const image<short>& labels) {
  return labels.nx() > 0 ? labels.nx() : labels.npix();
}

// Calls beginRow(i) with the index i of the first pixel of each of the rows first .. end - 1, and
// visit(run) for every run of a label in 0 .. n - 1 in it, all in linear order.
template <class BeginRow, class Visit>
void forEachLabelRun(const image<short>& labels, std::ptrdiff_t first, std::ptrdiff_t end,
                     std::size_t n, BeginRow beginRow, Visit visit) {
  constexpr std::ptrdiff_t kRowsPerCheckpoint = 64;
  RunLengthEncoder<short> encoder;
  const int nx = rowWidth(labels);
  for (std::ptrdiff_t y = first; y < end; ++y) {
    if (y % kRowsPerCheckpoint == 0) checkpoint();
    const short* row = labels.pixels() + y * nx;
    beginRow(y * nx);
    const int count = encoder.encodeEqual(row, nx);
    for (const Run *run = encoder.runs(), *last = run + count; run != last; ++run) {
      const short k = row[run->begin];
      if (k < 0 || static_cast<std::size_t>(k) >= n) continue;
      visit(LabelRun{static_cast<std::size_t>(k), run->begin, run->end});
    }
  }
}

// The same for all rows.
template <class BeginRow, class Visit>
void forEachLabelRun(const image<short>& labels, std::size_t n, BeginRow beginRow, Visit visit) {
  forEachLabelRun(labels, 0, labels.npix() / rowWidth(labels), n, beginRow, visit);
}

}  // namespace orva::bip

#endif
