// An open TIFF file.
#ifndef ORVA_FORMATS_TIFF_HANDLE_H
#define ORVA_FORMATS_TIFF_HANDLE_H

#include <tiffio.h>

#include <algorithm>
#include <array>
#include <concepts>
#include <cstdarg>
#include <cstdint>
#include <cstdio>
#include <memory>
#include <string>

#include "formats/file_error.h"

namespace orva::formats {

struct FreeOptions {
  void operator()(TIFFOpenOptions* options) const { TIFFOpenOptionsFree(options); }
};
struct CloseTiff {
  void operator()(TIFF* tiff) const { TIFFClose(tiff); }
};

// An open file that keeps the first error message instead of printing it.
class TiffHandle {
 public:
  // A file to read.
  explicit TiffHandle(const std::string& path) {
    openWith([&](TIFFOpenOptions* options) { return TIFFOpenExt(path.c_str(), "r", options); });
  }
  // One to write, as open(options) gives it.
  template <std::invocable<TIFFOpenOptions*> Open>
  explicit TiffHandle(const Open& open) : writes_(true) {
    openWith(open);
  }
  TiffHandle(const TiffHandle&) = delete;
  TiffHandle& operator=(const TiffHandle&) = delete;

  TIFF* handle() const { return tiff_.get(); }

  [[noreturn]] void fail() const {
    const std::string what = writes_ ? "can not be written as TIFF" : "is a damaged TIFF file";
    throw FileError(what + (message_.empty() ? "" : ": " + message_));
  }

  // The value of a tag, or of its default.
  template <class Value>
  Value tag(std::uint32_t name, Value otherwise) const {
    Value value = otherwise;
    return TIFFGetFieldDefaulted(handle(), name, &value) == 1 ? value : otherwise;
  }

 private:
  template <class Open>
  void openWith(const Open& open) {
    const std::unique_ptr<TIFFOpenOptions, FreeOptions> options(TIFFOpenOptionsAlloc());
    TIFFOpenOptionsSetErrorHandlerExtR(options.get(), onError, this);
    TIFFOpenOptionsSetWarningHandlerExtR(options.get(), onWarning, this);
    tiff_.reset(open(options.get()));
    if (!tiff_) fail();
  }

  static int onError(TIFF* /*tiff*/, void* self, const char* /*module*/, const char* format,
                     va_list arguments) {
    std::string& message = static_cast<TiffHandle*>(self)->message_;
    if (!message.empty()) return 1;
    std::array<char, 160> text{};
    std::vsnprintf(text.data(), text.size(), format, arguments);
    message = text.data();
    std::replace(message.begin(), message.end(), '\n', ' ');
    return 1;
  }
  static int onWarning(TIFF* /*tiff*/, void* /*self*/, const char* /*module*/,
                       const char* /*format*/, va_list /*arguments*/) {
    return 1;
  }

  bool writes_ = false;
  std::string message_;
  std::unique_ptr<TIFF, CloseTiff> tiff_;
};

}  // namespace orva::formats

#endif
