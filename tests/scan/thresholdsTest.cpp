// The table of events, and files that change their thresholds.
#include "scan/events/thresholds.h"

#include <gtest/gtest.h>

#include <cmath>
#include <map>
#include <nlohmann/json.hpp>
#include <set>

#include "scan/analysis/indicatorTable.h"
#include "support/runProgram.h"

namespace {

// What is said of a file with this text; on success `thresholds` is what it made of the defaults.
std::string read(const std::string& text, Thresholds* thresholds) {
  const TemporaryDirectory directory;
  const std::string path = directory.path + "/thresholds.json";
  writeFile(path, text);
  *thresholds = DEFAULT_THRESHOLDS;
  return readThresholds(path, thresholds);
}

std::string json(const Thresholds& thresholds) {
  return thresholdsJson(thresholds).dump();
}

// The table of docs/thresholds.md, by hand; a flag is 1.
constexpr char DOCUMENTED_THRESHOLDS[] = R"({
  "black": {"enter": 0.955, "leave": 0.94, "min_s": 0.2, "severity": "warn"},
  "freeze": {"enter": 1, "leave": 1, "min_s": 0.3, "severity": "fail"},
  "letterbox": {"enter": 0.03, "leave": 0.02, "min_s": 1, "severity": "warn"},
  "pillarbox": {"enter": 0.03, "leave": 0.02, "min_s": 1, "severity": "warn"},
  "combing": {"enter": 0.027, "leave": 0.0135, "min_s": 0.5, "severity": "warn"},
  "block_loss": {"enter": 20, "leave": 7, "min_s": 0.6, "hold_s": 0.3, "ratio": 4, "alone": 400,
                 "severity": "fail"},
  "slice": {"enter": 12, "leave": 4.8, "min_s": 0.4, "ratio": 5, "severity": "warn"},
  "flicker": {"enter": 0.83, "leave": 0.75, "min_s": 0.9, "severity": "warn"},
  "over_exposure": {"enter": 152, "leave": 146, "min_s": 0.3, "mad": 4, "least": 25, "alone": 190,
                    "severity": "warn"},
  "under_exposure": {"enter": 78, "leave": 82, "min_s": 1, "severity": "warn"},
  "low_contrast": {"enter": 15.5, "leave": 17, "min_s": 0.3, "mad": 4, "least": 20, "alone": 9.7,
                   "severity": "warn"},
  "blockiness": {"enter": 0.63, "leave": 0.7, "min_s": 1, "hold_s": 0.6, "mad": 6, "least": 0.25,
                 "severity": "warn"},
  "blur": {"enter": 5.5, "leave": 5, "min_s": 1.2, "mad": 6, "least": 2, "severity": "warn"},
  "noise": {"enter": 3, "leave": 2.4, "min_s": 0.3, "mad": 6, "least": 2, "severity": "warn"},
  "scene_cut": {"enter": 20, "ratio": 3.5, "lone": 0.5, "severity": "info"},
  "decode_error": {"severity": "fail"},
  "stream_error": {"severity": "warn"},
  "starts_midstream": {"severity": "info"},
  "truncation": {"severity": "fail"},
  "size_change": {"severity": "warn"},
  "timestamp_gap": {"enter": 0.5, "ratio": 3, "severity": "warn"},
  "missing_frames": {"severity": "warn"}
})";

// Expects an error, and that nothing has changed.
void expectError(const std::string& text, const std::string& error) {
  Thresholds thresholds;
  EXPECT_EQ(read(text, &thresholds), error) << text;
  EXPECT_EQ(json(thresholds), json(DEFAULT_THRESHOLDS)) << text;
}

}  // namespace

