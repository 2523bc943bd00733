/// @file
/// File-name processing: splits and joins path names as plain text.
///
/// The separator is '/'. Only exists() touches the file system. A null text counts as an empty one.
///
/// @code
/// #include "orva/util/fnp.h"
/// std::string ids = orva::fnp::root("plate/well.ics") + ".ids";  // "plate/well.ids"
/// @endcode
#ifndef ORVA_UTIL_FNP_H
#define ORVA_UTIL_FNP_H

#include <string>

#include "orva/util/export.h"

namespace orva::fnp {

/// True when @p path names something that exists.
ORVA_EXPORT bool exists(const char* path);
/// @copydoc exists(const char*)
ORVA_EXPORT bool exists(const std::string& path);

/// @p s without one trailing '/': "a//" gives "a/".
ORVA_EXPORT std::string clean(const char* s);
/// @copydoc clean(const char*)
ORVA_EXPORT std::string clean(const std::string& s);

/// @p dir and @p name, each cleaned, joined by '/'. An empty @p dir or "." leaves the name alone.
/// A name that begins with '/' gives the empty string, after the two lines "Warning in
/// fnp::fullname" and "Invalid (relative) filename, return empty string" on standard error.
ORVA_EXPORT std::string fullname(const char* dir, const char* name);
/// @copydoc fullname(const char*, const char*)
ORVA_EXPORT std::string fullname(const std::string& dir, std::string name);

/// The text after the last '.' of the last path component, or nothing: "a.tar.gz" gives "gz",
/// "dir.d/file" gives "", ".hidden" gives "hidden".
ORVA_EXPORT std::string extension(const char* s);
/// @copydoc extension(const char*)
ORVA_EXPORT std::string extension(const std::string& s);

/// @p s without its extension and the dot: "/x/a.b.c" gives "/x/a.b", ".hidden" gives "".
ORVA_EXPORT std::string root(const char* s);
/// @copydoc root(const char*)
ORVA_EXPORT std::string root(const std::string& s);

/// The directory part, before the last '/'; empty when there is none: "/a" gives "".
ORVA_EXPORT std::string head(const char* s);
/// @copydoc head(const char*)
ORVA_EXPORT std::string head(const std::string& s);

/// The last path component, after the last '/': "dir/" gives "".
ORVA_EXPORT std::string tail(const char* s);
/// @copydoc tail(const char*)
ORVA_EXPORT std::string tail(const std::string& s);

/// The characters of @p s from position @p from up to, not including, @p to. A @p to of -1 stands
/// for the end, a negative @p from for the start; positions past the end are cut to it.
ORVA_EXPORT std::string copySubString(const std::string& s, int from, int to);

}  // namespace orva::fnp

#endif
