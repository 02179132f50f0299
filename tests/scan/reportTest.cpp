// The page as it is written. What its script does is looked at in a browser: page.mjs.
#include "scan/report/report.h"

#include <gtest/gtest.h>

#include <cmath>
#include <map>

#include "pageParts.h"
#include "sample.h"
#include "scan/files/json.h"
#include "scan/report/html.h"

namespace {

constexpr char HOSTILE[] = "<img src=x onerror=alert(1)>\n\"'&</script>\xff.mp4";

std::string reportOf(const std::vector<VideoResult>& results) {
  std::vector<const VideoResult*> inputs;
  inputs.reserve(results.size());
  for (const VideoResult& result : results) inputs.push_back(&result);
  return writtenText([&](FILE* out) { writeReport(inputs, out); });
}

std::string samplePage() {
  return reportOf({sampleInput("clips/a b.mp4", 300, 25.0, 1)});
}

Json modelIn(const std::string& page) {
  return Json::parse(between(page, "<script type=\"application/json\" id=\"model\">", "</script>"));
}

// What is left of the page when scripts and styles are gone.
std::string readable(const std::string& page) {
  return between(page, "<main>", "</main>");
}

}  // namespace

TEST(Report, letsItsOwnScriptsAndStyleRunAndNothingElse) {
  const std::string page = samplePage();
  const std::string policy =
      between(page, "<meta http-equiv=\"Content-Security-Policy\" content=\"", "\">");
  std::string scripts;
  for (const std::string& script : allBetween(page, "<script>", "</script>")) {
    scripts += " 'sha256-" + sha256Base64(script) + "'";
  }
  const std::vector<std::string> styles = allBetween(page, "<style>", "</style>");
  ASSERT_EQ(styles.size(), 1U);
  EXPECT_EQ(policy, "default-src 'none'; script-src" + scripts + "; style-src 'sha256-" +
                        sha256Base64(styles[0]) +
                        "'; img-src data:; base-uri 'none'; form-action 'none'");
  // The policy comes before all that it is about.
  EXPECT_LT(page.find("Content-Security-Policy"), page.find("<style>"));
  EXPECT_FALSE(contains(readable(page), " style="));
  EXPECT_FALSE(contains(readable(page), " onclick="));
}

TEST(Report, referstoNothingOutside) {
  const std::string body = readable(samplePage());
  for (const std::string& link : allBetween(body, "href=\"", "\"")) EXPECT_EQ(link[0], '#') << link;
  for (const std::string& image : allBetween(body, "src=\"", "\"")) {
    EXPECT_EQ(image.rfind("data:", 0), 0U) << image;
  }
}

TEST(Report, isReadableWithoutScript) {
  const std::string body = readable(samplePage());
  EXPECT_EQ(between(body, "<p class=\"mark\">", "</p>"), "Fail");
  EXPECT_TRUE(contains(body, "<li>freeze for 2.1 s</li>"));
  EXPECT_TRUE(contains(body, "<dt>Codec</dt><dd>h264, yuv420p</dd>"));
  EXPECT_EQ(allBetween(body, "<tr id=\"event-", "\"").size(), 8U);
  EXPECT_EQ(allBetween(body, "<path class=\"line i0\" d=\"M", "\"").size(), INDICATORS);
  for (const IndicatorInfo& indicator : INDICATOR_TABLE) {
    EXPECT_TRUE(contains(body, std::string("<h4>") + indicator.title + " ")) << indicator.name;
  }
}

TEST(Report, putsTheVerdictFirst) {
  const std::string body = readable(samplePage());
  size_t last = 0;
  for (const char* const part :
       {"class=\"mark\"", "class=\"facts\"", "id=\"lanes\"", "id=\"tracks\"", "id=\"events\""}) {
    const size_t place = body.find(part);
    ASSERT_NE(place, std::string::npos) << part;
    EXPECT_GT(place, last) << part;
    last = place;
  }
}

TEST(Report, drawsThresholdsOnTheirTracks) {
  const std::string body = readable(samplePage());
  const std::string exposure = between(body, "data-track=\"exposure\"", "<div class=\"track\"");
  EXPECT_TRUE(contains(exposure, "over exposure at 215"));
  EXPECT_TRUE(contains(exposure, "under exposure at 30"));
  EXPECT_EQ(allBetween(exposure, "<path class=\"threshold warn\"", "/>").size(), 2U);
  const std::string contrast = between(body, "data-track=\"contrast\"", "</svg>");
  EXPECT_FALSE(contains(contrast, "threshold"));
}

