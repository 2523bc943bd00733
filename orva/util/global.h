/// @file
/// Numbers to text and back, the environment, a shell command, and the notice of an unexpected bug.
///
/// All text is the same in every locale: the decimal point is a point. Lack of memory throws
/// std::bad_alloc.
///
/// @code
/// #include "orva/util/global.h"
/// std::string label = orva::toString(7);      // "7"
/// std::string share = orva::toString(0.5f);   // "0.500000"
/// @endcode
#ifndef ORVA_UTIL_GLOBAL_H
#define ORVA_UTIL_GLOBAL_H

#include <string>

#include "orva/util/export.h"

namespace orva {

/// A copy of @p s.
ORVA_EXPORT std::string toString(const std::string& s);

/// @p s as a string; a null pointer gives the empty string.
ORVA_EXPORT std::string toString(const char* s);

/// @p v in decimal, as "%d" writes it.
ORVA_EXPORT std::string toString(int v);

/// @p v with six decimals and no exponent, as "%f" writes it.
ORVA_EXPORT std::string toString(float v);

/// @p v with six decimals and an exponent, as "%e" writes it. Intended to differ from the float
/// form.
ORVA_EXPORT std::string toString(double v);

/// The whole number at the start of @p s, after white space: "12abc" gives 12, "7.9" gives 7.
/// A text without a number gives 0; one out of range gives the nearest int.
ORVA_EXPORT int toInt(std::string& s);

/// The number at the start of @p s, after white space. A text without a number, or with a cut-off
/// exponent such as "12e", gives 0; one out of range gives the nearest finite float.
ORVA_EXPORT float toFloat(std::string& s);

/// The value of the environment variable @p name.
/// @throws std::logic_error when the variable is not set: ask only for variables that must be
/// there.
ORVA_EXPORT std::string getEnv(const std::string& name);

/// Runs @p cmd in the system's shell and returns the status that the C function `system` gives.
ORVA_EXPORT int execSysCmd(const std::string& cmd);

/// Writes a four-line notice of an unexpected bug in @p where to standard error, and returns.
ORVA_EXPORT void reportBugInfo(const std::string& where);

}  // namespace orva

#endif
