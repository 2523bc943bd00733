/// @file
/// Gaussian scale space: kernels, separable filters and derivatives, gradients and angles, masks of
/// differential features, peak flattening and size reduction.
///
/// Every filter reads its input as floats (orva::toFloatImage), so the pixel type does not matter,
/// and returns a new image; a null input gives a null result. Filters run along x, then y, then the
/// frames; channels and time points count as further planes, and an axis of length 1 is skipped,
/// both of which is intended. Every sum is accumulated in single precision, from tap -radius
/// upward. When memory runs out, "Out of memory" (for a kernel or a line) or "Error: out of memory"
/// (for an image) goes to standard error and the process ends with status 1.
///
/// Sigmas are in pixels. A sigma of 0 makes all taps NaN; a negative one counts as its magnitude
/// with radius 2; an infinite one makes all taps 0. Cost: the pixels times the radius for each
/// axis, also where the kernel is longer than the line: a sigma of 1e6 takes some ten seconds for
/// 64 x 64 pixels.
///
/// @code
/// #include "orva/scalespace/scalespace.h"
/// orva::image<float> edges = orva::scalespace::gradient(img, 2.0f, 1.0f);
/// orva::image<unsigned char> blobs =
///     orva::scalespace::features(img, 4.0f, orva::LAPLACIAN_NEGATIVE, 1.0f);
/// @endcode
///
/// Sampled Gaussian derivatives: T. Lindeberg, Scale-Space Theory in Computer Vision, 1994.
#ifndef ORVA_SCALESPACE_SCALESPACE_H
#define ORVA_SCALESPACE_SCALESPACE_H

#include <vector>

#include "orva/image/image.h"
#include "orva/util/export.h"