TEST(Report, showsPicturesOfEventsOnce) {
  VideoResult input = sampleInput("a", 300, 25.0, 1);
  Event event = input.events[3];
  event.firstFrame = 150;
  event.peakFrame = 150;
  event.lastFrame = 170;
  input.events = {event};
  input.thumbnails = {{150, "first"}, {170, "last"}, {151, "of no event"}};
  const std::string body = readable(reportOf({input}));
  EXPECT_EQ(allBetween(body, "data:image/jpeg;base64,", "\""),
            (std::vector<std::string>{base64("first"), base64("last")}));
  EXPECT_TRUE(contains(body, "<figcaption>start, peak</figcaption>"));
  input.events[0].peakFrame = 170;
  EXPECT_EQ(allBetween(readable(reportOf({input})), "<figcaption>", "</figcaption>"),
            (std::vector<std::string>{"start", "peak, end"}));
}

TEST(Report, hasARowForEachEvent_withWhatItIsSortedBy) {
  VideoResult input = sampleInput("a", 300, 25.0, 1);
  Event event = input.events[3];
  event.firstFrame = 150;
  event.lastFrame = 170;
  event.startTime = 6.0;
  event.endTime = 6.84;
  event.peakFrame = 160;
  event.peakValue = 9.25;
  event.threshold = 8.5;
  event.isAtEnd = true;
  input.events = {event};
  const auto cells = [&] {
    const std::string body = readable(reportOf({input}));
    return allBetween(between(body, "<tr id=\"event-0\"", "</tr>"), "<td", "</td>");
  };
  const std::string dash = "\xe2\x80\x93";
  EXPECT_EQ(cells(), (std::vector<std::string>{
                         ">blur <small>to the end</small>",
                         " data-v=\"1\"><span class=\"severity warn\">warn</span>",
                         " class=\"n\" data-v=\"6\"><a href=\"#tracks\">00:00:06:00</a>",
                         " class=\"n\" data-v=\"0.84\">0.84 s",
                         " class=\"n\" data-v=\"150\">150" + dash + "170",
                         " class=\"n\" data-v=\"160\">160", " class=\"n\" data-v=\"9.25\">9.25",
                         " class=\"n\" data-v=\"8.5\">8.5", " class=\"pictures\">"}));
  // Of one frame, without a value, and when it is shown unknown: it stands where frame 200 does.
  event.firstFrame = event.lastFrame = event.peakFrame = 200;
  event.startTime = event.endTime = event.peakValue = event.threshold = std::nan("");
  event.isAtStart = true;
  event.isAtEnd = false;
  event.severity = Severity::FAIL;
  input.events = {event};
  EXPECT_EQ(cells(), (std::vector<std::string>{
                         ">blur <small>from the start</small>",
                         " data-v=\"2\"><span class=\"severity fail\">fail</span>",
                         " class=\"n\" data-v=\"8\"><a href=\"#tracks\">00:00:08:00</a>",
                         " class=\"n\" data-v=\"\">" + dash, " class=\"n\" data-v=\"200\">200",
                         " class=\"n\" data-v=\"200\">200", " class=\"n\" data-v=\"\">" + dash,
                         " class=\"n\" data-v=\"\">" + dash, " class=\"pictures\">"}));
  const Json shown = modelIn(reportOf({input}))["events"][0];
  EXPECT_EQ(shown["start"], 8.0);
  EXPECT_NEAR(shown["end"].get<double>(), 8.04, 1e-9);
}

TEST(Report, tellsTheStatisticsOfEachInput) {
  VideoResult first = sampleInput("a", 100, 25.0, 1);
  VideoResult second = sampleInput("b", 100, 25.0, 2);
  const size_t blur = indicatorNamed("blur");
  // n, min, max, mean, ...
  first.record.indicators.at(blur).statistics = {100, 1.25, 9.5, 4.75, 1.0,
                                                 2.0, 2.0,  3.0, 8.0,  9.0};
  second.record.indicators.at(blur).statistics = {};
  const std::string track =
      between(readable(reportOf({first, second})), "data-track=\"blur\"", "</svg>");
  EXPECT_EQ(allBetween(track, "</output><small>", "</small>"),
            (std::vector<std::string>{"1.25 to 9.5, mean 4.75", "not measured"}));
}

