/// @file
/// Image files: writing of ICS header/data pairs with their metadata, binary PGM and PPM.
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

namespace orva::image_io {

/// The acquisition metadata of a one-channel image, kept as ready-made lines of an ICS header.
class ORVA_EXPORT IcsInfo {
 public:
  /// An empty record for the data set @p datasetName, which names the files.
  explicit IcsInfo(std::string datasetName);
  virtual ~IcsInfo() = default;
  IcsInfo(const IcsInfo&) = default;
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
  explicit MultiChannelIcsInfo(std::string datasetName);
  virtual ~MultiChannelIcsInfo() = default;
  MultiChannelIcsInfo(const MultiChannelIcsInfo&) = default;
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

  /// @copydoc operator<<(std::ostream&, const IcsInfo&)
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
/// with or without ".ics" and one trailing '/'. The byte-order line is always "2 1", and pixels go
/// out as they lie in memory.
///
/// With a record the header lists height before width and folds channels and time points into z,
/// unlike the plain form; this is intended.
///
/// A header that can not be opened ends the call, after three lines on standard error, the second
/// with the name as given but for a trailing '/':
/// @verbatim
/// In image_io::writeICS
///    Can not open fileNAME
///    Ignored.
/// @endverbatim
/// A pixel file that can not be opened leaves the header; the first and last of these lines go to
/// standard error, the middle one to standard output:
/// @verbatim
/// In image_io::writeICS
///    Can not open fileNAME.ids
///   In image_io::writeICS
/// @endverbatim
/// For a file, header or pixels, that can not be written whole, on standard error:
/// @verbatim
/// In image_io::writeICS
///    Error in writing NAME.ids
/// @endverbatim
/// @{
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
/// whole by "Can not write file: ", each with the name, on standard error.
ORVA_EXPORT void writePPM(const std::string& filename, const image<unsigned char>& img);

}  // namespace orva::image_io

#endif