TEST(EventRules, nameEveryTypeOnce_andIndicatorsThatExist) {
  std::set<std::string> types;
  for (const EventRule& rule : EVENT_RULES) {
    types.insert(rule.type);
    if (rule.indicator != nullptr) {
      EXPECT_LT(indicatorNamed(rule.indicator), INDICATORS) << rule.type;
    }
  }
  EXPECT_EQ(types.size(), EVENT_TYPES);
  EXPECT_EQ(eventTypeNamed("black"), 0u);
  EXPECT_EQ(eventTypeNamed("missing_frames"), EVENT_TYPES - 1);
  EXPECT_EQ(eventTypeNamed("nothing"), EVENT_TYPES);
  EXPECT_EQ(eventTypeNamed(""), EVENT_TYPES);
}

TEST(EventRules, nameTheIndicatorsThatAreDocumented) {
  const std::map<std::string, std::string> indicators = {{"black", "blackout"},
                                                         {"freeze", "freezing"},
                                                         {"letterbox", "letterbox"},
                                                         {"pillarbox", "pillarbox"},
                                                         {"combing", "interlace"},
                                                         {"block_loss", "block_loss"},
                                                         {"slice", "slice"},
                                                         {"flicker", "flickering"},
                                                         {"over_exposure", "exposure"},
                                                         {"under_exposure", "exposure"},
                                                         {"low_contrast", "contrast"},
                                                         {"blockiness", "blockiness"},
                                                         {"blur", "blur"},
                                                         {"noise", "noise"},
                                                         {"scene_cut", "temporal_activity"}};
  const std::set<std::string> below = {"under_exposure", "low_contrast", "blockiness"};
  for (const EventRule& rule : EVENT_RULES) {
    const auto found = indicators.find(rule.type);
    EXPECT_STREQ(rule.indicator, found == indicators.end() ? nullptr : found->second.c_str());
    EXPECT_EQ(rule.direction == Direction::BELOW, below.count(rule.type) == 1) << rule.type;
  }
}

TEST(DefaultThresholds, areThoseThatAreDocumented) {
  nlohmann::json documented = nlohmann::json::parse(DOCUMENTED_THRESHOLDS);
  for (auto& threshold : documented) threshold["enabled"] = true;
  const nlohmann::json actual = nlohmann::json::parse(json(DEFAULT_THRESHOLDS));
  for (const auto& [type, threshold] : actual.items()) EXPECT_EQ(threshold, documented[type]);
  EXPECT_EQ(actual.size(), documented.size());
}

TEST(DefaultThresholds, haveWhatTheirKindNeeds_andNothingElse) {
  for (size_t i = 0; i < EVENT_TYPES; ++i) {
    const EventRule& rule = EVENT_RULES[i];
    const Threshold& threshold = DEFAULT_THRESHOLDS[i];
    const bool isStretch = rule.kind == EventKind::STRETCH;
    const bool isMarker =
        rule.kind == EventKind::SCENE_CUT || rule.kind == EventKind::TIMESTAMP_GAP;
    EXPECT_EQ(!std::isnan(threshold.enter), isStretch || isMarker) << rule.type;
    EXPECT_EQ(!std::isnan(threshold.leave), isStretch) << rule.type;
    EXPECT_EQ(!std::isnan(threshold.minSeconds), isStretch) << rule.type;
    const bool isMultiple =
        rule.type == std::string("slice") || rule.type == std::string("block_loss");
    EXPECT_EQ(!std::isnan(threshold.ratio), isMarker || isMultiple) << rule.type;
    EXPECT_EQ(std::isnan(threshold.mad), std::isnan(threshold.least)) << rule.type;
    EXPECT_TRUE(isStretch || std::isnan(threshold.holdSeconds)) << rule.type;
    const bool isRelative =
        isStretch && !(std::isnan(threshold.mad) && std::isnan(threshold.ratio));
    EXPECT_TRUE(isRelative || std::isnan(threshold.alone)) << rule.type;
    EXPECT_TRUE(threshold.isEnabled) << rule.type;
    if (!isStretch) continue;
    if (rule.direction == Direction::ABOVE) {
      EXPECT_LE(threshold.leave, threshold.enter) << rule.type;
      EXPECT_FALSE(threshold.alone <= threshold.enter) << rule.type;
    } else {
      EXPECT_GE(threshold.leave, threshold.enter) << rule.type;
      EXPECT_FALSE(threshold.alone >= threshold.enter) << rule.type;
    }
  }
}

