// What files say about themselves, without decoding them.
#include "scan/commandLine/exitStatus.h"
#include "scan/commandLine/inputs.h"
#include "scan/commandLine/messages.h"
#include "scan/commands/commands.h"
#include "scan/files/json.h"
#include "scan/files/names.h"
#include "scan/processes/childProcess.h"
#include "scan/record/resultJson.h"

namespace {

std::string shownText(const Json& value) {
  return value.is_string() ? printableName(value.get<std::string>())
         : value.is_null() ? "unknown"
                           : value.dump();
}

void printFact(const std::string& name, const std::string& value) {
  std::printf("  %-20s %s\n", name.c_str(), value.c_str());
}

void printFacts(const Json& file) {
  std::printf("%s\n", printableName(textOf(file, "path")).c_str());
  const Json& stream = memberOf(file, "stream");
  for (const auto& fact : stream.items()) {
    if (!fact.value().is_array()) printFact(printableName(fact.key()), shownText(fact.value()));
  }
  for (const Json& audio : memberOf(stream, "audio")) {
    std::string facts;
    for (const auto& fact : audio.items()) {
      facts +=
          (facts.empty() ? "" : ", ") + printableName(fact.key()) + ' ' + shownText(fact.value());
    }
    printFact("audio", facts);
  }
  for (const std::string& warning : textsOf(file, "warnings")) {
    std::printf("  warning: %s\n", printableName(warning).c_str());
  }
}

// What a video says about itself, or why it says nothing, as JSON text.
std::string probed(const VideoSource& source, bool isConfined, int64_t memoryLimit) {
  limitMemory(memoryLimit);
  std::string mistake = isConfined ? confineProcess("") : "";
  if (!mistake.empty()) return jsonText({{"error", "cannot confine a process: " + mistake}});
  VideoReader reader;
  const std::string error = openVideo(source, 1, &reader);
  if (!error.empty()) return jsonText({{"error", error}});
  return jsonText({{"path", source.path},
                   {"stream", streamJson(streamFacts(reader))},
                   {"warnings", streamWarnings(reader)}});
}

}  // namespace

int runProbe(const Options& options) {
  av_log_set_level(options.isVerbose ? AV_LOG_INFO : AV_LOG_QUIET);
  SandboxFacts sandbox;
  if (!chooseSandbox(options, &sandbox)) return OUTPUT_PROBLEM;
  std::vector<std::string> problems;
  const std::vector<VideoSource> sources = findInputs(options, &problems);
  for (const std::string& problem : problems) complain(problem);
  int status = problems.empty() ? DONE : INPUT_PROBLEM;
  Json files = Json::array();
  for (const VideoSource& source : sources) {
    VideoSource open = source;
    open.file = fileOf(source);
    const ChildRun run = runInChild([&] { return probed(open, sandbox.isOn, options.memoryLimit); },
                                    open.file->descriptor);
    showLog(run.log);
    Json file = parsedJson(run.text);
    if (!run.ending.empty()) file = {{"error", "its probe ended by " + run.ending}};
    if (!memberOf(file, "stream").is_object()) {
      complain(quoted(source.path) + ": " + textOf(file, "error"));
      status = INPUT_PROBLEM;
      continue;
    }
    if (!options.printsJson) printFacts(file);
    files.push_back(std::move(file));
  }
  if (options.printsJson) std::fputs(jsonText(files).c_str(), stdout);
  return finishOutput(status);
}
