#include "tests/fuzz/operations/parameters.h"

#include <array>
#include <limits>

namespace orva::test {
namespace {

using Limits = std::numeric_limits<float>;

// One of the first bytes stands for an odd value each; `rest` is what the byte is above them.
template <class T, std::size_t count>
bool isOdd(int byte, const std::array<T, count>& odd, T& value, int& rest) {
  rest = byte - static_cast<int>(count);
  if (rest >= 0) return false;
  value = odd[static_cast<std::size_t>(byte)];
  return true;
}

bool hasFewTaps(float sigma) {
  const float radius = sigma * 4.0F;
  constexpr float kMax = 100.0F;
  constexpr float kNoInt = 2147483648.0F;  // a radius that is no number counts as 2
  return !(radius > kMax) || radius >= kNoInt;
}

}  // namespace

int takeInt(Input& in) {
  constexpr std::array odd{std::numeric_limits<int>::min(),
                           std::numeric_limits<int>::max(),
                           -1,
                           -2,
                           -255,
                           -32768,
                           32767,
                           32768,
                           65535,
                           65536,
                           255,
                           256,
                           254,
                           1000000000};
  int value = 0;
  int rest = 0;
  if (isOdd(in.take<std::uint8_t>(), odd, value, rest)) return value;
  return rest;
}

float takeFloat(Input& in) {
  constexpr std::array odd{Limits::quiet_NaN(),
                           -Limits::quiet_NaN(),
                           Limits::infinity(),
                           -Limits::infinity(),
                           0.0F,
                           -0.0F,
                           Limits::denorm_min(),
                           -Limits::denorm_min(),
                           Limits::min(),
                           Limits::max(),
                           Limits::lowest(),
                           1.0F,
                           0.0001F,
                           -0.0001F,
                           0.25F,
                           0.5F,
                           -0.5F,
                           -1.0F,
                           1.5F,
                           254.5F,
                           255.0F,
                           255.5F,
                           256.0F,
                           1e-30F,
                           9999.0F,
                           10000.0F,
                           10001.0F,
                           32768.0F,
                           -32769.0F,
                           65536.0F,
                           16777217.0F,
                           2147483520.0F,
                           2147483648.0F,
                           -2147483648.0F,
                           4294967040.0F,
                           4294967296.0F,
                           1e20F,
                           -1e20F};
  float value = 0.0F;
  int rest = 0;
  if (isOdd(in.take<std::uint8_t>(), odd, value, rest)) return value;
  if (rest < 180) return static_cast<float>(rest - 60) * 0.25F;
  return in.take<float>();
}

float takeSigma(Input& in) {
  constexpr std::array odd{0.0F,
                           -0.0F,
                           -1.0F,
                           -5.0F,
                           Limits::quiet_NaN(),
                           Limits::infinity(),
                           -Limits::infinity(),
                           Limits::denorm_min(),
                           1e-30F,
                           1e9F,
                           Limits::max(),
                           0.74F,
                           0.75F,
                           1.0F,
                           2.0F,
                           20.0F};
  float value = 0.0F;
  int rest = 0;
  if (isOdd(in.take<std::uint8_t>(), odd, value, rest)) return value;
  return static_cast<float>(rest) * 0.025F;
}

float takeRatio(Input& in, float sigma) {
  const float ratio = takeFloat(in);
  return hasFewTaps(sigma / ratio) ? ratio : 1.0F;
}

Shape takeShape(Input& in) {
  const int nx = in.between(1, 40);
  const int ny = in.between(1, 40);
  const int choice = in.take<std::uint8_t>();
  // The last choices have no pixels, but sizes above zero or below it beside those of 0.
  switch (choice < 240 ? choice % 16 : choice) {
    case 1:
      return {nx, ny, 2};
    case 2:
      return {nx, ny, 3};
    case 3:
      return {nx, ny, 4};
    case 4:
      return {nx, ny, 1, 2};
    case 5:
      return {nx, ny, 1, 1, 2};
    case 6:
      return {nx, ny, 2, 2};
    case 7:
      return {nx, ny, 2, 1, 2};
    case 8:
      return {nx, ny, 1, 2, 2};
    case 9:
      return {nx, ny, 1, 3};
    case 10:
      return {5 * nx, 1 + ny % 3};
    case 11:
      return {1 + nx % 3, 5 * ny};
    case 12:
      return {0, ny, 1 + nx % 2};
    case 13:
      return {nx, 0};
    case 240:
      return {nx, ny, 0};
    case 241:
      return {nx, ny, 1, 0};
    case 242:
      return {nx, ny, 1, 1, 0};
    case 243:
      return {nx, ny, 2, 0, 3};
    case 244:
      return {nx, ny, 0, 2, 2};
    case 245:
      return {0, 0, 0, 0, 0};
    case 246:
      return {-nx, 0};
    case 247:
      return {0, -ny};
    case 248:
      return {-nx, ny, 0};
    case 249:
      return {nx, -ny, 0};
    case 250:
      return {nx, ny, -2, 0};
    case 251:
      return {nx, ny, 1, -2, 0};
    case 252:
      return {nx, ny, 1, 0, -2};
    case 253:
      return {-nx, -ny, 0};
    case 254:
      return {nx, -ny, 1, 1, 0};
    case 255:
      return {-nx, ny, 1, 0};
    default:
      return {nx, ny};
  }
}

Shape takeFilledShape(Input& in) {
  const Shape s = takeShape(in);
  return {std::max(s.nx, 1), std::max(s.ny, 1), std::max(s.nz, 1), std::max(s.nc, 1),
          std::max(s.nt, 1)};
}

Shape takeSmallShape(Input& in) {
  const Shape s = takeShape(in);
  return {1 + std::max(s.nx, 0) % 12, 1 + std::max(s.ny, 0) % 12, std::max(s.nz, 1),
          std::max(s.nc, 1), std::max(s.nt, 1)};
}

Shape takeOther(Input& in, const Shape& shape) {
  return in.between(0, 7) == 7 ? takeShape(in) : shape;
}

}  // namespace orva::test
