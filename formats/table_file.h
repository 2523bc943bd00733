// Tables as files.
#ifndef ORVA_FORMATS_TABLE_FILE_H
#define ORVA_FORMATS_TABLE_FILE_H

#include <filesystem>
#include <vector>

#include "formats/output_file.h"
#include "formats/result_table.h"

namespace orva::formats {

// The file of encodeTable(). GeoJSON, which is long, is made while it is written.
FileContent tableFile(const std::filesystem::path& path, std::vector<Detections> images,
                      TableFormat format);

}  // namespace orva::formats

#endif
