// Filters of the scale space and what is built on them.
#include "orva/scalespace/scalespace.h"

#include <memory>
#include <vector>

#include "tests/fuzz/operations/compare.h"
#include "tests/fuzz/operations/operations.h"
#include "tests/fuzz/operations/pictures.h"
#include "tests/support/reference/scalespace.h"

namespace orva::test {
namespace {

using Picture = std::unique_ptr<Image>;

Picture takePictureAndShape(Input& in) {
  const Shape shape = takeShape(in);
  return takeAnyPicture(in, shape);
}

FeatureType takeFeature(Input& in) {
  constexpr int types[] = {1, 2, 4, 8, 16, 32, 0, 3, -1, 64};
  return static_cast<FeatureType>(types[in.between(0, 9)]);
}

struct Axis {
  image<float> (*derivative)(const Image&, float);
  reference::Orders orders;
};

struct TwoAxes {
  image<float> (*derivative)(const Image&, float, float);
  reference::Orders orders;
  // Which of the two sigmas an axis has; 0 for a sigma of 1.
  int x;
  int y;
  int z;
};

}  // namespace

void kernels(Input& in) {
  namespace library = scalespace;
  const float sigma = takeSigma(in);
  const int order = in.between(-2, 8);
  const int knownOrder = std::max(order, 0);
  const std::vector<float> polynomial = reference::dog(knownOrder, sigma);
  requireSame(library::dog(order, sigma), polynomial, "dog");

  int radius = 0;
  const std::unique_ptr<float[]> taps(library::gaussianKernel(sigma, radius, order));
  const reference::Kernel expected = reference::gaussianKernel(sigma, knownOrder);
  requireSame(radius, expected.radius, "the radius of gaussianKernel");
  requireSame(std::vector<float>(taps.get(), taps.get() + 2 * radius + 1), expected.taps,
              "gaussianKernel");

  const float at = takeFloat(in);
  std::vector<float> c = polynomial;
  for (int n = in.between(0, 5); n > 0; --n) c.push_back(takeFloat(in));
  requireSame(library::polyval(c, at), reference::polyval(c, at), "polyval");
}

void gaussian(Input& in) {
  const reference::Triple sigma{takeSigma(in), takeSigma(in), takeSigma(in)};
  const reference::Orders order{in.between(0, 4), in.between(0, 4), in.between(0, 4)};
  const Picture img = takePictureAndShape(in);
  using scalespace::gaussian;
  requireSame(gaussian(*img, sigma.x, sigma.y, sigma.z, order.x, order.y, order.z),
              reference::gaussian(*img, sigma, order), "gaussian");
  requireSame(gaussian(*img, sigma.x, order.x, order.y, order.z),
              reference::gaussian(*img, {sigma.x, sigma.x, sigma.x}, order),
              "gaussian with one sigma");
}

void smooth(Input& in) {
  const reference::Triple sigma{takeSigma(in), takeSigma(in), takeSigma(in)};
  const float ratio = takeRatio(in, sigma.x);
  const Picture img = takePictureAndShape(in);
  using scalespace::smooth;
  requireSame(smooth(*img, sigma.x, sigma.y, sigma.z), reference::smooth(*img, sigma), "smooth");
  requireSame(smooth(*img, sigma.x, ratio),
              reference::smooth(*img, {sigma.x, sigma.x, sigma.x / ratio}), "smooth with a ratio");
}

void derivatives(Input& in) {
  namespace library = scalespace;
  const Axis one[] = {
      {library::dX, {1, 0, 0}},   {library::dY, {0, 1, 0}},   {library::dZ, {0, 0, 1}},
      {library::dXX, {2, 0, 0}},  {library::dYY, {0, 2, 0}},  {library::dZZ, {0, 0, 2}},
      {library::dXXX, {3, 0, 0}}, {library::dYYY, {0, 3, 0}}, {library::dZZZ, {0, 0, 3}},
      {library::dXY, {1, 1, 0}},  {library::dXZ, {1, 0, 1}},  {library::dYZ, {0, 1, 1}}};
  const TwoAxes two[] = {{library::dXY, {1, 1, 0}, 1, 2, 0},  {library::dXZ, {1, 0, 1}, 1, 0, 2},
                         {library::dYZ, {0, 1, 1}, 0, 1, 2},  {library::dXXY, {2, 1, 0}, 1, 2, 0},
                         {library::dXYY, {1, 2, 0}, 1, 2, 0}, {library::dXXZ, {2, 0, 1}, 1, 0, 2},
                         {library::dXZZ, {1, 0, 2}, 1, 0, 2}, {library::dYYZ, {0, 2, 1}, 0, 1, 2},
                         {library::dYZZ, {0, 1, 2}, 0, 1, 2}};
  const float sigma[] = {1.0F, takeSigma(in), takeSigma(in), takeSigma(in)};
  const Axis& a = one[in.between(0, 11)];
  const TwoAxes& b = two[in.between(0, 8)];
  const Picture img = takePictureAndShape(in);
  requireSame(a.derivative(*img, sigma[1]),
              reference::gaussian(*img, {sigma[1], sigma[1], sigma[1]}, a.orders),
              "a derivative with one sigma");
  requireSame(b.derivative(*img, sigma[1], sigma[2]),
              reference::gaussian(*img, {sigma[b.x], sigma[b.y], sigma[b.z]}, b.orders),
              "a derivative with two sigmas");
  requireSame(library::dXYZ(*img, sigma[1], sigma[2], sigma[3]),
              reference::gaussian(*img, {sigma[1], sigma[2], sigma[3]}, {1, 1, 1}), "dXYZ");
}

void gradientOfImage(Input& in) {
  const float sigma = takeSigma(in);
  const float ratio = takeRatio(in, sigma);
  const Picture img = takePictureAndShape(in);
  requireSame(scalespace::gradient(*img, sigma, ratio), reference::gradient(*img, sigma, ratio),
              "gradient");
}

void gradientOfDerivatives(Input& in) {
  const Shape shape = takeFilledShape(in);
  const Shape other = takeOther(in, shape);
  const Picture a = takeAnyPicture(in, shape);
  const Picture b = takeAnyPicture(in, other);
  const Picture c = takeAnyPicture(in, shape);
  using scalespace::gradient;
  requireSame(gradient(*a, *b), reference::gradient(*a, *b), "gradient of two images");
  requireSame(gradient(*a, *b, *c), reference::gradient(*a, *b, *c), "gradient of three images");
}

void anglesOfDerivatives(Input& in) {
  namespace library = scalespace;
  const Shape shape = takeFilledShape(in);
  const Shape other = takeOther(in, shape);
  const Picture a = takeAnyPicture(in, shape);
  const Picture b = takeAnyPicture(in, other);
  requireSame(library::direction(*a, *b), reference::direction(*a, *b), "direction");
  requireSame(library::angle(*a, *b), reference::angle(*a, *b), "angle");
  requireSame(library::angleInRadian(*a, *b), reference::angleInRadian(*a, *b), "angleInRadian");
}

void laplacian(Input& in) {
  const float sigma = takeSigma(in);
  const Picture img = takePictureAndShape(in);
  requireSame(scalespace::laplacian(*img, sigma), reference::laplacian(*img, sigma), "laplacian");
}

void features(Input& in) {
  const FeatureType type = takeFeature(in);
  const float sigma = takeSigma(in);
  const float ratio = takeRatio(in, sigma);
  const Picture img = takePictureAndShape(in);
  requireSame(scalespace::features(*img, sigma, type, ratio),
              reference::features(*img, sigma, type, ratio), "features");
}

void laplaceEquation(Input& in) {
  const Shape shape = takeShape(in);
  const Shape other = takeOther(in, shape);
  const image<unsigned char> mask = takeMask(in, other);
  image<float> f = takePicture<float>(in, shape);
  image<float> expected = f.duplicate();
  scalespace::laplaceEquation(f, mask);
  // The reference implementation knows pixels and masks of the same width and height only; another
  // changes nothing.
  const bool fits = mask.nx() == f.nx() && mask.ny() == f.ny();
  if (fits && !f.isNull() && !mask.isNull()) reference::laplaceEquation(expected, mask);
  requireSame(f, expected, "laplaceEquation");
}

void harmonicCut(Input& in) {
  const float sigma = takeSigma(in);
  const bool bright = takeBool(in);
  const int iterations = in.between(-1, 3);
  const Shape shape = takeFilledShape(in);
  const Picture img = takeAnyPicture(in, shape);
  requireSame(scalespace::harmonicCut(*img, sigma, bright, iterations),
              reference::harmonicCut(*img, sigma, bright, iterations), "harmonicCut");
}

void hcut(Input& in) {
  const float sigma1 = takeSigma(in);
  const float sigma2 = takeSigma(in);
  const Shape shape = takeSmallShape(in);
  const Picture img = takeAnyPicture(in, shape);
  requireSame(scalespace::hcut(*img, sigma1, sigma2), reference::hcut(*img, sigma1, sigma2),
              "hcut");
}

void reduce(Input& in) {
  const float sigma = takeSigma(in);
  const float wanted = takeFloat(in);
  const float factor = wanted > 3.0F ? 3.0F : wanted;
  const Shape shape = takeFilledShape(in);
  withPicture(in, shape, [=](const auto& img) {
    const Picture result(scalespace::reduce(img, factor, sigma));
    require((result == nullptr) == (factor <= 0.0F), "reduce for factors above 0");
    if (result) requireSame<Image>(*result, reference::reduce(img, factor, sigma), "reduce");
  });
}

}  // namespace orva::test
