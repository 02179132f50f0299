#include "scan/analysis/frameTable.h"

#include <algorithm>
#include <cerrno>
#include <charconv>
#include <cmath>
#include <cstring>
#include <limits>
#include <memory>
#include <string_view>

#include "scan/numbers/decimals.h"

namespace {

constexpr double UNDEFINED = std::numeric_limits<double>::quiet_NaN();
constexpr char FIRST_COLUMNS[] = "frame,pts,time_s,duration_s,keyframe,corrupt";
// What no video reaches, while all that is computed of frames and times stays a number.
constexpr int64_t LAST_FRAME = int64_t{1} << 53;
constexpr double FARTHEST_TIME = 1e30;  // seconds
constexpr size_t LONGEST_LINE = 2048;   // bytes; forty-two numbers of at most 25

// What older files end before.
enum class Form { INDICATORS_ONLY, WITH_MESSAGES, WITH_MEASURES };

std::string headerOf(Form form) {
  std::string text = FIRST_COLUMNS;
  for (const IndicatorInfo& indicator : INDICATOR_TABLE) text += std::string(",") + indicator.name;
  if (form == Form::INDICATORS_ONLY) return text;
  text += ",messages";
  if (form == Form::WITH_MESSAGES) return text;
  text += ",infinite";
  for (const MeasureInfo& measure : MEASURE_TABLE) text += std::string(",") + measure.name;
  return text;
}

size_t columnsOf(Form form) {
  const size_t oldest = 6 + INDICATORS;
  return oldest + (form == Form::INDICATORS_ONLY ? 0 : 1) +
         (form == Form::WITH_MEASURES ? 1 + MEASURES : 0);
}

// Takes the text up to the next comma off the line.
std::string_view nextField(std::string_view* line) {
  const size_t comma = line->find(',');
  const std::string_view field = line->substr(0, comma);
  line->remove_prefix(comma == std::string_view::npos ? line->size() : comma + 1);
  return field;
}

// Reads all of a field. An empty one leaves the number as it is.
template <typename Number>
bool parse(std::string_view field, Number* number) {
  const char* const end = field.data() + field.size();
  if (field.empty()) return true;
  const auto [last, error] = std::from_chars(field.data(), end, *number);
  return error == std::errc() && last == end;
}

bool parseFlag(std::string_view field, bool* flag) {
  *flag = field == "1";
  return *flag || field == "0";
}

// Whether a line has as many fields as the header, and only what shortestText() makes of numbers.
bool hasFormOfRow(std::string_view line, Form form) {
  const auto commas = static_cast<size_t>(std::count(line.begin(), line.end(), ','));
  const bool isNumeric = line.find_first_not_of("0123456789+-.e,") == std::string_view::npos;
  return isNumeric && commas + 1 == columnsOf(form);
}

// One behind the other, as many as there are.
bool parseNumbers(std::string_view* line, double* numbers, size_t count) {
  bool isGood = true;
  for (size_t i = 0; i < count; ++i) {
    numbers[i] = UNDEFINED;
    isGood = isGood && parse(nextField(line), &numbers[i]);
  }
  return isGood;
}

bool parseRow(std::string_view line, Form form, int64_t* frame, FrameRow* row) {
  if (!hasFormOfRow(line, form)) return false;
  *row = {NO_TIMESTAMP, UNDEFINED, UNDEFINED, false, false, {}};
  const std::string_view number = nextField(&line);
  bool isGood = !number.empty() && parse(number, frame) && parse(nextField(&line), &row->pts) &&
                parse(nextField(&line), &row->time) && parse(nextField(&line), &row->duration) &&
                parseFlag(nextField(&line), &row->isKey) &&
                parseFlag(nextField(&line), &row->isCorrupt) &&
                parseNumbers(&line, row->values.data(), INDICATORS) &&
                parse(nextField(&line), &row->messages) && row->messages >= 0;
  if (form == Form::WITH_MEASURES) {
    isGood = isGood && parse(nextField(&line), &row->infinite) &&
             row->infinite < 1U << INDICATORS &&
             parseNumbers(&line, row->measures.data(), MEASURES);
  }
  // Unknown ones are NaN.
  const bool isInRange = *frame >= 0 && *frame <= LAST_FRAME &&
                         !(std::fabs(row->time) > FARTHEST_TIME) &&
                         !(std::fabs(row->duration) > FARTHEST_TIME);
  return isGood && isInRange;
}

}  // namespace

void appendRow(const FrameRow& row, FrameTable* table) {
  table->pts.push_back(row.pts);
  table->time.push_back(row.time);
  table->duration.push_back(row.duration);
  table->isKey.push_back(row.isKey);
  table->isCorrupt.push_back(row.isCorrupt);
  table->messages.push_back(row.messages);
  for (size_t i = 0; i < INDICATORS; ++i) table->values[i].push_back(row.values[i]);
  table->infinite.push_back(row.infinite);
  for (size_t i = 0; i < MEASURES; ++i) table->measures[i].push_back(row.measures[i]);
}

void writeFramesCsv(const FrameTable& table, FILE* out) {
  std::fprintf(out, "%s\r\n", headerOf(Form::WITH_MEASURES).c_str());
  for (int64_t i = 0; i < table.rows(); ++i) {
    const auto row = static_cast<size_t>(i);
    const int64_t pts = table.pts[row];
    std::string line = std::to_string(table.firstFrame + i);
    line += ',' + (pts == NO_TIMESTAMP ? "" : std::to_string(pts));
    line += ',' + shortestText(table.time[row]);
    line += ',' + shortestText(table.duration[row]);
    line += table.isKey[row] ? ",1" : ",0";
    line += table.isCorrupt[row] ? ",1" : ",0";
    for (const Column<double>& column : table.values) line += ',' + shortestText(column[row]);
    line += ',' + std::to_string(table.messages[row]);
    line += ',' + std::to_string(table.infinite[row]);
    for (const Column<double>& column : table.measures) line += ',' + shortestText(column[row]);
    line += "\r\n";
    std::fwrite(line.data(), 1, line.size(), out);
  }
}

std::string readFramesCsv(const std::string& path, FrameTable* table) {
  const std::unique_ptr<FILE, int (*)(FILE*)> in(std::fopen(path.c_str(), "re"), std::fclose);
  if (in == nullptr) return std::strerror(errno);
  *table = {};
  char text[LONGEST_LINE];
  int64_t number = 1;
  Form form = Form::WITH_MEASURES;
  for (; std::fgets(text, sizeof text, in.get()) != nullptr; ++number) {
    std::string_view line = text;
    const std::string place = "line " + std::to_string(number);
    if (line.size() < 2 || line.substr(line.size() - 2) != "\r\n") return place + " has no end";
    line.remove_suffix(2);
    if (number == 1) {
      bool isHeader = false;
      for (const Form known : {Form::INDICATORS_ONLY, Form::WITH_MESSAGES, Form::WITH_MEASURES}) {
        if (line != headerOf(known)) continue;
        form = known;
        isHeader = true;
      }
      if (!isHeader) return place + " is not the header of frames.csv";
      continue;
    }
    int64_t frame = 0;
    FrameRow row;
    if (!parseRow(line, form, &frame, &row)) return place + " is not a row of frames.csv";
    if (table->rows() == 0) table->firstFrame = frame;
    if (frame != table->firstFrame + table->rows())
      return place + " does not follow the one before";
    appendRow(row, table);
  }
  if (std::ferror(in.get()) != 0) return std::strerror(errno);
  return number == 1 ? "line 1 is not the header of frames.csv" : "";
}