TEST(Report, hasTheVerdictOfEachInputInItsTitle) {
  VideoResult second = sampleInput("clips/b.mp4", 100, 25.0, 2);
  second.record.judgement.verdict = Verdict::PASS;
  const std::string page = reportOf({sampleInput("clips/a.mp4", 100, 25.0, 1), second});
  EXPECT_EQ(between(page, "<title>", "</title>"), "a.mp4: Fail / b.mp4: Pass");
}

TEST(Report, carriesItsFrames) {
  const std::string page = samplePage();
  const Json model = modelIn(page);
  EXPECT_EQ(model["inputs"][0]["rows"], 300);
  EXPECT_EQ(model["inputs"][0]["fps"], 25.0);
  EXPECT_EQ(model["tracks"].size(), INDICATORS);
  EXPECT_EQ(model["events"].size(), 8U);
  EXPECT_EQ(model["start"], 0.0);
  EXPECT_NEAR(model["end"].get<double>(), 12.0, 1e-9);
  const std::string frames = between(page, "id=\"frames-0\">", "</script>");
  EXPECT_EQ(base64(unbase64(frames)), frames);
  EXPECT_GT(frames.size(), 300U);
}

TEST(Report, takesHostileTextAsText) {
  VideoResult input = sampleInput(HOSTILE, 50, 25.0, 1);
  StreamFacts& stream = *input.record.input.stream;
  for (std::string* const text :
       {&stream.codec, &stream.container, &stream.pixelFormat, &stream.fieldOrder,
        &stream.colorRange, &stream.colorTransfer, &stream.sampleAspectRatio,
        &input.record.input.fingerprint->checksum, &input.record.toolVersion, &input.record.error,
        &input.events[0].type}) {
    *text = HOSTILE;
  }
  input.record.judgement.reasons = {HOSTILE};
  input.record.warnings = {HOSTILE};
  for (const std::string& page : {reportOf({input}), reportOf({input, input})}) {
    EXPECT_FALSE(contains(page, "<img"));
    EXPECT_FALSE(contains(page, "\xff"));
    // Scripts of the page, its model and the frames of every input.
    EXPECT_EQ(allBetween(page, "<script", "</script").size(),
              6U + 1U + (contains(page, "frames-1") ? 2U : 1U));
  }
}

TEST(Report, showsSeveralInputsSideBySide) {
  VideoResult second = sampleInput("b.mp4", 600, 50.0, 2);
  second.record.judgement.verdict = Verdict::PASS;
  const std::string body =
      readable(reportOf({sampleInput("a.mp4", 300, 25.0, 1), second, failedInput("c.mp4")}));
  EXPECT_EQ(allBetween(body, "<p class=\"mark\">", "</p>"),
            (std::vector<std::string>{"Fail", "Pass", "Incomplete"}));
  EXPECT_TRUE(contains(body, "<th scope=\"col\">Input</th>"));
  EXPECT_TRUE(contains(body,
                       "<tr class=\"differs\"><th scope=\"row\">Frame rate</th><td>25 per "
                       "second</td><td>50 per second</td><td></td></tr>"));
  const std::string blur = between(body, "data-track=\"blur\"", "</svg>");
  EXPECT_EQ(allBetween(blur, "<path class=\"line i", "\""),
            (std::vector<std::string>{"0", "1", "2"}));
}

