// Logarithm, exponential and arc tangent from additions, multiplications and divisions alone, so
// that their last bits do not depend on the C library.
#ifndef ORVA_DETECT_ELEMENTARY_H
#define ORVA_DETECT_ELEMENTARY_H

#include <algorithm>
#include <cmath>

namespace orva::detect {

inline constexpr double kLn2 = 0.693147180559945309417;
inline constexpr double kPi = 3.14159265358979323846;

// The natural logarithm of a positive finite number, to 1e-12.
inline double naturalLog(double x) {
  int exponent = 0;
  double m = std::frexp(x, &exponent);  // exact
  if (m < 0.70710678118654752) {
    m *= 2;
    --exponent;
  }
  const double t = (m - 1) / (m + 1);
  const double t2 = t * t;
  double sum = 0;
  for (int k = 15; k >= 1; k -= 2) sum = sum * t2 + 1.0 / k;
  return 2 * t * sum + exponent * kLn2;
}

// e to the power of `x`, held in -60 .. 60, to a relative 1e-12.
inline double exponential(double x) {
  x = std::clamp(x, -60.0, 60.0);
  const double k = std::floor(x / kLn2 + 0.5);
  const double r = x - k * kLn2;
  double sum = 1;
  for (int n = 12; n >= 1; --n) sum = sum * r / n + 1;
  return std::ldexp(sum, static_cast<int>(k));  // exact
}

// The angle of (x, y) from -pi to pi, to 1e-14; 0 at the origin.
inline double arcTangent(double y, double x) {
  const double ax = std::fabs(x);
  const double ay = std::fabs(y);
  const double longer = std::max(ax, ay);
  if (!(longer > 0)) return 0;
  double t = std::min(ax, ay) / longer;
  // Halving the angle twice takes it below pi / 16, where the series needs few terms.
  for (int i = 0; i < 2; ++i) t /= 1 + std::sqrt(1 + t * t);
  const double t2 = t * t;
  double sum = 0;
  for (int k = 21; k >= 1; k -= 2) sum = 1.0 / k - t2 * sum;
  double angle = 4 * t * sum;
  if (ay > ax) angle = kPi / 2 - angle;
  if (x < 0) angle = kPi - angle;
  return y < 0 ? -angle : angle;
}

// 1 / (1 + e^-z)
inline double logistic(double z) { return 1 / (1 + exponential(-z)); }

}  // namespace orva::detect

#endif
