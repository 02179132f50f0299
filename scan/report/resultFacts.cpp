#include "scan/report/resultFacts.h"

#include <fmt/core.h>
#include <cmath>

#include "scan/numbers/unknown.h"
#include "scan/report/pagePieces.h"
#include "scan/report/timeline.h"

namespace {

std::string sizeText(double bytes) {
  constexpr const char* UNITS[] = {"bytes", "kB", "MB", "GB", "TB", "PB"};
  size_t unit = 0;
  while (bytes >= 1000.0 && unit + 1 < std::size(UNITS)) {
    bytes /= 1000.0;
    ++unit;
  }
  return fmt::format(unit == 0 ? "{:.0f} {}" : "{:.1f} {}", bytes, UNITS[unit]);
}

std::string rateText(double rate) {
  return std::isnan(rate) ? "" : fmt::format("{:.6g} per second", rate);
}

std::string pictureText(const StreamFacts& stream) {
  std::string text = fmt::format("{} \xc3\x97 {}", stream.width, stream.height);
  const std::string& aspect = stream.sampleAspectRatio;
  if (!aspect.empty() && aspect != "1:1" && aspect != "0:1") text += ", samples " + aspect;
  const bool isTurned = stream.rotation != 0.0 && !std::isnan(stream.rotation);
  return isTurned ? fmt::format("{}, rotated {:.0f}\xc2\xb0", text, stream.rotation) : text;
}

std::string joined(const std::vector<std::string>& parts, const char* separator) {
  std::string text;
  for (const std::string& part : parts) {
    if (!part.empty()) text += (text.empty() ? "" : separator) + part;
  }
  return text;
}

std::string framesText(const AnalysisFacts& analysis) {
  if (!analysis.frames) return "";
  std::string text = std::to_string(*analysis.frames);
  if (analysis.firstFrame > 0) text += ", from frame " + std::to_string(analysis.firstFrame);
  return text;
}

// "1 event", "2 events"; empty when it is unknown how many.
std::string countText(const std::optional<int64_t>& count, const std::string& one) {
  return count ? std::to_string(*count) + ' ' + one + (*count == 1 ? "" : "s") : "";
}

std::string damageText(const AnalysisFacts& analysis) {
  const std::optional<int64_t>& corrupt = analysis.corruptFrames;
  const std::optional<int64_t>& errors = analysis.decodeErrors;
  if (!corrupt && !errors) return "";
  const bool isSaid = analysis.messages > 0;
  if (corrupt.value_or(0) <= 0 && errors.value_or(0) <= 0 && !isSaid) return "none";
  return joined({countText(corrupt, "damaged frame"), countText(errors, "decoding error"),
                 isSaid ? countText(analysis.messages, "message") : ""},
                ", ");
}

}  // namespace

const char* verdictTitle(Verdict verdict) {
  switch (verdict) {
    case Verdict::PASS:
      return "Pass";
    case Verdict::ATTENTION:
      return "Attention";
    case Verdict::FAIL:
      return "Fail";
    default:
      return "Incomplete";
  }
}

std::string nameOf(const ResultRecord& record) {
  const std::string& path = record.input.path;
  const size_t slash = path.find_last_of('/');
  return slash == std::string::npos || slash + 1 == path.size() ? path : path.substr(slash + 1);
}

double frameRateOf(const ResultRecord& record) {
  const double analysed = record.analysis ? record.analysis->fps : UNKNOWN;
  const double declared = record.input.stream ? record.input.stream->frameRate : UNKNOWN;
  return std::isnan(analysed) ? declared : analysed;
}

double durationOf(const ResultRecord& record) {
  const double analysed = record.analysis ? record.analysis->end - record.analysis->start : UNKNOWN;
  const double declared = record.input.stream ? record.input.stream->declaredDuration : UNKNOWN;
  return std::isnan(analysed) ? declared : analysed;
}

bool isSparse(size_t indicator) {
  return indicator == indicatorNamed("flickering");
}

std::string words(std::string_view key) {
  std::string text(key);
  for (char& c : text) c = c == '_' ? ' ' : c;
  return text;
}

std::string roughText(double value) {
  return std::isnan(value) ? DASH : fmt::format("{:.4g}", value);
}

std::vector<Fact> factsOf(const ResultRecord& record) {
  constexpr double WORTH_SAYING = 1.0;  // seconds
  const StreamFacts stream = record.input.stream.value_or(StreamFacts{});
  const AnalysisFacts analysis = record.analysis.value_or(AnalysisFacts{});
  const std::optional<Fingerprint>& fingerprint = record.input.fingerprint;
  const double duration = durationOf(record);
  std::string durationFact = std::isnan(duration) ? "" : durationText(duration);
  if (std::fabs(stream.declaredDuration - duration) >= WORTH_SAYING) {
    durationFact += " of " + durationText(stream.declaredDuration) + " declared";
  }

  const std::vector<Fact> facts = {
      {"Path", record.input.path},
      {"Codec", joined({stream.codec, stream.pixelFormat}, ", ")},
      {"Container", stream.container},
      {"Picture", record.input.stream ? pictureText(stream) : ""},
      {"Frame rate", rateText(stream.frameRate)},
      {"Duration", durationFact},
      {"Frames", framesText(analysis)},
      {"Damage", damageText(analysis)},
      {"Fields", stream.fieldOrder},
      {"Colour", joined({stream.colorRange, stream.colorTransfer}, ", ")},
      {"Luma", record.analysis ? lumaPathName(analysis.lumaPath) : ""},
      {"File size", fingerprint ? sizeText(static_cast<double>(fingerprint->size)) : ""},
      {"Checksum", fingerprint ? fingerprint->checksum : ""},
      {"Analysed by", joined({"lumascan", record.toolVersion}, " ")},
  };
  std::vector<Fact> known;
  for (const Fact& fact : facts) {
    if (!fact.text.empty()) known.push_back(fact);
  }
  return known;
}
