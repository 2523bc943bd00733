// Convolution of rows and of columns with one kernel; not installed.
//
// Every output is one sum in single precision over the taps -radius .. radius in this order. The
// loops take many outputs at once and leave the order within each sum as it is.
#ifndef ORVA_SCALESPACE_LINE_FILTER_H
#define ORVA_SCALESPACE_LINE_FILTER_H

#include <cstddef>
#include <memory>

namespace orva::scalespace {

// What stands for samples outside a line.
enum class Border {
  Repeat,  // the sample at the end
  Rescale  // nothing: their taps are dropped and the other taps scaled up for them
};

// The taps of a Gaussian derivative.
class Kernel {
 public:
  Kernel(float sigma, int order);

  int radius() const { return radius_; }
  // The tap of -radius.
  const float* taps() const { return taps_.get(); }

  // What the sum at output i of a line of n samples is divided by for Border::Rescale: 1 less the
  // taps that lie outside the line.
  float inside(int i, int n) const;

 private:
  int radius_ = 0;
  std::unique_ptr<float[]> taps_;
};

// The number of floats that filterRow() writes for n outputs: whole blocks.
std::ptrdiff_t rowBlocks(std::ptrdiff_t n);

// The sums at outputs 0 .. n - 1 of a line. `in` points at sample 0; `radius` samples lie before it
// and behind it rowBlocks(n) + radius.
void filterRow(const float* in, std::ptrdiff_t n, const Kernel& kernel, float* out);

// Rows of an image of `count` rows, `stride` floats apart: those from `low` on are at hand, at
// `at`.
struct Rows {
  const float* at;
  std::ptrdiff_t stride;
  int low;
  int count;
};

// The number of columns that filterColumns() reads for `width` of them: whole strips.
std::ptrdiff_t columnStrips(std::ptrdiff_t width);

// Filters along the columns: the outputs of rows first .. last - 1, `width` floats each, go to out,
// out + outStride and so on. All rows that they need must be at hand, columnStrips(width) wide.
void filterColumns(const Rows& rows, int first, int last, std::ptrdiff_t width,
                   const Kernel& kernel, Border border, float* out, std::ptrdiff_t outStride);

}  // namespace orva::scalespace

#endif
