#include "scan/results/resultShape.h"

#include <algorithm>

#include "scan/report/resultFacts.h"

namespace {

struct Part {
  const char* name;
  bool isAsWritten;
};

bool isListOfTexts(const Json& json) {
  return json.is_array() &&
         std::all_of(json.begin(), json.end(), [](const Json& each) { return each.is_string(); });
}

}  // namespace

std::string shapeMistake(const Json& result) {
  const std::string status = textOf(result, "status");
  const bool isFailed = status == "failed";
  const Json& input = memberOf(result, "input");
  const Json& rate = memberOf(input, "frame_rate");
  const Json& analysis = memberOf(result, "analysis");
  const Json& error = memberOf(result, "error");
  const Part parts[] = {
      {"input.path", memberOf(input, "path").is_string()},
      {"input.frame_rate", rate.is_number() || rate.is_null()},
      {"analysis", analysis.is_object() || (isFailed && analysis.is_null())},
      {"analysis.fps", memberOf(analysis, "fps").is_number() || !analysis.is_object()},
      {"status", isFailed || status == "complete" || status == "partial"},
      {"error", error.is_string() || error.is_null()},
      {"truncated", memberOf(result, "truncated").is_boolean()},
      {"verdict", textOf(result, "verdict") == verdictName(verdictOf(result))},
      {"reasons", isListOfTexts(memberOf(result, "reasons"))},
      {"outputs", memberOf(result, "outputs").is_object()},
  };
  for (const Part& part : parts) {
    if (!part.isAsWritten) return std::string(part.name) + " is not what lumascan writes";
  }
  return "";
}