TEST(ReadThresholds, changesWhatTheFileNames_andNothingElse) {
  Thresholds thresholds;
  EXPECT_EQ(read(R"({"blur": {"enter": 9.5, "leave": 8, "min_s": 1, "severity": "fail", "mad": 7,
                              "least": 3},
                     "freeze": {"enabled": false},
                     "block_loss": {"alone": 400, "hold_s": 0.5},
                     "scene_cut": {"ratio": 4, "severity": "warn"},
                     "timestamp_gap": {"enter": 2}})",
                 &thresholds),
            "");
  Thresholds expected = DEFAULT_THRESHOLDS;
  Threshold& blur = expected[eventTypeNamed("blur")];
  blur.enter = 9.5;
  blur.leave = 8.0;
  blur.minSeconds = 1.0;
  blur.severity = Severity::FAIL;
  blur.mad = 7.0;
  blur.least = 3.0;
  expected[eventTypeNamed("freeze")].isEnabled = false;
  expected[eventTypeNamed("block_loss")].alone = 400.0;
  expected[eventTypeNamed("block_loss")].holdSeconds = 0.5;
  expected[eventTypeNamed("scene_cut")].ratio = 4.0;
  expected[eventTypeNamed("scene_cut")].severity = Severity::WARN;
  expected[eventTypeNamed("timestamp_gap")].enter = 2.0;
  EXPECT_EQ(json(thresholds), json(expected));
  EXPECT_NE(json(thresholds), json(DEFAULT_THRESHOLDS));
}

TEST(ReadThresholds, takesAnEmptyObject_andAllThatThresholdsJsonWrites) {
  Thresholds thresholds;
  EXPECT_EQ(read("{}", &thresholds), "");
  EXPECT_EQ(json(thresholds), json(DEFAULT_THRESHOLDS));
  EXPECT_EQ(read(json(DEFAULT_THRESHOLDS), &thresholds), "");
  EXPECT_EQ(json(thresholds), json(DEFAULT_THRESHOLDS));
}

TEST(ReadThresholds, takesLevelsThatAreEqual) {
  Thresholds thresholds;
  EXPECT_EQ(read(R"({"blur": {"enter": 5, "leave": 5}})", &thresholds), "");
  EXPECT_EQ(read(R"({"low_contrast": {"enter": 5, "leave": 5}})", &thresholds), "");
}

TEST(ReadThresholds, takesLevelsBelowZero_ofStretchesAlone) {
  Thresholds thresholds;
  EXPECT_EQ(
      read(R"({"blur": {"enter": -1, "leave": -2}, "low_contrast": {"alone": -3}})", &thresholds),
      "");
  EXPECT_EQ(thresholds[eventTypeNamed("blur")].enter, -1.0);
  EXPECT_EQ(thresholds[eventTypeNamed("blur")].leave, -2.0);
  EXPECT_EQ(thresholds[eventTypeNamed("low_contrast")].alone, -3.0);
  expectError(R"({"scene_cut": {"enter": -1}})", "scene_cut.enter is negative");
  expectError(R"({"scene_cut": {"ratio": -1}})", "scene_cut.ratio is negative");
  expectError(R"({"scene_cut": {"lone": -1}})", "scene_cut.lone is negative");
  expectError(R"({"blur": {"lone": 1}})", "blur.lone does not exist");
  expectError(R"({"blur": {"mad": -1}})", "blur.mad is negative");
  expectError(R"({"blur": {"least": -1}})", "blur.least is negative");
}

