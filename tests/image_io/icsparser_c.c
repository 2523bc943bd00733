/* The ICS header parser called from C. */
#include <stdlib.h>
#include <string.h>

#include "orva/image_io/icsparser.h"

/* The header twice in a row. */
#include "orva/image_io/icsparser.h"

int product_of_sizes_from_c(const char* filename, const char* dataset_wanted,
                            const char* type_wanted);

/* x * y * z * c * t, or -1 when a text or the byte order is not the one wanted. */
int product_of_sizes_from_c(const char* filename, const char* dataset_wanted,
                            const char* type_wanted) {
  int (*parse)(const char*, char**, char**, int*, int*, int*, int*, int*, int*) =
      parse_ics_header_file;
  char* dataset;
  char* type;
  int x, y, z, c, t, big_endian = 7;
  int product = -1;
  if (parse(filename, &dataset, &type, &x, &y, &z, &c, &t, &big_endian) == 1 &&
      strcmp(dataset, dataset_wanted) == 0 && strcmp(type, type_wanted) == 0 && big_endian == 1) {
    product = x * y * z * c * t;
  }
  free(dataset);
  free(type);
  return product;
}
