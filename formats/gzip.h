// Compression of files.
#ifndef ORVA_FORMATS_GZIP_H
#define ORVA_FORMATS_GZIP_H

#include <memory>
#include <string>
#include <string_view>

#include "formats/text.h"

namespace orva::formats {

// Compresses pieces of a text as a gzip file without a name and a time, and hands on the pieces of
// this file. The bytes do not depend on how the text is cut.
class GzipEncoder {
 public:
  explicit GzipEncoder(Append append);
  GzipEncoder(const GzipEncoder&) = delete;
  GzipEncoder& operator=(const GzipEncoder&) = delete;
  ~GzipEncoder();

  void append(std::string_view text);
  // To be called once, after all text.
  void finish();

 private:
  struct Stream;

  void deflate(std::string_view text, int flush);

  Append append_;
  std::unique_ptr<Stream> stream_;
};

// The whole text as such a file.
std::string gzipped(const std::string& text);

}  // namespace orva::formats

#endif
