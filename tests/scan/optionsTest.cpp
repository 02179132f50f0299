// The command line: every option, and every mistake.
#include "scan/commandLine/options.h"

#include <gtest/gtest.h>

#include "clips.h"
#include "scan/commandLine/exitStatus.h"

namespace {

struct Parsing {
  std::optional<int> status;
  Options options;
  std::string out;
  std::string err;
};

Parsing parse(Arguments arguments) {
  arguments.insert(arguments.begin(), "lumascan");
  std::vector<char*> argv;
  for (std::string& argument : arguments) argv.push_back(argument.data());
  const auto argc = static_cast<int>(argv.size());
  argv.push_back(nullptr);
  Parsing parsing;
  testing::internal::CaptureStdout();
  testing::internal::CaptureStderr();
  parsing.status = parseOptions(argc, argv.data(), &parsing.options);
  parsing.out = testing::internal::GetCapturedStdout();
  parsing.err = testing::internal::GetCapturedStderr();
  return parsing;
}

// The options of a command line without mistakes.
Options optionsOf(const Arguments& arguments) {
  const Parsing parsing = parse(arguments);
  EXPECT_FALSE(parsing.status.has_value());
  EXPECT_EQ(parsing.out, "");
  EXPECT_EQ(parsing.err, "");
  return parsing.options;
}

// Those of a scan of one file with further arguments.
Options scanWith(Arguments arguments) {
  arguments.emplace_back("a.mp4");
  Options options = optionsOf(arguments);
  EXPECT_EQ(options.verb, Verb::SCAN);
  EXPECT_EQ(options.inputs, Arguments({"a.mp4"}));
  return options;
}

// Expects that a command line is refused with a message that has a certain text.
void expectMistake(const Arguments& arguments, const std::string& text) {
  SCOPED_TRACE(testing::PrintToString(arguments));
  const Parsing parsing = parse(arguments);
  EXPECT_EQ(parsing.status, std::optional<int>(USAGE));
  EXPECT_EQ(parsing.out, "");
  EXPECT_EQ(parsing.err.rfind("lumascan: ", 0), 0u) << parsing.err;
  EXPECT_NE(parsing.err.find(text), std::string::npos) << parsing.err;
  const bool isVerb = !arguments.empty() && (arguments[0] == "events" || arguments[0] == "report" ||
                                             arguments[0] == "probe");
  const std::string help = "lumascan " + (isVerb ? arguments[0] : "scan") + " --help";
  EXPECT_NE(parsing.err.find("\nTry '" + (arguments.empty() ? "lumascan --help" : help) + "'.\n"),
            std::string::npos)
      << parsing.err;
}

}  // namespace

TEST(ParseOptions, takesAScanForGranted) {
  for (const Arguments& arguments : {Arguments{"a.mp4", "-"}, Arguments{"scan", "a.mp4", "-"}}) {
    const Options options = optionsOf(arguments);
    EXPECT_EQ(options.verb, Verb::SCAN);
    EXPECT_EQ(options.inputs, Arguments({"a.mp4", "-"}));
  }
}

TEST(ParseOptions, hasWhatIsUsualWhereNothingIsSaid) {
  const Options options = scanWith({});
  EXPECT_EQ(options.output, "lumascan-results");
  EXPECT_EQ(options.jobs, 0);
  EXPECT_EQ(options.analysis.mask, 0x7fffu);
  EXPECT_EQ(options.analysis.fps, 0.0);
  EXPECT_EQ(options.analysis.start.text, "");
  EXPECT_EQ(options.analysis.end.text, "");
  EXPECT_TRUE(options.choice.hasCsv);
  EXPECT_TRUE(options.choice.hasHtml);
  EXPECT_EQ(options.choice.thumbs, Thumbs::EVENTS);
  EXPECT_EQ(options.progress, ProgressStyle::AUTO);
  EXPECT_EQ(options.stallTimeout, 120.0);
  EXPECT_EQ(options.thresholds, "");
  EXPECT_EQ(options.filesFrom, "");
  EXPECT_EQ(options.raw.rawWidth, 0);
  EXPECT_TRUE(options.include.empty() && options.exclude.empty());
  EXPECT_FALSE(options.failOn.has_value());
  EXPECT_FALSE(options.isForced || options.isDryRun || options.printsJson);
  EXPECT_FALSE(options.isQuiet || options.isVerbose);
}

