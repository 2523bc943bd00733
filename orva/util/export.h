/// @file
/// Marks what the shared library offers to its callers; everything else is built hidden.
#ifndef ORVA_UTIL_EXPORT_H
#define ORVA_UTIL_EXPORT_H

/// Stands before a class or function of the shared library.
#define ORVA_EXPORT __attribute__((visibility("default")))

#endif
