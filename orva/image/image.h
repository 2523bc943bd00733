/// @file
/// The image model: five-dimensional rasters of six pixel types, rectangles that cut them, and
/// conversions between pixel types.
///
/// An image has sizes x, y, z, channel and time point. Its pixels lie densely, x fastest:
/// index(x, y, z, c, t) = x + y*nx + z*frameSize + c*volumeSize + t*timepointSize. A frame is one
/// x-y plane; frames are numbered z first, then channel, then time point. An image without pixels
/// is the null image. Copies share their pixels by reference count; clones own theirs. The count is
/// not atomic, so images that share pixels belong to one thread.
///
/// @code
/// #include "orva/image/image.h"
/// orva::image<unsigned char> img(640, 480, 1, 1, 1);  // black
/// img.setPixel(10, 20, 255);
/// orva::image<float> f = orva::toFloatImage(img);
/// @endcode
#ifndef ORVA_IMAGE_IMAGE_H
#define ORVA_IMAGE_IMAGE_H

#include <vector>

#include "orva/image/points.h"
#include "orva/util/export.h"

/// The library: images, points and colours, and a namespace for each subject.
namespace orva {

/// The code of a pixel format, as Image::format() returns it. image<T> exists for BYTE, INT, SHORT,
/// FLOAT, UINT and RGB; the others are for further subclasses of Image with those sample layouts.
enum ImageFormat : int {
  BYTE = 0,      ///< unsigned 8-bit
  INT = 1,       ///< signed 32-bit
  USHORT = 2,    ///< unsigned 16-bit
  SHORT = 3,     ///< signed 16-bit
  FLOAT = 4,     ///< 32-bit float
  UINT = 5,      ///< unsigned 32-bit
  RGB = 6,       ///< three unsigned 8-bit components
  SHORTRGB = 7,  ///< three signed 16-bit components
  INTRGB = 8,    ///< three signed 32-bit components
  FLOATRGB = 9,  ///< three 32-bit floats
  RGBA = 10      ///< three unsigned 8-bit components and alpha
};

/// @p v truncated toward zero, plus one if the remainder is at least 0.5. Positive halves thus
/// round up and negative values are only truncated: -1.7 gives -1; this is intended. Values past 32
/// bits give the nearest int, a NaN gives 0.
ORVA_EXPORT int round_double(double v);

/// Writes "Error: out of memory" to standard error and ends the process with status 1.
/// Every operation on images, points and cones ends so when the memory for its pixels, lists or
/// tables cannot be allocated, unless it names another message.
[[noreturn]] ORVA_EXPORT void out_of_memory();

/// A colour pixel: three components in memory order.
template <class T>
struct ORVA_EXPORT GenericRgb {
  T c0;  ///< the first component
  T c1;  ///< the second component
  T c2;  ///< the third component
};

/// The brightness of a colour pixel, computed in double. The weight of red belongs to the third
/// component and that of blue to the first; this is intended.
template <class T>
constexpr float luminance(const GenericRgb<T>& p) {
  return static_cast<float>(0.072169 * static_cast<double>(p.c0) +
                            0.71516 * static_cast<double>(p.c1) +
                            0.212671 * static_cast<double>(p.c2));
}

/// Orders colour pixels by luminance().
template <class T>
constexpr bool operator<(const GenericRgb<T>& p, const GenericRgb<T>& q) {
  return luminance(p) < luminance(q);
}

/// The reference-counted owner of one block of pixels.
class ORVA_EXPORT ArrayData {
 public:
  /// An owner without a block, with a count of one.
  ArrayData() = default;
  ArrayData(const ArrayData&) = delete;
  ArrayData& operator=(const ArrayData&) = delete;
  /// Releases the block.
  ~ArrayData();

  /// Adds one to the count.
  void ref() { ++count_; }

  /// Takes one from the count; true when it has reached zero. Frees nothing itself.
  bool deref() { return --count_ == 0; }

 private:
  template <class T>
  friend class image;

  int count_ = 1;
  unsigned char* block_ = nullptr;
};

/// An image of any pixel type. Every pixel is read as a float and written from one.
///
/// The seven operations that return a new image return a heap object of the same concrete type that
/// the caller deletes, or null when no image can be made. Pixel access is not checked.
class ORVA_EXPORT Image {
 public:
  /// All sizes and products 0.
  Image() = default;

  /// Sizes below zero are stored as 0, but the products are those of the arguments as passed; this
  /// is intended: Image(-2, 3, 1, 1, 1) has nx() 0 and npix() -6, and so is not null. Products are
  /// kept modulo 2^32.
  Image(int x, int y, int z, int c, int t);

