#include "formats/table_file.h"

#include <memory>
#include <utility>

#include "formats/geojson.h"
#include "formats/gzip.h"
#include "formats/text.h"

namespace orva::formats {

FileContent tableFile(const std::filesystem::path& path, std::vector<Detections> images,
                      TableFormat format) {
  if (format != TableFormat::kGeoJson) return {path, encodeTable(images, format, path.string())};
  const auto kept = std::make_shared<const std::vector<Detections>>(std::move(images));
  const bool isCompressed = extensionOf(path.string()) == ".gz";
  return {path, "", [kept, isCompressed](const Append& append) {
            if (!isCompressed) return writeGeoJson(*kept, append);
            GzipEncoder encoder(append);
            writeGeoJson(*kept, [&](std::string_view text) { encoder.append(text); });
            encoder.finish();
          }};
}

}  // namespace orva::formats