TEST(ParseOptions, readsWhereResultsGoAndHowManyJobsThereAre) {
  EXPECT_EQ(scanWith({"-o", "out"}).output, "out");
  EXPECT_EQ(scanWith({"--output=out"}).output, "out");
  EXPECT_EQ(scanWith({"-j", "3"}).jobs, 3);
  EXPECT_EQ(scanWith({"-j3"}).jobs, 3);
  EXPECT_EQ(scanWith({"--jobs", "4096"}).jobs, 4096);
}

TEST(ParseOptions, readsWhichFilesOfFoldersAreMeant) {
  const Options options = scanWith(
      {"--include", "*.mp4", "--exclude", "a*", "--include", "*.mkv", "--files-from", "list"});
  EXPECT_EQ(options.include, Arguments({"*.mp4", "*.mkv"}));
  EXPECT_EQ(options.exclude, Arguments({"a*"}));
  EXPECT_EQ(optionsOf({"--include", "*.mp4", "b", "c"}).inputs, Arguments({"b", "c"}));
  EXPECT_EQ(optionsOf({"--exclude", "*.mp4", "b", "c"}).inputs, Arguments({"b", "c"}));
  EXPECT_EQ(options.filesFrom, "list");
}

TEST(ParseOptions, takesAListForAnInput) {
  const Options options = optionsOf({"--files-from", "-"});
  EXPECT_EQ(options.verb, Verb::SCAN);
  EXPECT_EQ(options.filesFrom, "-");
  EXPECT_TRUE(options.inputs.empty());
}

TEST(ParseOptions, readsTheSizeAndRateOfRawFiles) {
  const VideoSource raw = scanWith({"--raw", "352x288@30000/1001"}).raw;
  EXPECT_EQ(raw.rawWidth, 352);
  EXPECT_EQ(raw.rawHeight, 288);
  EXPECT_EQ(raw.rawRate, "30000/1001");
  EXPECT_EQ(optionsOf({"probe", "--raw", "1x2@12.5", "a.yuv"}).raw.rawRate, "12.5");
  EXPECT_EQ(scanWith({"--raw", "2x1@25"}).raw.rawHeight, 1);
}

TEST(ParseOptions, readsWhatIsAnalysed) {
  const AnalysisOptions analysis =
      scanWith({"--start", "1:30", "--end", "f:300", "--fps", "12.5"}).analysis;
  EXPECT_EQ(analysis.start.seconds, 90.0);
  EXPECT_TRUE(analysis.end.isFrame);
  EXPECT_EQ(analysis.end.frames, 300);
  EXPECT_EQ(analysis.fps, 12.5);
}

TEST(ParseOptions, readsIndicatorsByNameOrAsBits) {
  EXPECT_EQ(scanWith({"--indicators", "blur"}).analysis.mask, IndicatorMask{BLUR});
  EXPECT_EQ(scanWith({"--indicators", "freezing,temporal_activity"}).analysis.mask,
            FREEZING | TEMPORAL_ACTIVITY);
  EXPECT_EQ(scanWith({"--indicators", "0x160"}).analysis.mask, 0x160u);
  EXPECT_EQ(scanWith({"--indicators", "32"}).analysis.mask, IndicatorMask{BLUR});
  // Further bits mean nothing.
  EXPECT_EQ(scanWith({"--indicators", "0xfffff"}).analysis.mask, 0x7fffu);
}

TEST(ParseOptions, readsWhatIsWritten) {
  const OutputChoice csv = scanWith({"--formats", "csv", "--thumbs", "none"}).choice;
  EXPECT_TRUE(csv.hasCsv);
  EXPECT_FALSE(csv.hasHtml);
  EXPECT_EQ(csv.thumbs, Thumbs::NONE);
  const OutputChoice html = scanWith({"--formats", "html", "--thumbs", "all"}).choice;
  EXPECT_FALSE(html.hasCsv);
  EXPECT_TRUE(html.hasHtml);
  EXPECT_EQ(html.thumbs, Thumbs::ALL);
  const OutputChoice both = scanWith({"--formats", "json,html,csv", "--thumbs", "events"}).choice;
  EXPECT_TRUE(both.hasCsv && both.hasHtml);
  EXPECT_EQ(both.thumbs, Thumbs::EVENTS);
  // result.json is always written.
  const OutputChoice json = scanWith({"--formats", "json"}).choice;
  EXPECT_FALSE(json.hasCsv || json.hasHtml);
}

