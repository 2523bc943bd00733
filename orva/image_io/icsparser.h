/// @file
/// The header of an ICS image pair: sizes, pixel type, data set and byte order. For C and C++.
///
/// @code
/// #include "orva/image_io/icsparser.h"
/// char *dataset, *type;
/// int x, y, z, c, t, bigEndian;
/// if (parse_ics_header_file("nuclei.ics", &dataset, &type, &x, &y, &z, &c, &t, &bigEndian) == 1) {
///   printf("%s: %d x %d pixels of type %s\n", dataset, x, y, type);
/// }
/// free(dataset);
/// free(type);
/// @endcode
#ifndef ORVA_IMAGE_IO_ICSPARSER_H
#define ORVA_IMAGE_IO_ICSPARSER_H

#include "orva/util/export.h"

#ifdef __cplusplus
extern "C" {
#endif

/// Reads the header @p filename. Returns 1, or 0 when the file cannot be read or names no known
/// pixel type. In the latter case all results but the type are stored all the same. A file that can
/// not be read is reported on standard error:
/// @verbatim
/// In parse_ics_header_file:
/// could not open NAME
/// @endverbatim
///
/// Keywords are case-sensitive and found anywhere in a line, which is intended ("filename", "layout
/// order", "layout sizes", "representation format", "representation byte_order"); the values are
/// the words behind them, their case is free. Later lines of a keyword continue the list of values
/// of the first. Numbers are read as atoi does, 0 for no number.
///
/// @param filename   a C string; null is a file that cannot be read
/// @param dataset    receives the first value of filename, or null: a copy that the caller frees
/// @param type       receives "BYTE", "USHORT", "SHORT", "UINT", "INT", "FLOAT", "RGB", "SHORTRGB",
///                   "INTRGB", "FLOATRGB" or "RGBA", a copy that the caller frees; null with a
///                   result of 0
/// @param x,y,z,c,t  receive the sizes; 1 for z and 0 for the others when the header has none
/// @param bigEndian  receives 1 or 0 for the byte order, 1 when the header has none; not written
///                   when the file cannot be read
///
/// A null result pointer is passed over. Parses may run at the same time.
ORVA_EXPORT int parse_ics_header_file(const char* filename, char** dataset, char** type, int* x,
                                      int* y, int* z, int* c, int* t, int* bigEndian);

#ifdef __cplusplus
}
#endif

#endif
