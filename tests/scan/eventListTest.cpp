// Events as JSON and as CSV.
#include "scan/events/eventList.h"

#include <gtest/gtest.h>

#include <cmath>

#include "pageParts.h"
#include "scan/files/json.h"
#include "support/specialValues.h"

namespace {

const Event freeze = {1, "freeze", Severity::FAIL, 75, 124, 3.0, 5.5, 75, 1.0, 1.0, false, true};
const Event unknown = {2,   "truncation", Severity::WARN, 124,  124,  std::nan(""), std::nan(""),
                       124, std::nan(""), std::nan(""),   true, false};

std::string csvOf(const std::vector<Event>& events) {
  return writtenText([&](FILE* out) { writeEventsCsv(events, out); });
}

std::string jsonOf(const std::vector<Event>& events) {
  return writtenText([&](FILE* out) { writeEventsJson(events, out); });
}

}  // namespace

TEST(SeverityName, isAShortWord) {
  EXPECT_STREQ(severityName(Severity::INFO), "info");
  EXPECT_STREQ(severityName(Severity::WARN), "warn");
  EXPECT_STREQ(severityName(Severity::FAIL), "fail");
}

TEST(EventsJson, namesEveryField) {
  EXPECT_EQ(eventsJson({freeze}).dump(),
            R"([{"id":1,"type":"freeze","severity":"fail","first_frame":75,"last_frame":124,)"
            R"("start_s":3.0,"end_s":5.5,"duration_s":2.5,"peak_frame":75,"peak_value":1.0,)"
            R"("threshold":1.0,"at_start":false,"at_end":true}])");
}

TEST(EventsJson, hasNullForWhatIsNotFinite) {
  EXPECT_EQ(eventsJson({unknown}).dump(),
            R"([{"id":2,"type":"truncation","severity":"warn","first_frame":124,)"
            R"("last_frame":124,"start_s":null,"end_s":null,"duration_s":null,"peak_frame":124,)"
            R"("peak_value":null,"threshold":null,"at_start":true,"at_end":false}])");
  Event infinite = freeze;
  infinite.peakValue = INF;
  EXPECT_TRUE(eventsJson({infinite})[0]["peak_value"].is_null());
}

TEST(EventsJson, isAnArray_ofNoEventsToo) {
  EXPECT_EQ(eventsJson({}).dump(), "[]");
}

TEST(WrittenEventsJson, isTheSame_withALineForEveryEvent) {
  for (const std::vector<Event>& events :
       {std::vector<Event>{}, std::vector<Event>{freeze}, std::vector<Event>{freeze, unknown}}) {
    EXPECT_EQ(Json::parse(jsonOf(events)), eventsJson(events));
  }
  EXPECT_EQ(jsonOf({}), "[]");
  EXPECT_EQ(jsonOf({freeze, unknown}), "[\n    " + eventsJson({freeze})[0].dump() + ",\n    " +
                                           eventsJson({unknown})[0].dump() + "\n  ]");
}

TEST(EventOf, isWhatWasWritten) {
  for (const Event& event : {freeze, unknown}) {
    const Json written = eventsJson({event});
    EXPECT_EQ(eventsJson({eventOf(written[0])}), written);
  }
}

TEST(EventOf, hasATypeThatIsKnown) {
  EXPECT_EQ(eventOf({{"type", "scene_cut"}}).type, "scene_cut");
  for (const char* const type : {"freeze\r\n2,blur", "Freeze", "=1+1", "frozen", ""}) {
    EXPECT_EQ(eventOf({{"type", type}}).type, "unknown") << type;
  }
}

TEST(EventOf, isUnknown_whereNothingIsSaid) {
  for (const Json& json : {Json(), Json("freeze"), Json{{"severity", 7}, {"start_s", nullptr}}}) {
    const Event event = eventOf(json);
    EXPECT_EQ(event.type, "unknown");
    EXPECT_EQ(event.severity, Severity::INFO);
    EXPECT_TRUE(std::isnan(event.startTime));
  }
}

TEST(EventSummary, countsSeveritiesAndKnowsTheWorstOfEachType) {
  Event mild = freeze;
  mild.severity = Severity::WARN;
  Event cut = freeze;
  cut.type = "scene_cut";
  cut.severity = Severity::INFO;
  EventSummary summary;
  for (const Event& event : {mild, freeze, mild, cut, unknown}) addTo(&summary, event);
  EXPECT_EQ(summary.counts, (std::array<int64_t, 3>{1, 3, 1}));
  EXPECT_EQ(summary.worst, (std::map<std::string, Severity>{{"freeze", Severity::FAIL},
                                                            {"scene_cut", Severity::INFO},
                                                            {"truncation", Severity::WARN}}));
}

TEST(EventsCsv, hasAHeaderAndARowForEveryEvent) {
  EXPECT_EQ(csvOf({freeze, unknown}),
            "id,type,severity,first_frame,last_frame,start_s,end_s,duration_s,peak_frame,"
            "peak_value,threshold,at_start,at_end\r\n"
            "1,freeze,fail,75,124,3,5.5,2.5,75,1,1,0,1\r\n"
            "2,truncation,warn,124,124,,,,124,,,1,0\r\n");
}

TEST(EventsCsv, hasNoDigitsThatNobodyMeasured) {
  // 3.85 - 3.7 is 0.1499999999999999.
  Event event = freeze;
  event.startTime = 3.7;
  event.endTime = 3.85;
  EXPECT_NE(csvOf({event}).find(",3.7,3.85,0.15,"), std::string::npos);
}

TEST(EventsCsv, isItsHeader_ofNoEvents) {
  EXPECT_EQ(csvOf({}), std::string(EVENT_COLUMNS) + "\r\n");
}