TEST(ParseOptions, readsHowFindingsAreJudged) {
  const Options options = scanWith({"--thresholds", "t.json", "--fail-on", "warn"});
  EXPECT_EQ(options.thresholds, "t.json");
  EXPECT_EQ(options.failOn, std::optional<Severity>(Severity::WARN));
  EXPECT_EQ(scanWith({"--fail-on", "info"}).failOn, std::optional<Severity>(Severity::INFO));
  EXPECT_EQ(scanWith({"--fail-on", "fail"}).failOn, std::optional<Severity>(Severity::FAIL));
}

TEST(ParseOptions, readsHowAScanRuns) {
  const Options options = scanWith({"--stall-timeout", "0", "--force", "-n", "--json", "-q", "-v"});
  EXPECT_EQ(options.stallTimeout, 0.0);
  EXPECT_TRUE(options.isForced);
  EXPECT_TRUE(options.isDryRun);
  EXPECT_TRUE(options.printsJson);
  EXPECT_TRUE(options.isQuiet);
  EXPECT_TRUE(options.isVerbose);
  const Options words = scanWith({"--dry-run", "--quiet"});
  EXPECT_TRUE(words.isDryRun && words.isQuiet);
  EXPECT_FALSE(words.isVerbose || words.isForced || words.printsJson);
  EXPECT_TRUE(scanWith({"--verbose"}).isVerbose);
}

TEST(ParseOptions, readsHowProgressIsShown) {
  EXPECT_EQ(scanWith({"--progress", "auto"}).progress, ProgressStyle::AUTO);
  EXPECT_EQ(scanWith({"--progress", "bar"}).progress, ProgressStyle::BAR);
  EXPECT_EQ(scanWith({"--progress", "plain"}).progress, ProgressStyle::PLAIN);
  EXPECT_EQ(scanWith({"--progress", "json"}).progress, ProgressStyle::JSON);
  EXPECT_EQ(scanWith({"--progress", "none"}).progress, ProgressStyle::NONE);
}

TEST(ParseOptions, readsTheOtherVerbs) {
  const Options events = optionsOf(
      {"events", "a", "b", "--json", "--fail-on", "fail", "--thresholds", "t.json", "-q"});
  EXPECT_EQ(events.verb, Verb::EVENTS);
  EXPECT_EQ(events.inputs, Arguments({"a", "b"}));
  EXPECT_TRUE(events.printsJson && events.isQuiet);
  EXPECT_EQ(events.thresholds, "t.json");
  EXPECT_EQ(events.failOn, std::optional<Severity>(Severity::FAIL));

  const Options report = optionsOf({"report", "a", "b", "-o", "page.html"});
  EXPECT_EQ(report.verb, Verb::REPORT);
  EXPECT_EQ(report.inputs, Arguments({"a", "b"}));
  EXPECT_EQ(report.output, "page.html");
  EXPECT_EQ(optionsOf({"report", "a"}).output, "");

  const Options probe = optionsOf({"probe", "--json", "a.mp4"});
  EXPECT_EQ(probe.verb, Verb::PROBE);
  EXPECT_EQ(probe.inputs, Arguments({"a.mp4"}));
  EXPECT_TRUE(probe.printsJson);
}

TEST(ParseOptions, takesForAFileWhatStandsBehindTwoDashes) {
  EXPECT_EQ(optionsOf({"--", "-q.mp4"}).inputs, Arguments({"-q.mp4"}));
  EXPECT_EQ(optionsOf({"scan", "-q", "--", "-v", "events"}).inputs, Arguments({"-v", "events"}));
}

TEST(ParseOptions, takesAVerbForAFile_whenItIsNotTheFirstWord) {
  EXPECT_EQ(optionsOf({"scan", "scan", "events"}).inputs, Arguments({"scan", "events"}));
  EXPECT_EQ(optionsOf({"a.mp4", "probe"}).inputs, Arguments({"a.mp4", "probe"}));
}