  /// A new image that shares this one's pixels.
  virtual Image* copy() const = 0;
  /// The box of pixels between two inclusive corners, cut to the image, as a stack of planes; the
  /// z coordinate counts frames. Null when nothing is left.
  virtual Image* roi(const Point3D& p1, const Point3D& p2) const = 0;
  /// A new image with its own pixels.
  virtual Image* clone() const = 0;
  /// Frame @p f alone; null when there is no such frame.
  virtual Image* frame(int f) const = 0;
  /// The volume of channel @p c at time point @p t; null when there is none.
  virtual Image* channel(int c, int t) const = 0;
  /// All channels of time point @p t; null when there is none.
  virtual Image* timepoint(int t) const = 0;
  /// Resampled to the given sizes without interpolation: each new pixel is the one at the
  /// proportional position, rounded down. A negative size stands for nx(), ny() or nframes(), 0
  /// gives an image without pixels. All frames become z planes. A null image gives black pixels.
  virtual Image* scale(int sx, int sy, int sz) const = 0;

  virtual ~Image() = default;

  /// The first pixel; null for a null image.
  virtual void* data() const = 0;
  /// An ImageFormat code.
  virtual int format() const = 0;
  /// Bytes per pixel.
  virtual int pixelSize() const = 0;

  /// @name One pixel as a float (a colour pixel as its luminance)
  /// The two- and three-argument forms ignore channel and time point.
  /// @{

  /// The pixel at a position, or at an index in linear order. Neither is checked.
  virtual float pixel(int x, int y, int z, int c, int t) const = 0;
  virtual float pixel(int x, int y, int z) const = 0;
  virtual float pixel(int x, int y) const = 0;
  virtual float pixel(const Point& p) const = 0;
  virtual float pixel(int index) const = 0;
  /// @}

  /// @name Store one pixel
  /// An integer type takes @p v truncated toward zero to 32 bits, of which a byte or a short keeps
  /// the low bits: nothing is clamped, 256 stored in a byte is 0. Unsigned int keeps 0 for negative
  /// values. Values past 32 bits are first saturated to that range; a NaN counts as 0. A
  /// colour pixel takes the byte in all three components.
  /// @{

  /// Stores @p v at a position, or at an index in linear order. Neither is checked.
  virtual void setPixel(int index, float v) = 0;
  virtual void setPixel(int x, int y, float v) = 0;
  virtual void setPixel(int x, int y, int z, float v) = 0;
  virtual void setPixel(int x, int y, int z, int c, float v) = 0;
  virtual void setPixel(int x, int y, int z, int c, int t, float v) = 0;
  /// @}

  /// The smallest pixel; 0 for a null image.
  virtual float fmin() const = 0;
  /// The largest pixel; 0 for a null image.
  virtual float fmax() const = 0;

  int nx() const { return nx_; }                        ///< width
  int ny() const { return ny_; }                        ///< height
  int nz() const { return nz_; }                        ///< depth
  int nc() const { return nc_; }                        ///< channels
  int nt() const { return nt_; }                        ///< time points
  int nframes() const { return nframes_; }              ///< frames: z*c*t
  int frameSize() const { return frameSize_; }          ///< pixels of a frame: x*y
  int npix() const { return npix_; }                    ///< all pixels: x*y*z*c*t
  int volumeSize() const { return volumeSize_; }        ///< pixels of a volume: x*y*z
  int timepointSize() const { return timepointSize_; }  ///< pixels of a time point: x*y*z*c

  /// True when there is no pixel.
  bool isNull() const { return npix_ == 0; }

  /// True when width, height and number of frames agree. How the frames are made up of z, channel
  /// and time does not matter; this is intended.
  bool equalSize(const Image& other) const;

  /// Deletes @p p, unless it is null or already @p q, and points it to @p q. Returns @p q.
  static Image* reset(Image*& p, Image* q);

  /// A mask in linear order: false for voxels of the border, true for all others. A single plane
  /// has no border in z. Sizes whose product is not positive, or does not fit 32 bits, give an
  /// empty mask.
  static std::vector<bool> interior(int nx, int ny, int nz);

  /// interior(nx(), ny(), nframes()): all frames count as planes; this is intended.
  std::vector<bool> interior() const;

 protected:
  /// Only for copies of one pixel type: Image itself must not slice.
  Image(const Image&) = default;
  /// @copydoc Image(const Image&)
  Image& operator=(const Image&) = default;

 private:
  int nx_ = 0;
  int ny_ = 0;
  int nframes_ = 0;
  int frameSize_ = 0;
  int npix_ = 0;
  int nc_ = 0;
  int nt_ = 0;
  int nz_ = 0;
  int volumeSize_ = 0;
  int timepointSize_ = 0;
};

/// An image of pixels of type @p T: unsigned char, short, int, unsigned int, float or
/// GenericRgb<unsigned char>. The library holds these six; a caller compiles none of the members.
template <class T>
class ORVA_EXPORT image : public Image {
 public:
  /// A black image. A pixel count that is negative, does not fit 32 bits or cannot be allocated
  /// ends in out_of_memory().
  image(int x, int y, int z, int c, int t);
  /// Shares the pixels of @p other.
  image(const image& other);
  /// Drops its own pixels and shares those of @p other.
  image& operator=(const image& other);
  ~image() override;

