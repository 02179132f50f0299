// The record of a result, written as JSON and read again.
#include "scan/record/resultJson.h"

#include <gtest/gtest.h>

#include <cmath>

#include "pageParts.h"
#include "sample.h"
#include "scan/files/json.h"
#include "scan/report/report.h"

namespace {

// What the JSON becomes when it is read and written once more.
Json again(const Json& json) {
  ResultRecord record;
  EXPECT_EQ(readRecord(json, &record), "");
  return resultJson(record);
}

// A record none of whose parts is what it is by default.
ResultRecord fullRecord() {
  ResultRecord record = sampleInput("a/b.mp4", 300, 25.0, 1).record;
  record.toolVersion = "0.9";
  record.input.pathUri = "a/b.mp4";
  record.input.fingerprint = {1234, 1700000000123456789, "9ae0daaf"};
  record.input.stream->timeBase = "1/12800";
  record.input.stream->declaredFrames = 280;
  record.input.stream->rotation = -90.0;
  record.input.stream->profile = "High";
  record.input.stream->frameRateFraction = "25/1";
  record.input.stream->bitRate = 2400000;
  record.input.stream->containerBitRate = 2530000;
  record.input.stream->startTimecode = "10:00:00:00";
  record.input.stream->audio = {{1, "aac", 2, 48000, "fin", 14.5}, {3, "mp3", 0, 0, "", UNKNOWN}};
  record.options = {0x421, 12.5, "f:5", "00:00:09", "64x48@25", 2};
  record.analysis->indicators = 0x421;
  record.analysis->firstFrame = 5;
  record.analysis->endedBy = AnalysisEnd::SIZE_CHANGE;
  record.status = Status::PARTIAL;
  record.error = "it is cut";
  record.isTruncated = true;
  record.thresholds = DEFAULT_THRESHOLDS;
  record.outputs = {true, false, Thumbs::ALL};
  record.pictures = 12;
  return record;
}

}  // namespace

TEST(ResultJson, comesBack) {
  const Json json = resultJson(fullRecord());
  EXPECT_EQ(again(json).dump(), json.dump());
  EXPECT_EQ(json["options"].dump(),
            R"({"indicators":["blockiness","blur","contrast"],"fps":12.5,"start":"f:5",)"
            R"("end":"00:00:09","raw":"64x48@25","stream":2})");
  EXPECT_EQ(json["input"]["mtime_ns"], 1700000000123456789);
  EXPECT_EQ(json["input"]["profile"], "High");
  EXPECT_EQ(json["input"]["frame_rate_fraction"], "25/1");
  EXPECT_EQ(json["input"]["bit_rate"], 2400000);
  EXPECT_EQ(json["input"]["container_bit_rate"], 2530000);
  EXPECT_EQ(json["input"]["start_timecode"], "10:00:00:00");
  EXPECT_EQ(json["input"]["audio"].dump(),
            R"([{"stream":1,"codec":"aac","channels":2,"sample_rate":48000,"language":"fin",)"
            R"("duration_s":14.5},{"stream":3,"codec":"mp3","channels":null,"sample_rate":null,)"
            R"("language":null,"duration_s":null}])");
  EXPECT_EQ(json["analysis"]["ended_by"], "size_change");
  EXPECT_EQ(json["outputs"].dump(), R"({"formats":["csv"],"thumbs":"all","pictures":12})");
}

TEST(ResultJson, hasEveryStatisticUnderItsName) {
  ResultRecord record = fullRecord();
  // n, min, max, mean, stdev, then the percentiles.
  record.indicators[0].statistics = {10, 1.0, 9.0, 4.0, 2.0, 1.5, 1.75, 3.0, 8.0, 8.5};
  record.indicators[0].overview = {4.0};
  const Json json = resultJson(record);
  EXPECT_EQ(json["indicators"]["blockiness"].dump(),
            R"({"n":10,"min":1.0,"max":9.0,"mean":4.0,"stdev":2.0,"p1":1.5,"p5":1.75,"p50":3.0,)"
            R"("p95":8.0,"p99":8.5,"overview":[4.0]})");
  EXPECT_EQ(again(json).dump(), json.dump());
}

