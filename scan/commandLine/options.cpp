#include "scan/commandLine/options.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <map>
#include <tuple>

#include "scan/commandLine/exitStatus.h"
#include "scan/commandLine/messages.h"
#include "scan/version.h"

namespace {

constexpr char USUAL_OUTPUT[] = "lumascan-results";
constexpr IndicatorMask ALL_INDICATORS = 0x7fff;

// Names separated by commas, or the mask as lumaprobe takes it.
std::string parseIndicators(const std::string& text, IndicatorMask* mask) {
  const bool isNumber = !text.empty() && text[0] >= '0' && text[0] <= '9';
  if (isNumber) {
    char* end = nullptr;
    const unsigned long value = std::strtoul(text.c_str(), &end, 0);
    *mask = static_cast<IndicatorMask>(value) & ALL_INDICATORS;
    if (*end != '\0' || *mask == 0) return "\"" + text + "\" requests no indicator";
    return "";
  }
  *mask = 0;
  for (const std::string& name : CLI::detail::split(text, ',')) {
    const size_t i = indicatorNamed(name);
    if (i == INDICATORS) return "there is no indicator \"" + name + "\"";
    *mask |= IndicatorMask{1} << i;
  }
  return "";
}

std::string parseFormats(const std::string& text, OutputChoice* choice) {
  choice->hasCsv = false;
  choice->hasHtml = false;
  for (const std::string& name : CLI::detail::split(text, ',')) {
    if (name == "csv") {
      choice->hasCsv = true;
    } else if (name == "html") {
      choice->hasHtml = true;
    } else if (name != "json") {
      return "there is no format \"" + name + "\": csv, json and html are known";
    }
  }
  return "";
}

bool isRate(const std::string& text) {
  AVRational rate = {0, 1};
  return av_parse_video_rate(&rate, text.c_str()) == 0 && rate.num > 0;
}

// A number or a fraction, of frames per second.
std::string parseFps(const std::string& text, double* fps) {
  const char* const end = text.data() + text.size();
  double numerator = 0.0;
  double denominator = 1.0;
  std::from_chars_result read = std::from_chars(text.data(), end, numerator);
  if (read.ec == std::errc() && read.ptr != end && *read.ptr == '/') {
    read = std::from_chars(read.ptr + 1, end, denominator);
  }
  *fps = numerator / denominator;
  const bool isWhole = read.ec == std::errc() && read.ptr == end;
  const bool isGood = isWhole && numerator > 0.0 && *fps > 0.0 && std::isfinite(*fps);
  return isGood ? ""
                : "\"" + text + "\" is neither a number above 0 nor a fraction like 30000/1001";
}

// WxH@FPS
std::string parseRaw(const std::string& text, VideoSource* raw) {
  std::string mistake = "\"" + text + "\" is not of the form WIDTHxHEIGHT@FPS";
  const char* const end = text.data() + text.size();
  const auto w = std::from_chars(text.data(), end, raw->rawWidth);
  if (w.ec != std::errc() || w.ptr == end || *w.ptr != 'x') return mistake;
  const auto h = std::from_chars(w.ptr + 1, end, raw->rawHeight);
  if (h.ec != std::errc() || h.ptr == end || *h.ptr != '@') return mistake;
  raw->rawRate = h.ptr + 1;
  const bool isGood = raw->rawWidth > 0 && raw->rawHeight > 0 && isRate(raw->rawRate);
  return isGood ? "" : mistake;
}

// What an option's text is turned into by one of the functions above; CLI11 reports what they say.
template <typename Target>
void addParsed(CLI::App* app, const std::string& name, const std::string& form,
               const std::string& help, std::string (*parse)(const std::string&, Target*),
               Target* target) {
  app->add_option_function<std::string>(
         name,
         [=](const std::string& text) {
           const std::string mistake = parse(text, target);
           if (!mistake.empty()) throw CLI::ValidationError(name, mistake);
         },
         help)
      ->type_name(form);
}

std::string parsePlace(const std::string& text, Position* position) {
  return parsePosition(text, position)
             ? ""
             : "\"" + text + "\" is neither seconds nor a timecode nor f:FRAME";
}

// The pattern's brackets end; fnmatch() takes one that does not for itself.
std::string mistakeIn(const std::vector<std::string>& patterns) {
  for (const std::string& pattern : patterns) {
    for (size_t i = 0; i < pattern.size(); ++i) {
      if (pattern[i] == '\\') {
        if (++i == pattern.size()) return "\"" + pattern + "\" ends with a backslash";
      } else if (pattern[i] == '[') {
        const bool isNegated = pattern.find_first_of("!^", i + 1) == i + 1;
        i = pattern.find(']', i + (isNegated ? 3 : 2));  // one that comes first is meant itself
        if (i == std::string::npos) return "the bracket in \"" + pattern + "\" has no end";
      }
    }
  }
  return "";
}

std::string parseSeverity(const std::string& text, std::optional<Severity>* severity) {
  for (const Severity each : {Severity::INFO, Severity::WARN, Severity::FAIL}) {
    if (text == severityName(each)) *severity = each;
  }
  return severity->has_value() ? "" : "\"" + text + "\" is not one of info, warn and fail";
}

std::string refuseEmpty(const std::string& text) {
  return text.empty() ? "a name is missing" : "";
}

// CLI11's own checks of ranges let it through.
std::string refuseNan(const std::string& text) {
  return std::isnan(std::strtod(text.c_str(), nullptr)) ? "\"" + text + "\" is no number" : "";
}

std::string parseThumbs(const std::string& text, Thumbs* thumbs) {
  for (const Thumbs each : {Thumbs::NONE, Thumbs::EVENTS, Thumbs::ALL}) {
    if (text != thumbsName(each)) continue;
    *thumbs = each;
    return "";
  }
  return "\"" + text + "\" is not one of none, events and all";
}

std::string parseProgress(const std::string& text, ProgressStyle* style) {
  static const std::map<std::string, ProgressStyle> STYLES = {{"auto", ProgressStyle::AUTO},
                                                              {"bar", ProgressStyle::BAR},
                                                              {"plain", ProgressStyle::PLAIN},
                                                              {"json", ProgressStyle::JSON},
                                                              {"none", ProgressStyle::NONE}};
  const auto found = STYLES.find(text);
  if (found == STYLES.end()) {
    return "\"" + text + "\" is not one of auto, bar, plain, json and none";
  }
  *style = found->second;
  return "";
}

std::string parseSandbox(const std::string& text, SandboxMode* mode) {
  static const std::map<std::string, SandboxMode> MODES = {
      {"auto", SandboxMode::AUTO}, {"require", SandboxMode::REQUIRE}, {"off", SandboxMode::OFF}};
  const auto found = MODES.find(text);
  if (found == MODES.end()) return "\"" + text + "\" is not one of auto, require and off";
  *mode = found->second;
  return "";
}

// WxH, or their product.
std::string parsePixels(const std::string& text, int64_t* pixels) {
  constexpr int64_t MOST = 1 << 30;
  const char* const end = text.data() + text.size();
  int64_t height = 1;
  std::from_chars_result read = std::from_chars(text.data(), end, *pixels);
  if (read.ec == std::errc() && read.ptr != end && *read.ptr == 'x')
    read = std::from_chars(read.ptr + 1, end, height);
  const bool isWhole = read.ec == std::errc() && read.ptr == end;
  const bool isGood = isWhole && *pixels > 0 && *pixels <= MOST && height > 0 && height <= MOST;
  if (!isGood) return "\"" + text + "\" is neither a number of pixels nor WIDTHxHEIGHT";
  *pixels *= height;
  return "";
}

// The libraries alone need 30 MB.
std::string refuseTooLittle(const std::string& bytes) {
  const double number = std::strtod(bytes.c_str(), nullptr);
  const bool isEnough = number == 0.0 || (number >= 64 << 20 && number <= 0x1p62);
  return isEnough ? "" : "\"" + bytes + "\" bytes are neither 0 nor 64M and more";
}

void addLimits(CLI::App* app, Options* options) {
  addParsed(app, "--sandbox", "MODE",
            "confine what decodes to its video and its results: auto (where the system can; the"
            " usual), require or off",
            parseSandbox, &options->sandbox);
  addParsed(app, "--max-pixels", "N|WxH", "of larger pictures none is decoded (16384x16384)",
            parsePixels, &options->raw.maxPixels);
  app->add_option("--memory-limit", options->memoryLimit,
                  "for each file at once, at least 64M; 0: all there is (4G)")
      ->type_name("SIZE")
      ->transform(CLI::Validator(CLI::AsSizeValue(false)).description(""))
      ->check(refuseTooLittle);
}

void addStream(CLI::App* app, Options* options) {
  app->add_option("--stream", options->raw.stream,
                  "number of the video's stream in the file, from 0 (the main video)")
      ->type_name("N")
      ->check(CLI::NonNegativeNumber);
}

void addDisarming(CLI::App* app, Options* options) {
  app->add_flag("--disarm-cells", options->isDisarmed,
                "begin names with ' in tables that a spreadsheet would take for formulas");
}

void addThresholds(CLI::App* app, Options* options) {
  app->add_option("--thresholds", options->thresholds, "judge by the thresholds in this JSON file")
      ->type_name("FILE");
}

void addJudgement(CLI::App* app, Options* options) {
  addThresholds(app, options);
  addParsed(app, "--fail-on", "SEVERITY",
            "end with status 1 at a finding of this severity: info, warn, fail", parseSeverity,
            &options->failOn);
}

void addScan(CLI::App* app, Options* options) {
  app->add_option("INPUT", options->inputs,
                  "files and folders; - is a YUV4MPEG stream from standard input");
  app->add_option("-o,--output", options->output, "folder of the results (lumascan-results)")
      ->type_name("DIR")
      ->check(refuseEmpty);
  app->add_option("-j,--jobs", options->jobs, "files at once; 0: as many as there are cores")
      ->check(CLI::Range(0, 4096));
  app->add_option("--include", options->include, "of folders, only files whose name matches")
      ->type_name("GLOB")
      ->allow_extra_args(false)
      ->take_all();
  app->add_option("--exclude", options->exclude, "of folders, no files whose name matches")
      ->type_name("GLOB")
      ->allow_extra_args(false)
      ->take_all();
  app->add_option("--files-from", options->filesFrom,
                  "further inputs, one a line or each ended by a zero byte; - is standard input")
      ->type_name("FILE");
  addParsed(app, "--raw", "WxH@FPS", "files are raw YUV 4:2:0 of 8 bit: WIDTHxHEIGHT@FPS", parseRaw,
            &options->raw);
  addStream(app, options);
  addParsed(app, "--start", "T", "first frame: seconds, HH:MM:SS[.mmm], HH:MM:SS:FF or f:FRAME",
            parsePlace, &options->analysis.start);
  addParsed(app, "--end", "T", "frame to stop before, in the same forms", parsePlace,
            &options->analysis.end);
  addParsed(app, "--fps", "RATE", "frame rate for freezing, as 25 or 30000/1001 (that of the file)",
            parseFps, &options->analysis.fps);
  addParsed(app, "--indicators", "NAMES", "names separated by commas, or the sum of bits (all)",
            parseIndicators, &options->analysis.mask);
  addParsed(app, "--formats", "LIST", "files to write beside result.json: csv,html (both)",
            parseFormats, &options->choice);
  addParsed(app, "--thumbs", "WHICH", "pictures in the report: none, events (the usual), all",
            parseThumbs, &options->choice.thumbs);
  addParsed(app, "--progress", "STYLE", "auto (the usual), bar, plain, json or none", parseProgress,
            &options->progress);
  app->add_option("--stall-timeout", options->stallTimeout,
                  "seconds without a new frame at which a file is given up; 0: never (120)")
      ->check(CLI::NonNegativeNumber)
      ->check(refuseNan);
  addLimits(app, options);
  app->add_flag("--force", options->isForced, "analyse what is up to date, too");
  app->add_flag("-n,--dry-run", options->isDryRun, "say what would be done, and do nothing");
  app->add_flag("--take-over", options->isTakenOver,
                "write results to a folder that has other files in it");
  app->add_flag("--json", options->printsJson, "print the summary as JSON");
  addDisarming(app, options);
  addJudgement(app, options);
}

void addFlags(CLI::App* app, Options* options) {
  app->add_flag("-q,--quiet", options->isQuiet, "print nothing but errors");
  app->add_flag("-v,--verbose", options->isVerbose, "print what the decoders say");
  app->set_help_flag("-h,--help", "show this help");
}

bool isVerb(const std::string& word) {
  static const std::array VERBS = {"scan", "events", "report", "probe", "prune"};
  return std::find(VERBS.begin(), VERBS.end(), word) != VERBS.end();
}

// Whether no frame can be at the first position or behind it, and before the second one. Of forms
// that only the frame rate could compare that is not known.
bool isEmptyRange(const Position& start, const Position& end) {
  if (end.text.empty()) return false;
  const bool isFromStart = start.text.empty();
  if (end.isFrame) return (isFromStart || start.isFrame) && end.frames <= start.frames;
  const bool isComparable =
      isFromStart || (!start.isFrame && (start.frames > 0) == (end.frames > 0));
  return isComparable && std::tie(end.seconds, end.frames) <= std::tie(start.seconds, start.frames);
}

// Frames per second where the command line says them; else NaN: each file has its own.
double knownRate(const Options& options) {
  if (options.analysis.fps > 0.0) return options.analysis.fps;
  AVRational rate = {0, 1};
  const bool isKnown = av_parse_video_rate(&rate, options.raw.rawRate.c_str()) == 0;
  return isKnown ? av_q2d(rate) : UNKNOWN;
}

// What is wrong with the options of a scan taken together; empty: nothing.
std::string contradictionIn(const Options& options) {
  const std::vector<std::string>& inputs = options.inputs;
  if (inputs.empty() && options.filesFrom.empty()) return "there is no input";
  for (const std::vector<std::string>* patterns : {&options.include, &options.exclude}) {
    std::string mistake = mistakeIn(*patterns);
    if (!mistake.empty()) return mistake;
  }
  if (options.filesFrom == "-" && std::find(inputs.begin(), inputs.end(), "-") != inputs.end()) {
    return "standard input is either a video or a list of files";
  }
  for (const Position* position : {&options.analysis.start, &options.analysis.end}) {
    std::string mistake = mistakeAtRate(*position, knownRate(options));
    if (!mistake.empty()) return mistake;
  }
  if (isEmptyRange(options.analysis.start, options.analysis.end)) {
    return "--end " + options.analysis.end.text + " is not behind --start " +
           (options.analysis.start.text.empty() ? "0" : options.analysis.start.text);
  }
  return "";
}

// Says what is wrong, and which help has the options of the command.
int refuse(const std::string& verb, const std::string& mistake) {
  const std::string help = isVerb(verb) ? "lumascan " + verb : "lumascan";
  std::fprintf(stderr, "lumascan: %s\nTry '%s --help'.\n", mistake.c_str(), help.c_str());
  return USAGE;
}

// "scan" is understood where no verb stands.
std::vector<std::string> argumentsWithVerb(int argc, char** argv) {
  std::vector<std::string> arguments(argv + std::min(argc, 1), argv + argc);
  if (arguments.empty()) return arguments;
  const std::string& first = arguments[0];
  const bool isGeneral =
      first == "-h" || first == "--help" || first == "-V" || first == "--version";
  if (!isVerb(first) && !isGeneral) arguments.insert(arguments.begin(), "scan");
  return arguments;
}

}  // namespace