TEST(ReadThresholds, saysWhatIsNotKnown) {
  expectError(R"({"blurr": {}})", "there is no event \"blurr\"");
  expectError(R"({"blur": {"entre": 9}})", "blur.entre does not exist");
  // One frame has nothing to leave; a mark of the decoder has no level; bars are not relative.
  expectError(R"({"scene_cut": {"leave": 9}})", "scene_cut.leave does not exist");
  expectError(R"({"decode_error": {"enter": 9}})", "decode_error.enter does not exist");
  expectError(R"({"letterbox": {"mad": 6}})", "letterbox.mad does not exist");
  expectError(R"({"blur": {"ratio": 6}})", "blur.ratio does not exist");
  expectError(R"({"blur": {"alone": 20}})", "blur.alone does not exist");
  expectError(R"({"blur": {"hold_s": 1}})", "blur.hold_s does not exist");
}

TEST(ReadThresholds, saysWhatIsOfTheWrongType) {
  expectError("[]", "the file is not a JSON object");
  expectError("1", "the file is not a JSON object");
  expectError(R"({"blur": 9})", "blur is not a JSON object");
  expectError(R"({"blur": {"enter": "9"}})", "blur.enter is not a number");
  expectError(R"({"blur": {"enter": null}})", "blur.enter is not a number");
  expectError(R"({"blur": {"enter": true}})", "blur.enter is not a number");
  expectError(R"({"blur": {"enabled": 1}})", "blur.enabled is neither true nor false");
  const std::string none = "blur.severity is none of \"info\", \"warn\" and \"fail\"";
  expectError(R"({"blur": {"severity": "bad"}})", none);
  expectError(R"({"blur": {"severity": 1}})", none);
}

TEST(ReadThresholds, saysWhatContradictsItself) {
  expectError(R"({"blur": {"enter": 5, "leave": 5.5}})", "blur.leave is above blur.enter");
  expectError(R"({"low_contrast": {"enter": 5, "leave": 4.5}})",
              "low_contrast.leave is below low_contrast.enter");
  expectError(R"({"blur": {"min_s": -1}})", "blur.min_s is negative");
  expectError(R"({"blockiness": {"hold_s": -1}})", "blockiness.hold_s is negative");
  expectError(R"({"timestamp_gap": {"enter": -1}})", "timestamp_gap.enter is negative");
}

TEST(ReadThresholds, changesNothing_whenALaterEntryIsWrong) {
  expectError(R"({"blur": {"severity": "fail"}, "noise": {"severity": "x"}})",
              "noise.severity is none of \"info\", \"warn\" and \"fail\"");
}

TEST(ReadThresholds, saysWhereAFileIsNoJson) {
  expectError("", "no JSON at byte 1");
  expectError("{\"blur\": }", "no JSON at byte 10");
  expectError(R"({"blur": {"enter": 1e999}})", "a number is too large");
  expectError("{} {}", "there is more than one JSON value");
  expectError(std::string(100000, '['), "no JSON at byte 100001");
}

TEST(ReadThresholds, saysWhyAFileCannotBeRead) {
  Thresholds thresholds = DEFAULT_THRESHOLDS;
  EXPECT_EQ(readThresholds("/nowhere/thresholds.json", &thresholds), "No such file or directory");
}

TEST(ThresholdsJson, hasEveryTypeInItsOrder) {
  const nlohmann::ordered_json all = thresholdsJson(DEFAULT_THRESHOLDS);
  ASSERT_EQ(all.size(), EVENT_TYPES);
  size_t i = 0;
  for (const auto& [type, keys] : all.items()) EXPECT_EQ(type, EVENT_RULES[i++].type);
  Thresholds thresholds = DEFAULT_THRESHOLDS;
  const double none = std::nan("");
  thresholds[eventTypeNamed("letterbox")] = {0.25, 0.125, 2.0,  Severity::INFO, true,
                                             none, none,  none, none,           none};
  EXPECT_EQ(thresholdsJson(thresholds)["letterbox"].dump(),
            R"({"enter":0.25,"leave":0.125,"min_s":2.0,"severity":"info","enabled":true})");
  EXPECT_EQ(all["truncation"].dump(), R"({"severity":"fail","enabled":true})");
}