// The expected numbers come from what sample.cpp says of its events: black is from 0 to 0.05 of the
// last frame's number, freeze from 0.3 to 0.37, blur from 0.5 to 0.58, the scene cut at 0.7.
TEST(Report, placesInputsOfOtherRatesAndLengthsOnOneAxis) {
  // 12 s at 25 frames a second beside 18 s at 50.
  const std::string page =
      reportOf({sampleInput("a.mp4", 300, 25.0, 1), sampleInput("b.mp4", 900, 50.0, 2)});
  const Json model = modelIn(page);
  EXPECT_EQ(model["start"], 0.0);
  EXPECT_NEAR(model["end"].get<double>(), 18.0, 1e-9);
  EXPECT_EQ(model["inputs"][0]["fps"], 25.0);
  EXPECT_EQ(model["inputs"][1]["fps"], 50.0);
  EXPECT_EQ(model["inputs"][0]["rows"], 300);
  EXPECT_EQ(model["inputs"][1]["rows"], 900);
  const std::string body = readable(page);
  EXPECT_TRUE(contains(body,
                       "<tr class=\"differs\"><th scope=\"row\">Duration</th>"
                       "<td>0:00:12.000</td><td>0:00:18.000</td></tr>"));
  EXPECT_TRUE(contains(body, "<tr><th scope=\"row\">Codec</th>"));
  // The cuts are at frame 210 = ceil(0.7 * 299), 8.4 s, and at frame 630 = ceil(0.7 * 899), 12.6 s:
  // at 46.6667 and 70 % of 18 s.
  std::vector<Json> cuts;
  for (const Json& event : model["events"]) {
    if (event["type"] == "scene cut") cuts.push_back(event);
  }
  ASSERT_EQ(cuts.size(), 2U);
  EXPECT_EQ(cuts[0]["input"], 0);
  EXPECT_NEAR(cuts[0]["start"].get<double>(), 8.4, 1e-9);
  EXPECT_EQ(cuts[0]["peak"], 210);
  EXPECT_EQ(cuts[1]["input"], 1);
  EXPECT_NEAR(cuts[1]["start"].get<double>(), 12.6, 1e-9);
  EXPECT_EQ(cuts[1]["peak"], 630);
  const std::string lane = between(body, "<span>scene cut <small>2</small></span>", "</svg>");
  EXPECT_EQ(allBetween(lane, "<rect class=\"info\" x=\"", "\" width"),
            (std::vector<std::string>{"46.6667%\" y=\"2", "70.0000%\" y=\"16"}));
  EXPECT_TRUE(contains(lane, "scene cut, info, 00:00:08:10"));  // 210 = 8 * 25 + 10
  EXPECT_TRUE(contains(lane, "scene cut, info, 00:00:12:30"));  // 630 = 12 * 50 + 30
  const std::string table = body.substr(body.find("<table class=\"events\""));
  std::vector<std::string> rows;
  for (const std::string& row : allBetween(table, "<tr id=\"event-", "</tr>")) {
    if (contains(row, "scene cut")) rows.push_back(row);
  }
  ASSERT_EQ(rows.size(), 2U);
  EXPECT_TRUE(contains(rows[0], ">a.mp4</bdi>"));
  EXPECT_TRUE(contains(rows[0], ">00:00:08:10</a>"));
  EXPECT_TRUE(contains(rows[1], ">b.mp4</bdi>"));
  EXPECT_TRUE(contains(rows[1], ">00:00:12:30</a>"));
}

TEST(Report, drawsInputsOfOtherRatesAndLengthsOnOneAxis) {
  const std::string body =
      readable(reportOf({sampleInput("a.mp4", 300, 25.0, 1), sampleInput("b.mp4", 900, 50.0, 2)}));
  // Pictures are 600 columns wide, 100/3 for each of 18 s. Blur is from frame 150 = ceil(0.5 * 299)
  // to 173 = floor(0.58 * 299), 6 s to 6.96 s, and from 450 to 521, 9 s to 10.44 s.
  const std::string blur = between(body, "data-track=\"blur\"", "</svg>");
  EXPECT_EQ(allBetween(blur, "<rect class=\"warn\" x=\"", "\" y="),
            (std::vector<std::string>{"200.00\" width=\"32.00", "300.00\" width=\"48.00"}));
  // The last frames appear at 11.96 s and 17.98 s: at 398.0 and 598.3 of 599.
  const std::vector<std::string> lines = allBetween(blur, "<path class=\"line ", "\"/>");
  ASSERT_EQ(lines.size(), 2U);
  EXPECT_EQ(std::stoi(lines[0].substr(lines[0].rfind('L') + 1)), 398);
  EXPECT_EQ(std::stoi(lines[1].substr(lines[1].rfind('L') + 1)), 598);
}

TEST(Report, shadesAnEventOnItsOwnTrack) {
  const std::string body = readable(samplePage());
  // How many events there are of each indicator.
  const std::map<std::string, size_t> counts = {
      {"blackout", 1},   {"letterbox", 1},         {"freezing", 2}, {"blur", 1},
      {"block_loss", 1}, {"temporal_activity", 1}, {"exposure", 1}};
  for (const IndicatorInfo& indicator : INDICATOR_TABLE) {
    const std::string track =
        between(body, "data-track=\"" + std::string(indicator.name) + "\"", "</svg>");
    const auto found = counts.find(indicator.name);
    EXPECT_EQ(allBetween(track, "<rect ", ">").size(), found == counts.end() ? 0 : found->second)
        << indicator.name;
  }
}