TEST(ParseOptions, endsWithHelp_whenItIsAskedFor) {
  for (const Arguments& arguments :
       {Arguments{"-h"}, Arguments{"--help"}, Arguments{"scan", "-h"}, Arguments{"events", "-h"},
        Arguments{"report", "--help"}, Arguments{"probe", "-h"}, Arguments{"a.mp4", "-h"}}) {
    SCOPED_TRACE(testing::PrintToString(arguments));
    const Parsing parsing = parse(arguments);
    EXPECT_EQ(parsing.status, std::optional<int>(DONE));
    EXPECT_NE(parsing.out.find("lumascan"), std::string::npos);
    EXPECT_EQ(parsing.err, "");
  }
  EXPECT_NE(parse({"scan", "--help"}).out.find("--stall-timeout"), std::string::npos);
  for (const char* const verb : {"scan", "events", "report", "probe"}) {
    EXPECT_NE(parse({"--help"}).out.find(std::string("\n  ") + verb + " "), std::string::npos);
  }
}

TEST(ParseOptions, endsWithTheVersion_whenItIsAskedFor) {
  for (const char* const option : {"-V", "--version"}) {
    const Parsing parsing = parse({option});
    EXPECT_EQ(parsing.status, std::optional<int>(DONE));
    EXPECT_EQ(parsing.out, "lumascan 1.0.0\n");
    EXPECT_EQ(parsing.err, "");
  }
}

TEST(ParseOptions, refusesACommandLineWithoutInput) {
  expectMistake({}, "");
  expectMistake({"scan"}, "there is no input");
  expectMistake({"-q"}, "there is no input");
  expectMistake({"events"}, "RESULT");
  expectMistake({"report"}, "RESULT");
  expectMistake({"probe"}, "INPUT");
}

TEST(ParseOptions, refusesOptionsThatDoNotExist) {
  expectMistake({"--bogus", "a.mp4"}, "--bogus");
  expectMistake({"a.mp4", "-x"}, "-x");
  expectMistake({"events", "a", "--force"}, "--force");
  expectMistake({"report", "a", "--json"}, "--json");
  expectMistake({"probe", "a.mp4", "--fps", "25"}, "--fps");
}

TEST(ParseOptions, refusesOptionsWithoutTheirValue) {
  for (const char* const option :
       {"--output", "--jobs", "--include", "--exclude", "--files-from", "--raw", "--start", "--end",
        "--fps", "--indicators", "--formats", "--thumbs", "--progress", "--stall-timeout",
        "--thresholds", "--fail-on", "--sandbox", "--memory-limit", "--max-pixels"}) {
    expectMistake({"a.mp4", option}, option);
  }
}

TEST(ParseOptions, refusesNumbersOutOfTheirRange) {
  for (const char* const number : {"-1", "4097", "1.5", "x", ""}) {
    expectMistake({"a.mp4", std::string("--jobs=") + number}, "--jobs");
  }
  for (const char* const rate : {"0", "-25", "x", "nan", "inf", "25fps", "1/0", "0/1", "1/", "/2",
                                 "30000/1001/2", "-1/-2"}) {
    expectMistake({"a.mp4", std::string("--fps=") + rate},
                  '"' + std::string(rate) + "\" is neither a number above 0 nor a fraction");
  }
  for (const char* const number : {"-1", "x", "nan", "2m"}) {
    expectMistake({"a.mp4", std::string("--stall-timeout=") + number}, "--stall-timeout");
  }
}

TEST(ParseOptions, takesLimitsOfWhatDecodes) {
  const Options usual = scanWith({});
  EXPECT_EQ(usual.sandbox, SandboxMode::AUTO);
  EXPECT_EQ(usual.memoryLimit, 4294967296);   // 4 GiB
  EXPECT_EQ(usual.raw.maxPixels, 268435456);  // 16384 * 16384
  for (const char* const verb : {"scan", "probe"}) {
    const Options options = optionsOf({verb, "a.mp4", "--sandbox", "require", "--memory-limit",
                                       "500M", "--max-pixels", "7680x4320"});
    EXPECT_EQ(options.sandbox, SandboxMode::REQUIRE);
    EXPECT_EQ(options.memoryLimit, 524288000);   // 500 * 1024 * 1024
    EXPECT_EQ(options.raw.maxPixels, 33177600);  // 7680 * 4320
  }
  EXPECT_EQ(scanWith({"--sandbox", "off"}).sandbox, SandboxMode::OFF);
  EXPECT_EQ(scanWith({"--sandbox", "auto"}).sandbox, SandboxMode::AUTO);
  EXPECT_EQ(scanWith({"--memory-limit", "0"}).memoryLimit, 0);
  EXPECT_EQ(scanWith({"--memory-limit", "64MiB"}).memoryLimit, 67108864);
  EXPECT_EQ(scanWith({"--memory-limit", "67108864"}).memoryLimit, 67108864);
  EXPECT_EQ(scanWith({"--max-pixels", "1"}).raw.maxPixels, 1);
  EXPECT_EQ(scanWith({"--max-pixels", "1073741824x1073741824"}).raw.maxPixels, int64_t{1} << 60);
}

