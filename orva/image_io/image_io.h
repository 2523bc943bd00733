/// @file
/// Image files: ICS header/data pairs with their metadata (written), PGM (read), PPM (written), the
/// raw formats UIF and IHT (both), the stack count of TIFF files; byte order and pixel types.
///
/// Text is written the same in every locale. Pixels are written in the machine's own byte order.
///
/// @code
/// #include <memory>
/// #include "orva/image_io/image_io.h"
/// std::unique_ptr<orva::image<unsigned char>> img(orva::image_io::readPGM("nuclei.pgm"));
/// orva::image_io::writeICS("out/nuclei", *img);  // out/nuclei.ics and out/nuclei.ids
/// @endcode
///
/// ICS: P. Dean et al., Proposed standard for image cytometry data files, Cytometry 11, 1990.
#ifndef ORVA_IMAGE_IO_IMAGE_IO_H
#define ORVA_IMAGE_IO_IMAGE_IO_H

#include <iosfwd>
#include <string>
#include <vector>

#include "orva/image/image.h"
#include "orva/util/export.h"

/// Image files, byte order, and conversions between pixel types.
namespace orva::image_io {

/// The acquisition metadata of a one-channel image, kept as ready-made lines of an ICS header.
class ORVA_EXPORT IcsInfo {
 public:
  /// An empty record for the data set @p datasetName, which names the files.
  IcsInfo(std::string datasetName);
  virtual ~IcsInfo() = default;
  /// Copies are independent.
  IcsInfo(const IcsInfo&) = default;
  /// @copydoc IcsInfo(const IcsInfo&)
  IcsInfo& operator=(const IcsInfo&) = default;

  /// The data-set name, followed by "_" and the channel name when there is one.
  std::string datasetName() const;
  /// The channel as a text of one character; empty until set.
  std::string channelName() const { return channelName_; }
  /// The time that setWithCurrentTime() took, in seconds since the epoch; 0 until then.
  int getUTCseconds() const { return utcSeconds_; }

  /// Takes the current time for the date line (local time, at most 30 characters) and the seconds
  /// line.
  void setWithCurrentTime();
  /// Sets the filter, exposure and channel; an empty text leaves its line without a value.
  void setWithChannelInfo(const std::string& exFilter, const std::string& exposure, char channel);
  /// Sets the scope line; an empty text leaves it without a value.
  void setScope(const std::string& scope);
  /// Sets the sample line from six items, the numbers with six decimals; empty texts are left out.
  void setSample(const std::string& a, const std::string& b, const std::string& c, float f1,
                 float f2, const std::string& d);
  /// Adds a line of tab-separated items; empty ones after the first are left out. Nothing for an
  /// empty list.
  void addProperty(const std::vector<std::string>& items);
  /// Sets the annotation: each line of @p text behind "history\tAnnotation\t".
  void annotate(const std::string& text);
  /// Appends @p text to the free text.
  void addParagraph(const std::string& text);

  /// Writes the lines in their fixed order, "UNDEFINED" or "NONE" for those not set, without a
  /// final newline.
  friend ORVA_EXPORT std::ostream& operator<<(std::ostream& out, const IcsInfo& info);

 private:
  std::string datasetName_;
  std::string date_;
  std::string utcSecondsLine_;
  std::string exFilter_;
  std::string exposure_;
  std::string channelName_;
  std::vector<std::string> properties_;
  std::string paragraph_;
  std::string annotation_;
  std::string scope_;
  std::string sample_;
  int utcSeconds_ = 0;
};

/// The acquisition metadata of an image of several channels. Unlike IcsInfo it writes empty items
/// too, annotates in one line, and has defaults for its filter lines; this is intended.
class ORVA_EXPORT MultiChannelIcsInfo {
 public:
  /// An empty record for the data set @p datasetName, which names the files.
  MultiChannelIcsInfo(std::string datasetName);
  virtual ~MultiChannelIcsInfo() = default;
  /// Copies are independent.
  MultiChannelIcsInfo(const MultiChannelIcsInfo&) = default;
  /// @copydoc MultiChannelIcsInfo(const MultiChannelIcsInfo&)
  MultiChannelIcsInfo& operator=(const MultiChannelIcsInfo&) = default;

  /// The data-set name; channels do not show in it.
  std::string datasetName() const { return datasetName_; }
  /// The channels, a text of one character each, in the order they were added.
  const std::vector<std::string>& channelNames() const { return channelNames_; }
  /// @copydoc IcsInfo::getUTCseconds()
  int getUTCseconds() const { return utcSeconds_; }