TEST(ResultJson, hasTheStatisticsOfEveryMeasure) {
  ResultRecord record = fullRecord();
  for (size_t i = 0; i < MEASURES; ++i) record.measures[i].n = static_cast<int64_t>(i);
  record.measures[LINE_STEP] = {10, 1.0, 9.0, 4.0, 2.0, 1.5, 1.75, 3.0, 8.0, 8.5};
  const Json json = resultJson(record);
  EXPECT_EQ(json["measures"].size(), MEASURES);
  EXPECT_EQ(json["measures"]["line_step"].dump(),
            R"({"n":10,"min":1.0,"max":9.0,"mean":4.0,"stdev":2.0,"p1":1.5,"p5":1.75,"p50":3.0,)"
            R"("p95":8.0,"p99":8.5})");
  EXPECT_EQ(json["measures"]["grid_edges"]["n"], GRID_EDGES);
  EXPECT_EQ(json["measures"]["grid_edges"]["mean"], nullptr);
  ResultRecord read;
  ASSERT_EQ(readRecord(json, &read), "");
  for (size_t i = 0; i < MEASURES; ++i) EXPECT_EQ(read.measures[i].n, record.measures[i].n) << i;
  EXPECT_EQ(read.measures[LINE_STEP].p99, 8.5);
  EXPECT_EQ(again(json).dump(), json.dump());
}

TEST(ResultJson, hasNoMeasures_whereAnOlderResultHasNone) {
  Json json = resultJson(fullRecord());
  json.erase("measures");
  ResultRecord read;
  ASSERT_EQ(readRecord(json, &read), "");
  for (const Statistics& statistics : read.measures) {
    EXPECT_EQ(statistics.n, 0);
    EXPECT_TRUE(std::isnan(statistics.mean));
  }
}

// The names are those of docs/results.md.
TEST(ResultJson, namesEveryState) {
  ResultRecord record = fullRecord();
  const auto expectName = [&](const std::string& name, const Json& written) {
    EXPECT_EQ(written, name);
    EXPECT_EQ(again(resultJson(record)).dump(), resultJson(record).dump()) << name;
  };
  for (const auto& [state, name] : {std::pair(Status::COMPLETE, "complete"),
                                    {Status::PARTIAL, "partial"},
                                    {Status::FAILED, "failed"}}) {
    record.status = state;
    expectName(name, resultJson(record)["status"]);
  }
  for (const auto& [state, name] : {std::pair(Verdict::PASS, "pass"),
                                    {Verdict::ATTENTION, "attention"},
                                    {Verdict::FAIL, "fail"},
                                    {Verdict::INCOMPLETE, "incomplete"}}) {
    record.judgement.verdict = state;
    expectName(name, resultJson(record)["verdict"]);
  }
  for (const auto& [state, name] : {std::pair(AnalysisEnd::COMPLETE, "end"),
                                    {AnalysisEnd::READ_ERROR, "read_error"},
                                    {AnalysisEnd::SIZE_CHANGE, "size_change"},
                                    {AnalysisEnd::UNSUPPORTED, "unsupported"}}) {
    record.analysis->endedBy = state;
    expectName(name, resultJson(record)["analysis"]["ended_by"]);
  }
  for (const auto& [state, name] : {std::pair(LumaPath::COPIED, "copied"),
                                    {LumaPath::NARROWED, "narrowed"},
                                    {LumaPath::CONVERTED, "converted"}}) {
    record.analysis->lumaPath = state;
    expectName(name, resultJson(record)["analysis"]["luma"]);
  }
  for (const auto& [state, name] :
       {std::pair(Thumbs::NONE, "none"), {Thumbs::EVENTS, "events"}, {Thumbs::ALL, "all"}}) {
    record.outputs.thumbs = state;
    expectName(name, resultJson(record)["outputs"]["thumbs"]);
  }
}

TEST(ResultJson, saysWhatWasAnalysed) {
  ResultRecord record = fullRecord();
  AnalysisFacts& analysis = *record.analysis;
  analysis.fps = 12.5;
  analysis.start = 0.25;
  analysis.end = 9.75;
  analysis.frames = 118;
  analysis.corruptFrames = 3;
  analysis.decodeErrors = 2;
  analysis.messages = 4;
  analysis.messagesBeforeKeyFrame = 1;
  analysis.missingAtEnd = 6;
  analysis.joins = {{40, -8.5, 8.75}};
  const Json json = resultJson(record);
  EXPECT_EQ(json["analysis"].dump(),
            R"({"indicators":["blockiness","blur","contrast"],"fps":12.5,"luma":"copied",)"
            R"("first_frame":5,"frames":118,"start_s":0.25,"end_s":9.75,"corrupt_frames":3,)"
            R"("decode_errors":2,"messages":4,"messages_before_key_frame":1,)"
            R"("missing_at_end":6,)"
            R"("joins":[{"frame":40,"step_s":-8.5,"offset_s":8.75}],"ended_by":"size_change"})");
  EXPECT_EQ(again(json).dump(), json.dump());
}