namespace orva {

/// A differential property of the smoothed image L. The values are tested one at a time; any other
/// value, a combination included, marks nothing.
enum FeatureType : int {
  LAPLACIAN_NEGATIVE = 1,  ///< Lxx + Lyy < 0: the bright side of a blob
  LAPLACIAN_POSITIVE = 2,  ///< Lxx + Lyy > 0: the dark side of a blob
  HESSIAN_MAXIMUM = 4,     ///< Hessian negative definite: a cap of brightness
  HESSIAN_MINIMUM = 8,     ///< Hessian positive definite: a cup of brightness
  GRADIENT_CONCAVE = 16,   ///< second derivative along the gradient negative
  GRADIENT_CONVEX = 32     ///< second derivative along the gradient positive
};

/// Gaussian filters, derivatives and differential features.
namespace scalespace {

/// The @p order + 1 coefficients, lowest power first, of the polynomial p for which
/// p(x) exp(-x^2 / (2 sigma^2)) is the @p order -th derivative of the normalised Gaussian. A
/// negative order counts as 0.
ORVA_EXPORT std::vector<float> dog(int order, float sigma);

/// The polynomial with coefficients @p c, lowest power first, at @p x, in single precision.
ORVA_EXPORT float polyval(const std::vector<float>& c, float x);

/// The taps -radius to radius of the Gaussian of scale @p sigma, differentiated @p order times, in
/// an array that the caller releases with delete[]. The radius is 4 sigma rounded down, or 2 when
/// that is below 3, not a number or too large for an int. The taps are not normalised. A tap count
/// past 32 bits ends the process as a failed allocation does.
ORVA_EXPORT float* gaussianKernel(float sigma, int& radius, int order);

/// Fifty Jacobi steps of the Laplace equation on the first frame of @p f: each interior pixel whose
/// @p mask is 255 becomes the mean of its four neighbours; all others are fixed. A mask of another
/// width or height changes nothing. Cost: 50 times the pixels of a frame.
ORVA_EXPORT void laplaceEquation(image<float>& f, const image<unsigned char>& mask);

/// @name Gaussian derivatives of orders ox, oy and oz
/// With one sigma for all axes, or one for each. An axis of order 0 is smoothed. The border sample
/// is repeated outside the image. An axis of length 1 is skipped whatever its order. The kernel is
/// convolved: a first derivative is positive where brightness grows with the coordinate.
/// @{

/// In grey levels per pixel to the power ox + oy + oz.
ORVA_EXPORT image<float> gaussian(const Image& img, float sigma, int ox, int oy, int oz);
ORVA_EXPORT image<float> gaussian(const Image& img, float sx, float sy, float sz, int ox, int oy,
                                  int oz);
/// @}

/// @name Gaussian smoothing
/// With @p sigma in the plane and sigma / @p ratio along the frames, or one sigma for each axis.
/// Taps outside the image are dropped and the others scaled up for them. An axis of length 1 is
/// skipped, but the kernels of all axes are made first, also for a null image: a sigma whose kernel
/// does not fit ends the process ("Out of memory") whatever the sizes, which is intended. A ratio
/// of 0 is an infinite sigma along the frames: in a stack all pixels become 0.
/// @{

/// In grey levels.
ORVA_EXPORT image<float> smooth(const Image& img, float sigma, float ratio);
ORVA_EXPORT image<float> smooth(const Image& img, float sx, float sy, float sz);
/// @}

/// @name Derivatives with one sigma on all axes
/// gaussian() of the orders in the name: dXXY is of order 2 along x and 1 along y.
/// @{

/// The derivative along the axes of its name.
ORVA_EXPORT image<float> dX(const Image& img, float sigma);
ORVA_EXPORT image<float> dY(const Image& img, float sigma);
ORVA_EXPORT image<float> dZ(const Image& img, float sigma);
ORVA_EXPORT image<float> dXX(const Image& img, float sigma);
ORVA_EXPORT image<float> dYY(const Image& img, float sigma);
ORVA_EXPORT image<float> dZZ(const Image& img, float sigma);
ORVA_EXPORT image<float> dXXX(const Image& img, float sigma);
ORVA_EXPORT image<float> dYYY(const Image& img, float sigma);
ORVA_EXPORT image<float> dZZZ(const Image& img, float sigma);
ORVA_EXPORT image<float> dXY(const Image& img, float sigma);
ORVA_EXPORT image<float> dXZ(const Image& img, float sigma);
ORVA_EXPORT image<float> dYZ(const Image& img, float sigma);
/// @}

/// @name Mixed derivatives with one sigma for each differentiated axis
/// @p s1 belongs to the first axis of the name, @p s2 to the second. The axis that is not
/// differentiated is smoothed with sigma 1; this is intended.
/// @{

/// The derivative along the axes of its name.
ORVA_EXPORT image<float> dXY(const Image& img, float s1, float s2);
ORVA_EXPORT image<float> dXZ(const Image& img, float s1, float s2);
ORVA_EXPORT image<float> dYZ(const Image& img, float s1, float s2);
ORVA_EXPORT image<float> dXXY(const Image& img, float s1, float s2);
ORVA_EXPORT image<float> dXYY(const Image& img, float s1, float s2);
ORVA_EXPORT image<float> dXXZ(const Image& img, float s1, float s2);
ORVA_EXPORT image<float> dXZZ(const Image& img, float s1, float s2);
ORVA_EXPORT image<float> dYYZ(const Image& img, float s1, float s2);
ORVA_EXPORT image<float> dYZZ(const Image& img, float s1, float s2);
ORVA_EXPORT image<float> dXYZ(const Image& img, float sx, float sy, float sz);
/// @}

/// The magnitude of the gradient, in grey levels per pixel. In a stack the derivative along the
/// frames takes part; it uses sigma / @p ratio on all three axes, and sigma for a ratio of 0. The
/// border is that of gaussian().
ORVA_EXPORT image<float> gradient(const Image& img, float sigma, float ratio);

/// @name Pixel by pixel from derivative images
/// Results have the frames of @p a as planes. Images of unequal size (Image::equalSize) give a null
/// image. Values are truncated to the result's type.
/// @{

/// The norm of (a, b).
ORVA_EXPORT image<short> gradient(const Image& a, const Image& b);
/// The norm of (a, b, c).
ORVA_EXPORT image<short> gradient(const Image& a, const Image& b, const Image& c);
/// image_math::direction of y = a, x = b.
ORVA_EXPORT image<unsigned char> direction(const Image& a, const Image& b);
/// image_math::angle of y = a, x = b, in whole degrees.
ORVA_EXPORT image<short> angle(const Image& a, const Image& b);
/// The arc tangent of y = a, x = b, in radians.
ORVA_EXPORT image<float> angleInRadian(const Image& a, const Image& b);
/// @}

/// The sum of the second derivatives along x, y and, in a stack, the frames, as gaussian() makes
/// them.
ORVA_EXPORT image<float> laplacian(const Image& img, float sigma);

/// 255 where the property @p type holds at scale @p sigma, 0 elsewhere.
///
/// Types 1 and 2 use Gaussian second derivatives and decide every pixel. The others use central
/// differences of the smoothed image and leave the border 0. That they differ is intended. All
/// comparisons are strict, so a NaN marks nothing. In a stack of two or more frames the tests have
/// their terms along the frames, the frames are smoothed with sigma / @p ratio (a ratio of 0 counts
/// as 1), and the mask has the frames as planes; of a single plane the ratio is not used.
ORVA_EXPORT image<unsigned char> features(const Image& img, float sigma, FeatureType type,
                                          float ratio);

/// The first frame of @p img with its peaks (@p bright) or pits at scale @p sigma flattened: the
/// pixels of HESSIAN_MAXIMUM or HESSIAN_MINIMUM are relaxed by laplaceEquation(), @p iterations
/// times, never for a count of 0 or less. An image without pixels gives a black one of its width
/// and height. Cost: for each iteration, that of features() and of laplaceEquation().
ORVA_EXPORT image<float> harmonicCut(const Image& img, float sigma, bool bright, int iterations);

/// The LAPLACIAN_NEGATIVE mask at @p sigma2 of the image after ten peak flattenings at @p sigma1.
/// An image without pixels gives a black mask of its width and height.
ORVA_EXPORT image<unsigned char> hcut(const Image& img, float sigma1, float sigma2);

/// @p img smoothed with @p sigma, stored in its own pixel type and resampled by @p factor, each
/// size rounded down and at least 1; frames become planes. The caller deletes the result. Null for
/// a null image, for a format without a float form (RGBA) and for a factor of 0 or less; a NaN
/// gives one pixel. A factor that asks for more pixels than an image can have ends the process as a
/// failed allocation does.
ORVA_EXPORT Image* reduce(const Image& img, float factor, float sigma);

}  // namespace scalespace
}  // namespace orva

#endif
