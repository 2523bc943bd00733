#include <algorithm>
#include <cstddef>
#include <ctime>
#include <iomanip>
#include <locale>
#include <ostream>
#include <sstream>
#include <string_view>
#include <utility>

#include "orva/image_io/image_io.h"
#include "orva/util/global.h"

namespace orva::image_io {
namespace {

constexpr std::string_view kAnnotation = "history\tAnnotation\t";

// How the two records put an item on a line: one leaves out empty items, the other does not. The
// difference is intended.
enum class EmptyItems { kLeftOut, kWritten };

void append(std::string& line, const std::string& item, EmptyItems rule) {
  if (item.empty() && rule == EmptyItems::kLeftOut) return;
  line += '\t';
  line += item;
}

std::string lineOf(std::string start, const std::vector<std::string>& items, EmptyItems rule) {
  for (const std::string& item : items) append(start, item, rule);
  return start;
}

std::string sampleLine(const std::string& a, const std::string& b, const std::string& c, float f1,
                       float f2, const std::string& d, EmptyItems rule) {
  return lineOf("Sample", {a, b, c, toString(f1), toString(f2), d}, rule);
}

// Nothing for an empty list.
void addPropertyLine(std::vector<std::string>& properties, const std::vector<std::string>& items,
                     EmptyItems rule) {
  if (items.empty()) return;
  properties.push_back(lineOf(items.front(), {items.begin() + 1, items.end()}, rule));
}

// Takes the current time in seconds and as header lines.
void takeTime(int& seconds, std::string& dateLine, std::string& secondsLine) {
  constexpr std::size_t kLongest = 30;
  const std::time_t now = std::time(nullptr);
  std::tm local{};
  tzset();  // the time zone may have changed since the last call
  localtime_r(&now, &local);
  std::ostringstream text;
  text.imbue(std::locale::classic());
  text << std::put_time(&local, "%a %b %d %X %Z %Y");
  seconds = static_cast<int>(now);
  dateLine = "history\tdate\t" + text.str().substr(0, kLongest);
  secondsLine = "history\tUTC_seconds\t" + toString(seconds);
}

void writeLine(std::ostream& out, const std::string& line) {
  if (!line.empty()) out << line << '\n';
}

void writeLineOr(std::ostream& out, const std::string& line, const char* otherwise) {
  out << (line.empty() ? otherwise : line) << '\n';
}

// The lines that both records write alike, from the date to the properties.
void writeHistory(std::ostream& out, const std::string& date, const std::string& seconds,
                  const std::string& scope, const std::string& sample,
                  const std::vector<std::string>& properties) {
  writeLineOr(out, date, "history\tdate\tUNDEFINED");
  writeLineOr(out, seconds, "history\tUTC_seconds\tUNDEFINED");
  writeLineOr(out, scope, "history\tScope\tUNDEFINED");
  writeLine(out, sample);
  for (const std::string& property : properties) writeLine(out, property);
}

void writeAnnotation(std::ostream& out, const std::string& annotation) {
  if (annotation.empty()) {
    out << kAnnotation << "NONE";
  } else {
    out << annotation;
  }
}

}  // namespace

IcsInfo::IcsInfo(std::string datasetName) : datasetName_(std::move(datasetName)) {}

std::string IcsInfo::datasetName() const {
  return channelName_.empty() ? datasetName_ : datasetName_ + "_" + channelName_;
}

void IcsInfo::setWithCurrentTime() { takeTime(utcSeconds_, date_, utcSecondsLine_); }

void IcsInfo::setWithChannelInfo(const std::string& exFilter, const std::string& exposure,
                                 char channel) {
  exFilter_ = lineOf("parameter\tex_filter", {exFilter}, EmptyItems::kLeftOut);
  exposure_ = lineOf("parameter\texp_time", {exposure}, EmptyItems::kLeftOut);
  channelName_ = std::string(1, channel);
}

void IcsInfo::setScope(const std::string& scope) {
  scope_ = lineOf("history\tScope", {scope}, EmptyItems::kLeftOut);
}

void IcsInfo::setSample(const std::string& a, const std::string& b, const std::string& c, float f1,
                        float f2, const std::string& d) {
  sample_ = sampleLine(a, b, c, f1, f2, d, EmptyItems::kLeftOut);
}

void IcsInfo::addProperty(const std::vector<std::string>& items) {
  addPropertyLine(properties_, items, EmptyItems::kLeftOut);
}

void IcsInfo::annotate(const std::string& text) {
  annotation_.clear();
  annotation_.reserve(text.size() + 4 * kAnnotation.size());
  bool atLineStart = true;
  for (const char c : text) {
    if (atLineStart) annotation_ += kAnnotation;
    annotation_ += c;
    atLineStart = c == '\n';
  }
}

void IcsInfo::addParagraph(const std::string& text) { paragraph_ += text; }

std::ostream& operator<<(std::ostream& out, const IcsInfo& info) {
  writeLine(out, info.exFilter_);
  writeLine(out, info.exposure_);
  writeHistory(out, info.date_, info.utcSecondsLine_, info.scope_, info.sample_, info.properties_);
  out << info.paragraph_;
  writeAnnotation(out, info.annotation_);
  return out;
}

MultiChannelIcsInfo::MultiChannelIcsInfo(std::string datasetName)
    : datasetName_(std::move(datasetName)) {}

void MultiChannelIcsInfo::setWithCurrentTime() { takeTime(utcSeconds_, date_, utcSecondsLine_); }

void MultiChannelIcsInfo::setWithChannelInfo(const std::string& exFilter,
                                             const std::string& exposure, char channel) {
  exFilters_.push_back(lineOf("parameter\tex_filter", {exFilter}, EmptyItems::kWritten));
  exposures_.push_back(lineOf("parameter\texp_time", {exposure}, EmptyItems::kWritten));
  channelNames_.emplace_back(1, channel);
}

void MultiChannelIcsInfo::setScope(const std::string& scope) {
  scope_ = lineOf("history\tScope", {scope}, EmptyItems::kWritten);
}

void MultiChannelIcsInfo::setSample(const std::string& a, const std::string& b,
                                    const std::string& c, float f1, float f2,
                                    const std::string& d) {
  sample_ = sampleLine(a, b, c, f1, f2, d, EmptyItems::kWritten);
}

void MultiChannelIcsInfo::addProperty(const std::vector<std::string>& items) {
  addPropertyLine(properties_, items, EmptyItems::kWritten);
}

void MultiChannelIcsInfo::annotate(const std::string& text) {
  annotation_ = std::string(kAnnotation) + text;
}

std::ostream& operator<<(std::ostream& out, const MultiChannelIcsInfo& info) {
  const std::size_t n = std::min(info.exFilters_.size(), info.exposures_.size());
  for (std::size_t i = 0; i < n; ++i) {
    out << info.exFilters_[i] << '\n' << info.exposures_[i] << '\n';
  }
  if (n == 0) out << "parameter\tex_filter\tUNDEFINED\nparameter\texp_time\tUNDEFINED\n";
  writeHistory(out, info.date_, info.utcSecondsLine_, info.scope_, info.sample_, info.properties_);
  writeAnnotation(out, info.annotation_);
  return out;
}

}  // namespace orva::image_io