std::optional<int> parseOptions(int argc, char** argv, Options* options) {
  CLI::App app("Measures the quality of videos without a reference, frame by frame.", "lumascan");
  app.set_version_flag("-V,--version", std::string("lumascan ") + LUMASCAN_VERSION);
  app.set_help_flag("-h,--help", "show this help");
  app.require_subcommand(1);
  app.footer(
      "scan is understood where no command is given. \"lumascan scan --help\" has its options.");
  CLI::App* const scan = app.add_subcommand("scan", "analyse videos and write their reports");
  addScan(scan, options);
  CLI::App* const events =
      app.add_subcommand("events", "judge stored results again, without decoding");
  events->add_option("RESULT", options->inputs, "folders that a scan has written")->required();
  events->add_flag("--json", options->printsJson, "print JSON instead of CSV");
  addDisarming(events, options);
  addJudgement(events, options);
  CLI::App* const report = app.add_subcommand("report", "write a page of stored results again");
  report
      ->add_option("RESULT", options->inputs,
                   "folders that a scan has written; several are shown"
                   " side by side")
      ->required();
  report->add_option("-o,--output", options->output,
                     "file to write, - for standard output (report.html in the folder; of several:"
                     " lumascan-report.html)");
  addThresholds(report, options);
  CLI::App* const probe = app.add_subcommand("probe", "say what a file says about itself");
  probe->add_option("INPUT", options->inputs, "files and folders")->required();
  probe->add_flag("--json", options->printsJson, "print JSON");
  addParsed(probe, "--raw", "WxH@FPS", "files are raw YUV 4:2:0 of 8 bit: WIDTHxHEIGHT@FPS",
            parseRaw, &options->raw);
  addStream(probe, options);
  addLimits(probe, options);
  CLI::App* const prune = app.add_subcommand("prune", "remove results whose videos are gone");
  prune->add_option("RESULTS", options->inputs, "folders of results (lumascan-results)");
  prune->add_flag("-n,--dry-run", options->isDryRun, "say what would be removed, and do nothing");
  addDisarming(prune, options);
  prune->add_flag("--force", options->isForced, "even where no video is there any more");
  for (CLI::App* const verb : {scan, events, report, probe, prune}) addFlags(verb, options);

  std::vector<std::string> arguments = argumentsWithVerb(argc, argv);
  const std::string verb = arguments.empty() ? "" : arguments[0];
  std::reverse(arguments.begin(), arguments.end());
  try {
    app.parse(arguments);
  } catch (const CLI::ParseError& error) {
    if (error.get_exit_code() == 0) return finishOutput(app.exit(error));
    return refuse(verb, error.what());
  }
  if (events->parsed()) options->verb = Verb::EVENTS;
  if (report->parsed()) options->verb = Verb::REPORT;
  if (probe->parsed()) options->verb = Verb::PROBE;
  if (prune->parsed()) {
    options->verb = Verb::PRUNE;
    if (options->inputs.empty()) options->inputs = {USUAL_OUTPUT};
  }
  if (scan->parsed()) {
    if (options->output.empty()) options->output = USUAL_OUTPUT;
    const std::string mistake = contradictionIn(*options);
    if (!mistake.empty()) return refuse(verb, mistake);
  }
  return std::nullopt;
}
