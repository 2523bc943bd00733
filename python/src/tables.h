// Tables of objects, regions and centers as they pass between Python and the library.
#ifndef ORVA_PYTHON_TABLES_H
#define ORVA_PYTHON_TABLES_H

#include "formats/detections.h"
#include "orva/detect/measure.h"
#include "python/src/arrays.h"
#include "python/src/objects.h"

namespace orva_python {

// A row of the table of regions.
struct Region {
  orva::detect::ObjectMeasures measures;
  float score;         // not a number where there is none
  bool touchesBorder;  // that of the measures, for the last column
};

// A row of the table of centers.
struct CenterRow {
  int x;
  int y;
  float weight;
};

using RegionTable = py::array_t<Region, py::array::c_style>;
using CenterTable = py::array_t<CenterRow, py::array::c_style>;

// The rows of tables, for the command's tables.
orva::formats::Detections detectionsIn(const ObjectTable& table,
                                       const orva::formats::ImageFacts& facts);
orva::formats::Detections detectionsIn(const RegionTable& table,
                                       const orva::formats::ImageFacts& facts);
orva::formats::Detections detectionsIn(const CenterTable& table,
                                       const orva::formats::ImageFacts& facts);

}  // namespace orva_python

#endif