TEST(Report, showsThresholdsOnceThatSeveralInputsShare) {
  VideoResult second = sampleInput("b.mp4", 300, 25.0, 2);
  second.record.thresholds.at(eventTypeNamed("blur")).enter = 9.0;
  const std::string page = reportOf({sampleInput("a.mp4", 300, 25.0, 1), second});
  const std::string body = readable(page);
  const auto thresholdsOn = [&](const std::string& indicator) {
    const std::string track = between(body, "data-track=\"" + indicator + "\"", "</svg>");
    return allBetween(track, "<p class=\"threshold ", "</p>");
  };
  EXPECT_EQ(thresholdsOn("blur"),
            (std::vector<std::string>{"warn\">blur at 8", "warn\">blur at 9"}));
  EXPECT_EQ(thresholdsOn("exposure"), (std::vector<std::string>{"warn\">over exposure at 215",
                                                                "warn\">under exposure at 30"}));
  const Json model = modelIn(page);
  const Json& blur = model["tracks"].at(indicatorNamed("blur"));
  EXPECT_EQ(blur["name"], "blur");
  EXPECT_EQ(blur["thresholds"].dump(),
            R"([{"value":8.0,"severity":"warn"},{"value":9.0,"severity":"warn"}])");
}

TEST(Report, ofARangeHasTheNumbersAndTimesOfTheFile) {
  // Frames 90250 to 90349 of 25 a second: from 3610 s on, for 4 s.
  const std::string page = reportOf({sampleRange("a.mp4", 100, 25.0, 1, 90250)});
  const Json model = modelIn(page);
  EXPECT_EQ(model["start"], 3610.0);
  EXPECT_NEAR(model["end"].get<double>(), 3614.0, 1e-9);
  EXPECT_EQ(model["inputs"][0]["firstFrame"], 90250);
  const std::string body = readable(page);
  EXPECT_TRUE(contains(body, "<dd>0:00:04.000 of 1:00:14.000 declared</dd>"));
  EXPECT_TRUE(contains(body, "<dd>100, from frame 90250</dd>"));
  // Black lasts to frame 4 = floor(0.05 * 99) of the range.
  const std::string row = between(body, "<tr id=\"event-0\"", "</tr>");
  EXPECT_TRUE(contains(row, ">black <small>from the start</small>"));
  EXPECT_TRUE(contains(row, ">01:00:10:00</a>"));
  EXPECT_TRUE(contains(row,
                       ">90250\xe2\x80\x93"
                       "90254</td>"));
  const std::string axis = between(body, "<div class=\"lane axis\">", "</svg>");
  EXPECT_EQ(between(axis, "<text y=\"10\" x=\"", "</text>"), "0.0000%\">1:00:10.00");
  // Frames 30 = ceil(0.3 * 99) to 36 = floor(0.37 * 99), 1.2 s to 1.48 s: of 4 s, and of 600
  // columns.
  const std::string lane = between(body, "<span>freeze <small>2</small></span>", "</svg>");
  EXPECT_EQ(between(lane, "<rect class=\"fail\" x=\"", " height"),
            "30.0000%\" y=\"2\" width=\"7.0000%\"");
  const std::string track = between(body, "data-track=\"freezing\"", "</svg>");
  EXPECT_EQ(between(track, "<rect class=\"fail\" x=\"", " y"), "180.00\" width=\"42.00\"");
}

TEST(Report, ofRangesReachesFromTheFirstStartToTheLastEnd) {
  const Json model =
      modelIn(reportOf({sampleRange("a.mp4", 100, 25.0, 1, 250), failedInput("b.mp4"),
                        sampleRange("c.mp4", 100, 25.0, 2, 150)}));
  EXPECT_EQ(model["start"], 6.0);
  EXPECT_NEAR(model["end"].get<double>(), 14.0, 1e-9);
}

