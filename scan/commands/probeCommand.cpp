// What files say about themselves, without decoding them.
#include "scan/commandLine/exitStatus.h"
#include "scan/commandLine/messages.h"
#include "scan/commands/commands.h"
#include "scan/files/json.h"
#include "scan/files/names.h"
#include "scan/record/resultJson.h"

namespace {

void printFacts(const Json& file) {
  std::printf("%s\n", printableName(file["path"].get<std::string>()).c_str());
  for (const auto& fact : file["stream"].items()) {
    const Json& value = fact.value();
    const std::string text = value.is_string() ? value.get<std::string>()
                             : value.is_null() ? "unknown"
                                               : value.dump();
    std::printf("  %-20s %s\n", fact.key().c_str(), text.c_str());
  }
  for (const Json& warning : file["warnings"]) {
    std::printf("  warning: %s\n", warning.get<std::string>().c_str());
  }
}

}  // namespace

int runProbe(const Options& options) {
  av_log_set_level(options.isVerbose ? AV_LOG_INFO : AV_LOG_QUIET);
  int status = DONE;
  Json files = Json::array();
  for (const std::string& path : options.inputs) {
    VideoSource source = options.raw;
    source.path = path;
    VideoReader reader;
    const std::string error = openVideo(source, 1, &reader);
    if (!error.empty()) {
      complain(quoted(path) + ": " + error);
      status = INPUT_PROBLEM;
      continue;
    }
    Json file = {{"path", path},
                 {"stream", streamJson(streamFacts(reader))},
                 {"warnings", streamWarnings(reader)}};
    if (!options.printsJson) printFacts(file);
    files.push_back(std::move(file));
  }
  if (options.printsJson) std::fputs(jsonText(files).c_str(), stdout);
  return finishOutput(status);
}
