#include "web/native/operations.h"

#include <cstddef>
#include <stdexcept>
#include <utility>

#include "orva/detect/measure.h"
#include "web/native/encoding.h"

namespace orva::web {
namespace {

template <class Pixel>
std::vector<int> pixelsOf(const image<Pixel>& labels) {
  return {labels.pixels(), labels.pixels() + labels.npix()};
}

std::vector<double> rowsOf(const std::vector<detect::ObjectMeasures>& regions) {
  std::vector<double> rows;
  for (const detect::ObjectMeasures& region : regions) {
    for (const detect::MeasureColumn& column : detect::measureColumns()) {
      rows.push_back(column.of(region));
    }
    rows.push_back(region.touchesBorder ? 1 : 0);
  }
  return rows;
}

Answer find(const Json& request) {
  const auto img = imageIn(request.at("image"));
  detect::FindResult result = detect::findObjects(*img, findSettingsIn(request.at("options")));
  Answer answer;
  answer.json["settings"] = jsonOf(result.used);
  answer.objects = std::move(result.objects);
  return answer;
}

Answer estimate(const Json& request) {
  Answer answer;
  answer.json["settings"] = jsonOf(detect::estimateSettings(*imageIn(request.at("image"))));
  return answer;
}

void addRegions(Answer& answer, const image<int>& labels, const Json& request, const Image& img) {
  const auto other = request.contains("measured") ? imageIn(request.at("measured")) : nullptr;
  answer.numbers = rowsOf(detect::measureObjects(labels, other ? *other : img));
  answer.labels = pixelsOf(labels);
}

// The regions of the objects that are given, or of those that are found.
Answer segment(const Json& request) {
  const auto img = imageIn(request.at("image"));
  const Json& options = request.at("options");
  const detect::SegmentSettings settings = segmentSettingsIn(options);
  Answer answer;
  if (request.contains("objects")) {
    const std::vector<detect::Object> objects = objectsIn(request.at("objects"));
    const detect::Segmentation segmented = detect::segmentObjects(*img, objects, settings);
    for (const std::size_t k : segmented.kept) answer.objects.push_back(objects[k]);
    addRegions(answer, segmented.labels, request, *img);
  } else {
    detect::SegmentedImage segmented =
        detect::segmentImage(*img, findSettingsIn(options), settings);
    answer.json["settings"] = jsonOf(segmented.used);
    answer.objects = std::move(segmented.objects);
    addRegions(answer, segmented.labels, request, *img);
  }
  return answer;
}

Answer measureLabels(const Json& request) {
  Answer answer;
  answer.numbers =
      rowsOf(detect::measureObjects(labelsIn(request.at("labels")), *imageIn(request.at("image"))));
  return answer;
}

Answer measure(const Json& request) {
  const auto img = imageIn(request.at("image"));
  const formats::ThresholdedRegions regions =
      formats::regionsOf(*img, regionSettingsIn(request.at("options")));
  Answer answer;
  answer.json["threshold"] = regions.threshold;
  const formats::Detections table = formats::detectionsOf({}, regions);
  for (const formats::Column& column : table.columns) {
    answer.json["columns"].push_back(column.name);
  }
  answer.numbers = table.values;
  answer.labels = pixelsOf(regions.labels);
  return answer;
}

Answer vote(const Json& request) {
  const auto img = imageIn(request.at("image"));
  const voting::VoteResult result =
      voting::findCenters(*img, voteSettingsIn(request.at("options")));
  Answer answer;
  answer.json["settings"] = {{"coneWidth", result.used.coneWidth},
                             {"sigma", result.used.sigma},
                             {"gradient", result.used.gradient}};
  for (const voting::Center& c : result.centers) {
    const double x = c.x;
    const double y = c.y;
    answer.numbers.insert(answer.numbers.end(), {x, y, double{c.weight}});
  }
  return answer;
}

Answer encode(const Json& request) {
  Answer answer;
  answer.bytes = encoded(request);
  return answer;
}

}  // namespace

Answer perform(const Json& request) {
  const auto name = request.at("do").get<std::string>();
  if (name == "estimate") return estimate(request);
  if (name == "find") return find(request);
  if (name == "segment") return segment(request);
  if (name == "measure") return measure(request);
  if (name == "measureLabels") return measureLabels(request);
  if (name == "vote") return vote(request);
  if (name == "encode") return encode(request);
  throw std::invalid_argument("no operation " + name);
}

}  // namespace orva::web