TEST(Report, tellsWhatIsWrongWithAFile) {
  VideoResult input = sampleInput("a.mp4", 300, 25.0, 1);
  EXPECT_FALSE(contains(readable(reportOf({input})), "The file ends before it should."));
  input.record.isTruncated = true;
  input.record.error = "the file is cut: its end is missing";
  input.record.input.stream->declaredDuration = 14.0;
  input.record.analysis->corruptFrames = 3;
  input.record.analysis->decodeErrors = 2;
  const std::string body = readable(reportOf({input}));
  EXPECT_EQ(between(body, "<ul class=\"warnings\">", "</ul>"),
            "<li>The file ends before it should.</li>"
            "<li>The container declares one frame more than there are.</li>");
  EXPECT_EQ(between(body, "<p class=\"error\">", "</p>"), "the file is cut: its end is missing");
  for (const char* const fact : {"<dt>Duration</dt><dd>0:00:12.000 of 0:00:14.000 declared</dd>",
                                 "<dt>Frames</dt><dd>300</dd>",
                                 "<dt>Damage</dt><dd>3 damaged frames, 2 decoding errors</dd>"}) {
    EXPECT_TRUE(contains(body, fact)) << fact;
  }
}

TEST(Report, ofNothingIsStillAPage) {
  EXPECT_TRUE(contains(reportOf({failedInput("c.mp4")}), "No frame was analysed."));
  EXPECT_TRUE(contains(reportOf({failedInput("c.mp4")}), "there is no video in it"));
  EXPECT_TRUE(contains(reportOf({}), "</html>"));
  EXPECT_TRUE(contains(reportOf({VideoResult{}}), "Incomplete"));
}

TEST(Report, bearsEventsOutsideOfItsFrames) {
  VideoResult input = sampleInput("a.mp4", 50, 25.0, 1);
  Event& event = input.events[0];
  event.firstFrame = -5;
  event.lastFrame = 1000000000000;
  event.startTime = event.endTime = event.peakValue = std::nan("");
  EXPECT_FALSE(contains(readable(reportOf({input})), "nan"));
}

TEST(Report, placesEventsWithoutATimeByTheirFrames) {
  VideoResult input = sampleInput("a.mp4", 50, 25.0, 1);
  Event event = input.events[0];
  event.firstFrame = event.lastFrame = 49;  // of 0.04 s each, the last one
  event.startTime = event.endTime = std::nan("");
  input.events = {event};
  const Json events = modelIn(reportOf({input}))["events"];
  EXPECT_NEAR(events[0]["start"].get<double>(), 1.96, 1e-9) << events.dump();
}

TEST(Report, numbersInputsWithoutAName) {
  VideoResult named = sampleInput("a.mp4", 50, 25.0, 1);
  VideoResult nameless = named;
  nameless.record.input.path = "";
  EXPECT_TRUE(contains(readable(reportOf({named, nameless})), ">input 2<"));
}

TEST(Report, showsTheGravestOfVeryManyEvents) {
  VideoResult input = sampleInput("a.mp4", 5000, 25.0, 1);
  const Event sample = input.events[0];
  input.events.clear();
  for (int64_t frame = 0; frame < 2500; ++frame) {
    Event event = sample;
    event.severity = frame < 600 ? Severity::INFO : frame == 2499 ? Severity::FAIL : Severity::WARN;
    event.firstFrame = event.peakFrame = event.lastFrame = frame;
    event.startTime = static_cast<double>(frame) / 25.0;
    event.endTime = event.startTime + 0.04;
    input.events.push_back(event);
  }
  const std::string body = readable(reportOf({input}));
  EXPECT_TRUE(contains(body, "Rows are shown for the 2000 gravest of 2500 events."));
  // All that fail or warn, and the first of the others; in order of time.
  std::vector<std::string> expected;
  for (int frame = 0; frame < 2500; ++frame) {
    if (frame < 100 || frame >= 600) expected.push_back(std::to_string(frame));
  }
  const std::string table = body.substr(body.find("<table class=\"events\""));
  std::vector<std::string> shown;
  for (const std::string& row : allBetween(table, "<tr id=\"event-", "</tr>")) {
    shown.push_back(allBetween(row, "<td class=\"n\" data-v=\"", "\"").at(2));
  }
  EXPECT_EQ(shown, expected);
  // The lane shows where the others are, which are one band: 500 frames from 4 s on, of 200 s.
  EXPECT_TRUE(contains(body, "black <small>2500</small>"));
  const std::string lane = between(body, "<svg class=\"bands\"", "<a href");
  EXPECT_EQ(between(lane, "<rect ", "><title>"),
            "class=\"info\" x=\"2.0000%\" y=\"2\" width=\"10.0000%\" height=\"10\"");
  EXPECT_EQ(allBetween(lane, "<rect ", ">").size(), 1U);
  input.events.resize(2000);
  EXPECT_FALSE(contains(reportOf({input}), "gravest"));
}
