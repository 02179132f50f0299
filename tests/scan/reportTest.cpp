// The page as it is written. What its script does is looked at in a browser: page.mjs.
#include "scan/report/report.h"

#include <gtest/gtest.h>

#include <cmath>

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
}

TEST(Report, carriesItsFrames) {
  const std::string page = samplePage();
  const Json model =
      Json::parse(between(page, "<script type=\"application/json\" id=\"model\">", "</script>"));
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