  /// @copydoc IcsInfo::setWithCurrentTime()
  void setWithCurrentTime();
  /// Adds a channel with its filter and exposure.
  void setWithChannelInfo(const std::string& exFilter, const std::string& exposure, char channel);
  /// Sets the scope line.
  void setScope(const std::string& scope);
  /// Sets the sample line from six items, the numbers with six decimals.
  void setSample(const std::string& a, const std::string& b, const std::string& c, float f1,
                 float f2, const std::string& d);
  /// Adds a line of tab-separated items. Nothing for an empty list.
  void addProperty(const std::vector<std::string>& items);
  /// Sets the annotation: the whole text behind one "history\tAnnotation\t".
  void annotate(const std::string& text);

  /// Writes the lines in their fixed order, "UNDEFINED" or "NONE" for those not set, without a
  /// final newline.
  friend ORVA_EXPORT std::ostream& operator<<(std::ostream& out, const MultiChannelIcsInfo& info);

 private:
  std::string datasetName_;
  std::string date_;
  std::string utcSecondsLine_;
  std::vector<std::string> exFilters_;
  std::vector<std::string> exposures_;
  std::vector<std::string> channelNames_;
  std::vector<std::string> properties_;
  std::string annotation_;
  std::string scope_;
  std::string sample_;
  int utcSeconds_ = 0;
};

/// @name Writing ICS version 1.0
/// A text header NAME.ics and the pixels NAME.ids, from @p filename or the record's data-set name,
/// with or without ".ics" and one trailing '/'. The byte-order line is always "2 1", which stands
/// for the most significant byte first, and pixels go out as they lie in memory; this is intended.
///
/// With a record the header lists height before width and folds channels and time points into z,
/// unlike the plain form; this is intended.
///
/// A header that cannot be opened ends the call, after three lines on standard error, the second
/// with the name as given but for a trailing '/':
/// @verbatim
/// In image_io::writeICS
///    Can not open fileNAME
///    Ignored.
/// @endverbatim
/// A pixel file that cannot be opened leaves the header; the first and last of these lines go to
/// standard error, the middle one to standard output, which is intended:
/// @verbatim
/// In image_io::writeICS
///    Can not open fileNAME.ids
///   In image_io::writeICS
/// @endverbatim
/// For a file, header or pixels, that cannot be written whole, on standard error:
/// @verbatim
/// In image_io::writeICS
///    Error in writing NAME.ids
/// @endverbatim
/// @{

/// The header and the pixels of @p img; of a null image the header, and an empty pixel file.
ORVA_EXPORT void writeICS(const std::string& filename, const Image& img);
ORVA_EXPORT void writeICS(const IcsInfo& info, const Image& img);
ORVA_EXPORT void writeICS(const MultiChannelIcsInfo& info, const Image& img);
/// @}

/// Null, whatever the file holds: ICS files are not read.
ORVA_EXPORT Image* readICS(const std::string& filename);

/// A binary 8-bit PGM ("P5"); the maximum grey value is read and ignored. The caller deletes the
/// result.
///
/// Any fault ends the process with status 1 after one line on standard error: "Can't input image
/// NAME.", "Image NAME does not have binary PGM header.", "Image is not binary PGM." for a header
/// that ends early, "out of memory" (also for more pixels than an image can have), or "Image NAME
/// is wrong size." for missing pixels. This is intended: check a file first if the process must go
/// on.
ORVA_EXPORT image<unsigned char>* readPGM(const std::string& filename);

/// A binary PPM ("P6") of an image of one frame (grey) or three (red, green and blue).
///
/// Other images are refused with "image_io::writePPM -> img must be a grayscale or color image". A
/// file that cannot be opened is reported by "Can not open file: " and one that cannot be written
/// whole by "Can not write file: ", each with the name, on standard error. One frame without pixels
/// is a header alone.
ORVA_EXPORT void writePPM(const std::string& filename, const image<unsigned char>& img);

/// @name UIF and IHT
/// A header of 32-bit integers in the machine's own byte order, then the pixels as they lie in
/// memory. Their messages differ in streams and wording, which is intended. UIF: width, height,
/// frames, bytes per pixel, ImageFormat code. IHT: height, width, 0, 0, height, width, ImageFormat
/// code, frames, number of pixels, and four bytes without meaning.
///
/// A read image has the frames as z planes and is the caller's to delete. The format codes BYTE,
/// INT, SHORT and FLOAT are read; others give null without a message. The end of the file is not
/// noticed: what is missing, header or pixels, counts as 0. Sizes that are negative or whose
/// product does not fit 32 bits give null, after two lines on standard error (so for readIHT):
/// @verbatim
/// In image_io::readUIF
/// Error: invalid image size in NAME
/// @endverbatim
/// A null image is written as a header alone. A file that cannot be written whole is reported on
/// standard error (so for writeIHT):
/// @verbatim
/// In image_io::writeUIF
/// Error in writing NAME
/// @endverbatim
/// @{

/// A file that cannot be opened is reported on standard error as "In image_io::writeUIF", "Can not
/// open fileNAME" and "Ignored.", a line each.
ORVA_EXPORT void writeUIF(const std::string& filename, const Image& img);
/// Always an `image<unsigned char>`: of wider pixels it holds the first bytes of the data; this is
/// intended. For a file that cannot be opened null, after "In image_io::readUIF" on standard error
/// and "Can not open the file NAME" on standard output.
ORVA_EXPORT Image* readUIF(const std::string& filename);
/// A file that cannot be opened is reported on standard output as "Can not open fileNAME".
ORVA_EXPORT void writeIHT(const std::string& filename, const Image& img);
/// An image of the type that was written. For a file that cannot be opened null, after "Can not
/// open the file NAME" on standard output.
ORVA_EXPORT Image* readIHT(const std::string& filename);
/// @}

/// @name By the extension of the file name
/// @{

/// readPGM() for ".pgm", readIHT() for ".iht", readICS() for ".ics", in capitals or small letters;
/// null for all others, without a message. The caller deletes the result.
ORVA_EXPORT Image* readImage(const std::string& filename);
/// writeIHT() for ".iht" in capitals or small letters, writeICS() for ".ics" in small letters only,
/// which is intended; one trailing '/' is passed over. Nothing for all others, without a message.
ORVA_EXPORT void writeImage(const std::string& filename, const Image& img);
/// @}

/// @name Numbers in a buffer
/// From the bytes at @p offset on, the least significant first when @p byteOrder is 1, otherwise
/// the most significant first. Nothing is checked: the buffer must hold the bytes.
/// @{

/// The first two bytes in the first order, but the third and the fourth in the other: the short at
/// the end of a slot of four bytes. This is intended.
ORVA_EXPORT void extractShortDataFromBuffer(const unsigned char* buffer, int byteOrder, int offset,
                                            short& result);
/// Four bytes.
ORVA_EXPORT void extractLongDataFromBuffer(const unsigned char* buffer, int byteOrder, int offset,
                                           int& result);
/// @}

/// The number of planes of a TIFF stack: the count of the last entry with tag 33629, its low 16
/// bits with a sign; -1 when there is none. Writes to standard output "lsb1" for a file with the
/// least significant byte first or "lsb0" for others, then the numbers of the directories from 0,
/// a line each. A file that cannot be opened or ends early, a directory met again, and more
/// entries than a file of its length has room for (and a million) end the search with what was
/// found so far. Cost: the entries read.
ORVA_EXPORT int returnStackCount(const std::string& filename);

/// @name Byte order, in place
/// Images that share the pixels change with them.
/// @{

/// Turns round the bytes of every sample of two or four bytes. Byte formats stay.
ORVA_EXPORT void reverse_byte_order(Image& img);
/// reverse_byte_order(), unless @p inOrder.
ORVA_EXPORT void adjust_byte_order_for_read(Image& img, bool inOrder);
/// Nothing: pixels are written in the machine's own byte order.
ORVA_EXPORT void adjust_byte_order_for_write(Image& img);
/// @}

/// @name Conversions between pixel types
/// By value, with the frames as z planes; null for a null image. Colour counts as luminance.
/// @{

/// As toByteImage(), for any format code: without @p rescale values within 0..255 are truncated,
/// all others are stretched to 0..255.
ORVA_EXPORT image<unsigned char> convertToByteImage(const Image& img, bool rescale);
/// Values truncated toward zero and held at the ends of the type's range; a NaN gives 0.
ORVA_EXPORT image<unsigned int> convertToUIntImage(const Image& img);
/// @copydoc image_io::convertToUIntImage
ORVA_EXPORT image<int> convertToIntImage(const Image& img);
/// Values as they are.
ORVA_EXPORT image<float> convertToFloatImage(const Image& img);
/// As convertToIntImage(), of which the low 16 bits stay: nothing is clamped.
ORVA_EXPORT image<short> convertToShortImage(const Image& img);
/// @}

}  // namespace orva::image_io

#endif