  /// A new owner of no block, with a count of one.
  static ArrayData* newData();
  /// Frees @p d and its block and sets it to null; nothing for a null pointer.
  static void deleteData(ArrayData*& d);

  image* copy() const override;
  image* roi(const Point3D& p1, const Point3D& p2) const override;
  image* clone() const override;
  image* frame(int f) const override;
  image* channel(int c, int t) const override;
  image* timepoint(int t) const override;
  image* scale(int sx, int sy, int sz) const override;

  /// As clone(), by value.
  image duplicate() const;

  void* data() const override;
  int format() const override;
  int pixelSize() const override;

  float pixel(int x, int y, int z, int c, int t) const override;
  float pixel(int x, int y, int z) const override;
  float pixel(int x, int y) const override;
  float pixel(const Point& p) const override;
  float pixel(int index) const override;

  void setPixel(int index, float v) override;
  void setPixel(int x, int y, float v) override;
  void setPixel(int x, int y, int z, float v) override;
  void setPixel(int x, int y, int z, int c, float v) override;
  void setPixel(int x, int y, int z, int c, int t, float v) override;

  float fmin() const override;
  float fmax() const override;

  /// The smallest pixel, the first of equals; zero for a null image.
  T min() const;
  /// The largest pixel, the first of equals; zero for a null image.
  T max() const;

  /// The first pixel, typed; null for a null image.
  T* pixels() const { return data_; }

 private:
  /// @cond
  struct Uninitialized {};
  /// @endcond
  template <class U>
  friend image<U> uninitializedImage(int x, int y, int z, int c, int t);
  image(Uninitialized /*tag*/, int x, int y, int z, int c, int t);

  void allocate(int count, bool zero);
  int at(int x, int y, int z, int c, int t) const;
  image* copyOfRun(int first, int x, int y, int z, int c) const;

  int pixelSize_;
  ArrayData* shared_;
  T* data_ = nullptr;
};

extern template class image<unsigned char>;
extern template class image<short>;
extern template class image<int>;
extern template class image<unsigned int>;
extern template class image<float>;
extern template class image<GenericRgb<unsigned char>>;

/// A rectangle of pixels with inclusive bounds.
class ORVA_EXPORT Roi {
 public:
  /// The empty rectangle (0, 0, -1, -1).
  Roi() = default;
  /// The four bounds as given.
  Roi(int xmin, int ymin, int xmax, int ymax);
  /// The bounding box of @p points; the empty rectangle when there are none.
  Roi(const std::vector<Point>& points);

  /// Stores the four bounds as given.
  void set(int xmin, int ymin, int xmax, int ymax);

  int xmin() const { return xmin_; }  ///< first column
  int ymin() const { return ymin_; }  ///< first row
  int xmax() const { return xmax_; }  ///< last column
  int ymax() const { return ymax_; }  ///< last row

  /// True when a maximum lies below its minimum.
  bool isEmpty() const { return xmax_ < xmin_ || ymax_ < ymin_; }

  /// The pixels of @p img's first frame inside the rectangle, cut to the image, as a new image of
  /// the same pixel type that the caller deletes; null when nothing is left. The corners pass
  /// through 16-bit coordinates.
  Image* getSubImage(const Image& img) const;
  /// @p r.getSubImage(img).
  static Image* getSubImage(const Image& img, const Roi& r);
  /// The same for the four bounds.
  static Image* getSubImage(const Image& img, int xmin, int ymin, int xmax, int ymax);

 private:
  int xmin_ = 0;
  int ymin_ = 0;
  int xmax_ = -1;
  int ymax_ = -1;
};

/// @p img as bytes, its frames as planes of one channel and time point.
///
/// A byte image without @p scale is returned as it is, with its five sizes, sharing its pixels. An
/// image whose brightest and darkest pixel differ by less than 0.0001 becomes black, whatever its
/// value; this is intended. Values within 0..255 are truncated to bytes, unless @p scale asks to
/// stretch; all others, and with @p scale these too, are stretched so that the darkest pixel gives
/// 0 and the brightest 255. A NaN gives 0, and the range then depends on its place. Null for a null
/// image or an unknown format.
ORVA_EXPORT image<unsigned char> toByteImage(const Image& img, bool scale);

/// @p img in colour, with its five sizes.
///
/// Grey images are stretched to 0..255 in all three components, as by toByteImage(). Colour bytes
/// are copied; with alpha they are laid over white. Wider colour is scaled so that its luminance is
/// stretched to 0..255 (a pixel of luminance 0 has no defined colour). Null for a null image or an
/// unknown format.
ORVA_EXPORT image<GenericRgb<unsigned char>> toRgbImage(const Image& img);

/// @p img as floats, with its five sizes; colour as luminance. Null for a null image, for RGBA and
/// for an unknown format.
ORVA_EXPORT image<float> toFloatImage(const Image& img);

}  // namespace orva

#endif