TEST(ParseOptions, refusesLimitsThatAreNone) {
  expectMistake({"a.mp4", "--sandbox=on"}, "\"on\" is not one of auto, require and off");
  for (const char* const bytes : {"-1", "x", "63M", "67108863", "1", "16E", "nan"}) {
    expectMistake({"a.mp4", std::string("--memory-limit=") + bytes}, "--memory-limit");
  }
  for (const char* const pixels :
       {"0", "-1", "x", "8x", "x8", "0x8", "8x0", "8x8x8", "8.5", "1073741825", "8X8"}) {
    expectMistake({"a.mp4", std::string("--max-pixels=") + pixels},
                  '"' + std::string(pixels) + "\" is neither a number of pixels nor WIDTHxHEIGHT");
  }
}

TEST(ParseOptions, readsRatesAsNumbersAndFractions) {
  EXPECT_EQ(scanWith({"--fps", "29.97"}).analysis.fps, 29.97);
  EXPECT_EQ(scanWith({"--fps", "30000/1001"}).analysis.fps, 30000.0 / 1001.0);
}

TEST(ParseOptions, refusesAnEndThatIsNotBehindTheStart) {
  const std::vector<std::pair<std::string, std::string>> empty = {
      {"2", "1"},  {"2", "2"},       {"f:9", "f:9"},         {"", "0"},
      {"", "f:0"}, {"1:00", "59.5"}, {"0:0:2:5", "0:0:2:5"}, {"0:0:2:5", "0:0:2;4"},
  };
  for (const auto& [start, end] : empty) {
    Arguments arguments = {"a.mp4", "--end", end};
    if (!start.empty()) arguments.insert(arguments.end(), {"--start", start});
    expectMistake(arguments,
                  "--end " + end + " is not behind --start " + (start.empty() ? "0" : start));
  }
  // Of these only the frame rate could tell.
  for (const auto& [start, end] : {std::pair("2", "f:1"), {"f:9", "0.1"}, {"1.5", "0:0:1:20"}}) {
    EXPECT_EQ(scanWith({"--start", start, "--end", end}).analysis.end.text, end);
  }
}

TEST(ParseOptions, leavesFoldersOfOthersAlone_unlessTheyAreToBeTakenOver) {
  EXPECT_FALSE(scanWith({}).isTakenOver);
  EXPECT_TRUE(scanWith({"--take-over"}).isTakenOver);
}

TEST(ParseOptions, disarmsCells_whereTablesAreWritten) {
  EXPECT_FALSE(scanWith({}).isDisarmed);
  EXPECT_TRUE(scanWith({"--disarm-cells"}).isDisarmed);
  EXPECT_TRUE(optionsOf({"events", "a", "--disarm-cells"}).isDisarmed);
  EXPECT_TRUE(optionsOf({"prune", "--disarm-cells"}).isDisarmed);
}

TEST(ParseOptions, ofPrune) {
  const Options usual = optionsOf({"prune"});
  EXPECT_EQ(usual.verb, Verb::PRUNE);
  EXPECT_EQ(usual.inputs, Arguments{"lumascan-results"});
  EXPECT_FALSE(usual.isDryRun || usual.isForced || usual.isQuiet);
  const Options named = optionsOf({"prune", "-n", "a", "b", "--force", "-q"});
  EXPECT_EQ(named.inputs, (Arguments{"a", "b"}));
  EXPECT_TRUE(named.isDryRun && named.isForced && named.isQuiet);
}

