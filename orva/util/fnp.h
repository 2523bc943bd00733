/// @file
/// File-name processing: splits and joins path names as plain text. Text files: lines of words, and
/// tables of keys and values.
///
/// The separator of path names is '/'. Of the functions for file names only exists() touches the
/// file system. A null text counts as an empty one. Lack of memory throws std::bad_alloc.
///
/// @code
/// #include "orva/util/fnp.h"
/// std::string ids = orva::fnp::root("plate/well.ics") + ".ids";  // "plate/well.ids"
/// orva::Configure settings("voting.txt");                        // lines such as "sigma = 2.5"
/// std::string sigma = settings.property("sigma");
/// @endcode
#ifndef ORVA_UTIL_FNP_H
#define ORVA_UTIL_FNP_H

#include <map>
#include <string>
#include <vector>

#include "orva/util/export.h"

namespace orva {
/// File names, and text files as lines of words.
namespace fnp {

/// True when @p path names something that exists.
ORVA_EXPORT bool exists(const char* path);
/// @copydoc fnp::exists(const char*)
ORVA_EXPORT bool exists(const std::string& path);

/// @p s without one trailing '/': "a//" gives "a/".
ORVA_EXPORT std::string clean(const char* s);
/// @copydoc fnp::clean(const char*)
ORVA_EXPORT std::string clean(const std::string& s);

/// @p dir and @p name, each cleaned, joined by '/'. An empty @p dir or "." leaves the name alone.
/// A name that begins with '/' gives the empty string, after the two lines "Warning in
/// fnp::fullname" and "Invalid (relative) filename, return empty string" on standard error.
ORVA_EXPORT std::string fullname(const char* dir, const char* name);
/// @copydoc fnp::fullname(const char*, const char*)
ORVA_EXPORT std::string fullname(const std::string& dir, std::string name);

/// The text after the last '.' of the last path component, or nothing: "a.tar.gz" gives "gz",
/// "dir.d/file" gives "", ".hidden" gives "hidden".
ORVA_EXPORT std::string extension(const char* s);
/// @copydoc fnp::extension(const char*)
ORVA_EXPORT std::string extension(const std::string& s);

/// @p s without its extension and the dot: "/x/a.b.c" gives "/x/a.b", ".hidden" gives "".
ORVA_EXPORT std::string root(const char* s);
/// @copydoc fnp::root(const char*)
ORVA_EXPORT std::string root(const std::string& s);

/// The directory part, before the last '/'; empty when there is none: "/a" gives "".
ORVA_EXPORT std::string head(const char* s);
/// @copydoc fnp::head(const char*)
ORVA_EXPORT std::string head(const std::string& s);

/// The last path component, after the last '/': "dir/" gives "".
ORVA_EXPORT std::string tail(const char* s);
/// @copydoc fnp::tail(const char*)
ORVA_EXPORT std::string tail(const std::string& s);

/// The characters of @p s from position @p from up to, not including, @p to. A @p to of -1 stands
/// for the end, a negative @p from for the start; positions past the end are cut to it.
ORVA_EXPORT std::string copySubString(const std::string& s, int from, int to);

/// The words of @p line. Each character of @p delimiters separates words, and a run of them counts
/// as one separator.
ORVA_EXPORT std::vector<std::string> parseLine(const std::string& line, const char* delimiters);

/// The words of every line that has some, by parseLine(). The first line of 1024 or more characters
/// ends the reading and the rest of the file is ignored, which is intended. A file that cannot be
/// opened gives nothing, after "Cannot open file: NAME" on standard error.
ORVA_EXPORT std::vector<std::vector<std::string>> parseTextFile(const std::string& filename,
                                                                const char* delimiters);

}  // namespace fnp

/// A table of keys and values.
class ORVA_EXPORT Configure {
 public:
  /// An empty table.
  Configure() = default;
  /// The table in the text file @p filename, read by fnp::parseTextFile().
  ///
  /// A line is a key and a value with blanks, tabs or '=' between them; a later line replaces an
  /// earlier one with the same key. Lines that begin with '[' or '#', and lines that do not have
  /// two words, are ignored.
  Configure(const std::string& filename);
  /// Copies are independent.
  Configure(const Configure&) = default;
  /// @copydoc Configure(const Configure&)
  Configure& operator=(const Configure&) = default;
  virtual ~Configure() = default;

  /// The value of @p key; empty when there is none.
  std::string property(const std::string& key) const;

 private:
  std::map<std::string, std::string> properties_;
};

}  // namespace orva

#endif
