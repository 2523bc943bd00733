// Convolution of the rows and the columns of a plane with one kernel. For the library's own
// sources; not installed.
//
// Every output is a single-precision sum over the taps -radius .. radius, in this order. SIMD runs
// across outputs, so it never reorders the additions of one.
#ifndef ORVA_SCALESPACE_CONVOLUTION_H
#define ORVA_SCALESPACE_CONVOLUTION_H

#include <cstddef>
#include <memory>

namespace orva::scalespace {

// How samples outside a line count.
enum class Border {
  Repeat,  // as the sample at that end
  Rescale  // not at all: the sum is divided by the weight of the taps inside the line
};

// The taps of a Gaussian derivative.
class Kernel {
 public:
  Kernel(float sigma, int order);

  int radius() const { return radius_; }
  // The tap of -radius.
  const float* taps() const { return taps_.get(); }

  // The divisor of Border::Rescale at output i of a line of n samples: 1 minus the taps outside.
  float inside(int i, int n) const;

 private:
  int radius_ = 0;
  std::unique_ptr<float[]> taps_;
};

// n rounded up to whole blocks: the number of floats that filterRow() writes for n outputs.
std::ptrdiff_t rowBlocks(std::ptrdiff_t n);

// Outputs 0 .. n - 1 of a line. `in` points at sample 0 and is readable from in - radius to
// in + rowBlocks(n) + radius.
void filterRow(const float* in, std::ptrdiff_t n, const Kernel& kernel, float* out);

// A window of the rows of an image.
struct Rows {
  const float* at;        // row `low`
  std::ptrdiff_t stride;  // floats from a row to the next
  int low;                // first row of the window
  int count;              // rows of the image
};

// `width` rounded up to whole strips: the number of columns that filterColumns() reads.
std::ptrdiff_t columnStrips(std::ptrdiff_t width);

// Filters along the columns: the outputs of rows first .. last - 1, `width` floats each, go to out,
// out + outStride and so on. The window must hold all rows that they read, columnStrips(width)
// wide.
void filterColumns(const Rows& rows, int first, int last, std::ptrdiff_t width,
                   const Kernel& kernel, Border border, float* out, std::ptrdiff_t outStride);

}  // namespace orva::scalespace

#endif