TEST(ParseOptions, refusesATimecodeWithMoreFramesThanASecondHas) {
  expectMistake({"a.mp4", "--fps", "24", "--start", "0:0:1:24"},
                "there is no frame 24 in a second of 24 frames: 0:0:1:24");
  expectMistake({"a.yuv", "--raw", "8x8@30000/1001", "--end", "0:0:1:30"},
                "there is no frame 30 in a second of 29.97 frames: 0:0:1:30");
  EXPECT_EQ(scanWith({"--fps", "25", "--start", "0:0:1:24"}).analysis.start.frames, 24);
  // Each file has a rate of its own.
  EXPECT_EQ(scanWith({"--start", "0:0:1:99"}).analysis.start.frames, 99);
}

TEST(ParseOptions, refusesPatternsThatAreNone) {
  expectMistake({"a", "--include", "[ab"}, "the bracket in \"[ab\" has no end");
  expectMistake({"a", "--exclude", "[!]"}, "the bracket in \"[!]\" has no end");
  expectMistake({"a", "--exclude", "x[]"}, "the bracket in \"x[]\" has no end");
  expectMistake({"a", "--include", "a\\"}, "\"a\\\" ends with a backslash");
  const std::vector<std::string> good = {"[ab]", "[]]", "[!]]*", "\\[", "a]", "\\\\", ""};
  for (const std::string& pattern : good) {
    EXPECT_EQ(scanWith({"--include", pattern}).include, std::vector<std::string>{pattern});
  }
}

TEST(ParseOptions, refusesAnEmptyNameForResults) {
  expectMistake({"a.mp4", "-o", ""}, "--output");
}

TEST(ParseOptions, refusesStandardInputForTwoThings) {
  expectMistake({"-", "--files-from", "-"}, "standard input is either a video or a list of files");
}

TEST(ParseOptions, refusesWhatIsNoPosition) {
  expectMistake({"a.mp4", "--start", "f:x"}, "\"f:x\" is neither seconds nor a timecode");
  expectMistake({"a.mp4", "--start", "f:x"}, "--start");
  expectMistake({"a.mp4", "--end", "1:60"}, "\"1:60\" is neither seconds nor a timecode");
  expectMistake({"a.mp4", "--end", "1:60"}, "--end");
}

TEST(ParseOptions, refusesIndicatorsThatDoNotExist) {
  expectMistake({"a.mp4", "--indicators", "blur,sharpness"}, "there is no indicator \"sharpness\"");
  expectMistake({"a.mp4", "--indicators", "Blur"}, "there is no indicator \"Blur\"");
  expectMistake({"a.mp4", "--indicators="}, "--indicators");
  for (const char* const number : {"0", "0x8000", "12x", "08"}) {
    expectMistake({"a.mp4", "--indicators", number},
                  std::string("\"") + number + "\" requests no indicator");
  }
}

TEST(ParseOptions, refusesWordsThatAreNotAmongTheKnown) {
  expectMistake({"a.mp4", "--formats", "csv,xml"}, "there is no format \"xml\"");
  expectMistake({"a.mp4", "--thumbs", "some"}, "--thumbs");
  expectMistake({"a.mp4", "--progress", "loud"}, "--progress");
  expectMistake({"a.mp4", "--fail-on", "error"}, "\"error\" is not one of info, warn and fail");
}

TEST(ParseOptions, refusesRawSizesOfAnotherForm) {
  for (const char* const text :
       {"352x288", "352@25", "352x288@", "352x288@0", "352x288@x", "0x288@25", "352x0@25",
        "-352x288@25", "352X288@25", " 352x288@25", "352x288@-25", "99999999999x288@25", "x"}) {
    expectMistake({"a.yuv", std::string("--raw=") + text}, "is not of the form WIDTHxHEIGHT@FPS");
  }
}

TEST(ParseOptions, refusesAValueThatIsGivenTwice) {
  expectMistake({"a.mp4", "-o", "x", "-o", "y"}, "--output");
  expectMistake({"a.mp4", "--fps", "25", "--fps", "30"}, "--fps");
}

TEST(ThumbsName, isTheWordOfTheCommandLine) {
  for (const char* const word : {"none", "events", "all"}) {
    EXPECT_EQ(std::string(thumbsName(scanWith({"--thumbs", word}).choice.thumbs)), word);
  }
}