TEST(ResultJson, hasMessagesOfDamage) {
  ResultRecord record = fullRecord();
  record.messages = {{0.3, true, "lost"}, {UNKNOWN, false, "\"odd\""}};
  const Json json = resultJson(record);
  EXPECT_EQ(json["messages"].dump(), R"([{"time_s":0.3,"from":"container","text":"lost"},)"
                                     R"({"time_s":null,"from":"decoder","text":"\"odd\""}])");
  EXPECT_EQ(again(json)["messages"], json["messages"]);
}

TEST(ResultJson, hasTheRateThatWasAsked_howeverSmall) {
  ResultRecord record = fullRecord();
  record.options.fps = 0.005;  // a frame every 200 seconds
  EXPECT_EQ(resultJson(record)["options"]["fps"], 0.005);
  record.options.fps = 0.0;
  EXPECT_EQ(resultJson(record)["options"]["fps"], nullptr);
}

TEST(ResultJson, saysWhetherTheDecoderWasConfined) {
  ResultRecord record = fullRecord();
  record.sandbox = {true, ""};
  EXPECT_EQ(resultJson(record)["sandbox"].dump(), R"({"on":true,"why_not":null})");
  EXPECT_EQ(again(resultJson(record))["sandbox"], resultJson(record)["sandbox"]);
  record.sandbox = {false, "no kernel"};
  EXPECT_EQ(resultJson(record)["sandbox"].dump(), R"({"on":false,"why_not":"no kernel"})");
  EXPECT_EQ(again(resultJson(record))["sandbox"], resultJson(record)["sandbox"]);
  // Older results do not say.
  Json json = resultJson(record);
  json.erase("sandbox");
  EXPECT_EQ(again(json)["sandbox"].dump(), R"({"on":false,"why_not":null})");
}

TEST(ResultJson, passesOverIndicatorsThatItDoesNotKnow) {
  Json json = resultJson(fullRecord());
  json["analysis"]["indicators"] = {"noise", "shine", "slice"};
  ResultRecord record;
  ASSERT_EQ(readRecord(json, &record), "");
  EXPECT_EQ(record.analysis->indicators,
            1U << indicatorNamed("noise") | 1U << indicatorNamed("slice"));
}

TEST(ResultJson, comesBack_ofWhatCouldNotBeOpened) {
  const Json json = resultJson(failedInput("a.mp4").record);
  EXPECT_EQ(again(json).dump(), json.dump());
  EXPECT_TRUE(json["analysis"].is_null());
  EXPECT_FALSE(json["input"].contains("codec"));
  EXPECT_EQ(json["indicators"], Json::object());
  EXPECT_EQ(json["measures"], Json::object());
}

TEST(ResultJson, hasNullForWhatIsUnknown) {
  ResultRecord record = fullRecord();
  record.input.fingerprint.reset();
  record.input.stream->frameRate = UNKNOWN;
  record.input.stream->declaredFrames = 0;
  record.options = {0x7fff, 0.0, "", "", ""};
  record.error = "";
  record.indicators[0].overview = {1.0, Statistics::NONE};
  const Json json = resultJson(record);
  EXPECT_EQ(again(json).dump(), json.dump());
  for (const char* const key : {"size", "mtime_ns", "checksum", "frame_rate", "declared_frames"}) {
    EXPECT_TRUE(json["input"][key].is_null()) << key;
  }
  for (const char* const key : {"fps", "start", "end", "raw"}) {
    EXPECT_TRUE(json["options"][key].is_null()) << key;
  }
  EXPECT_TRUE(json["error"].is_null());
  EXPECT_EQ(json["indicators"]["blockiness"]["overview"].dump(), "[1.0,null]");
}

TEST(ResultJson, isRefusedOrShown_whateverItsPartsAre) {
  const Json whole = resultJson(fullRecord());
  int shown = 0;
  for (const auto& [key, value] : whole.items()) {
    for (const Json& other : {Json(), Json(7), Json("x"), Json::array({1, nullptr, "x"}),
                              Json{{"path", "x"}, {"fps", 25}, {"codec", "x"}, {"blur", "x"}}}) {
      Json changed = whole;
      changed[key] = other;
      VideoResult result;
      if (!readRecord(changed, &result.record).empty()) continue;
      const std::string page = writtenText([&](FILE* out) { writeReport({&result}, out); });
      EXPECT_TRUE(contains(page, "</html>")) << key << other;
      ++shown;
    }
  }
  EXPECT_GT(shown, 20);
}
