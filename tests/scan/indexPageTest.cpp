// The index as it is written; its sorting and filtering are looked at in a browser: page.mjs.
#include "scan/report/indexPage.h"

#include <gtest/gtest.h>

#include <cmath>

#include "pageParts.h"
#include "sample.h"
#include "scan/analysis/indicatorTable.h"
#include "scan/report/html.h"

namespace {

// An input with this verdict and so many failures and warnings.
IndexEntry entryOf(const std::string& path, Verdict verdict, int fails, int warnings) {
  EventSummary events;
  events.counts = {0, warnings, fails};
  if (fails > 0) events.worst["freeze"] = Severity::FAIL;
  if (warnings > 0) events.worst["blur"] = Severity::WARN;
  IndexEntry entry = {{}, path + ".lumascan", events};
  entry.record.input.path = path;
  entry.record.judgement.verdict = verdict;
  return entry;
}

std::string pageOf(const std::vector<IndexEntry>& entries) {
  return writtenText([&](FILE* out) { writeIndex(entries, out); });
}

std::vector<std::string> namesOf(const std::string& page) {
  return allBetween(page, "<bdi>", "</bdi>");
}

}  // namespace

TEST(Index, putsTheWorstFirst) {
  const std::string page = pageOf(
      {entryOf("pass", Verdict::PASS, 0, 0), entryOf("attention", Verdict::ATTENTION, 0, 1),
       entryOf("fail b", Verdict::FAIL, 1, 1), entryOf("fail many warnings", Verdict::FAIL, 1, 5),
       entryOf("fail twice", Verdict::FAIL, 2, 0), entryOf("fail a", Verdict::FAIL, 1, 1),
       entryOf("incomplete", Verdict::INCOMPLETE, 0, 0)});
  EXPECT_EQ(namesOf(page),
            (std::vector<std::string>{"incomplete", "fail twice", "fail many warnings", "fail a",
                                      "fail b", "attention", "pass"}));
  EXPECT_TRUE(contains(page, "<h1>7 inputs</h1>"));
  EXPECT_TRUE(contains(page, "4 Fail</span>"));
}

TEST(Index, marksVideosThatAreGone) {
  IndexEntry gone = entryOf("a", Verdict::PASS, 0, 0);
  gone.isVideoGone = true;
  const std::string page = pageOf({gone, entryOf("b", Verdict::PASS, 0, 0)});
  const std::string mark = "<p>the video is not there any more</p>";
  EXPECT_TRUE(contains(page, "<bdi>a</bdi></a>" + mark));
  EXPECT_TRUE(contains(page, "<bdi>b</bdi></a></td>"));
}

TEST(Index, tellsVerdictReasonsCountsAndDuration) {
  const VideoResult input = sampleInput("clips/a.mp4", 300, 25.0, 1);
  const std::string page =
      pageOf({{input.record, "clips/a.mp4.lumascan", summaryOf(input.events)}});
  EXPECT_TRUE(contains(page, "<a href=\"clips/a.mp4.lumascan/report.html\">"));
  EXPECT_TRUE(contains(page, "<p>freeze for 2.1 s</p>"));
  EXPECT_TRUE(contains(page, ">0:00:12.000</td>"));
  EXPECT_EQ(allBetween(page, "<td class=\"n count fail\" data-v=\"", "\"").at(0), "3");
  EXPECT_EQ(allBetween(page, "<td class=\"n count warn\" data-v=\"", "\"").at(0), "3");
  EXPECT_EQ(allBetween(page, "<td class=\"n count info\" data-v=\"", "\"").at(0), "2");
}

TEST(Index, drawsEveryOverviewOnAScaleThatAllShare) {
  IndexEntry low = entryOf("a", Verdict::PASS, 0, 0);
  IndexEntry high = entryOf("b", Verdict::PASS, 0, 0);
  const size_t blur = indicatorNamed("blur");
  low.record.indicators.at(blur).overview = {0.0, 1.0, std::nan(""), 2.0};
  high.record.indicators.at(blur).overview = {4.0};
  const std::string page = pageOf({low, high});
  // 20 pixels for 4 units, columns 21 apart.
  EXPECT_EQ(allBetween(page, "<path d=\"", "\""),
            (std::vector<std::string>{"M0 20h1L21 15M63 10h1", "M0 0h1"}));
  EXPECT_EQ(allBetween(page, "<td class=\"spark ", "\"").size(), 2 * INDICATORS);
}

TEST(Index, marksTheIndicatorsOfEvents) {
  const std::string page = pageOf({entryOf("a", Verdict::FAIL, 1, 1)});
  EXPECT_EQ(between(page, "<td class=\"spark fail\"", "</td>").find("Freezing</span>") !=
                std::string::npos,
            true);
  EXPECT_TRUE(contains(between(page, "<td class=\"spark warn\"", "</td>"), "Blur</span>"));
  EXPECT_EQ(allBetween(page, "<td class=\"spark \"", "</td>").size(), INDICATORS - 2);
}

TEST(Index, marksAnIndicatorAsTheWorstOfItsEvents) {
  for (const auto& [over, under] :
       {std::pair(Severity::FAIL, Severity::WARN), std::pair(Severity::WARN, Severity::FAIL)}) {
    IndexEntry entry = entryOf("a", Verdict::FAIL, 0, 0);
    entry.events.worst = {
        {"over_exposure", over}, {"under_exposure", under}, {"scene_cut", Severity::INFO}};
    const std::string page = pageOf({entry});
    EXPECT_TRUE(contains(between(page, "<td class=\"spark fail\"", "</td>"), "Exposure</span>"));
    EXPECT_FALSE(contains(page, "<td class=\"spark warn\""));
    EXPECT_FALSE(contains(page, "<td class=\"spark info\""));
  }
}

TEST(Index, takesHostileTextAsText) {
  IndexEntry entry = entryOf("<img src=x>\n\"\xff", Verdict::FAIL, 1, 0);
  entry.record.judgement.reasons = {"</script><img>"};
  entry.folderUri = "\"><img>";
  const std::string page = pageOf({entry});
  EXPECT_FALSE(contains(page, "<img"));
  EXPECT_FALSE(contains(page, "\xff"));
  EXPECT_EQ(namesOf(page).at(0), "&lt;img src=x&gt;\xe2\x90\x8a&quot;\xef\xbf\xbd");
}

TEST(Index, linksToFoldersAndToNothingElse) {
  const auto linkOf = [](const std::string& folderUri) {
    IndexEntry entry = entryOf("a", Verdict::PASS, 0, 0);
    entry.folderUri = folderUri;
    return between(pageOf({entry}), "<a href=\"", "\"");
  };
  EXPECT_EQ(linkOf("javascript:alert(1)"), "./javascript:alert(1)/report.html");
  EXPECT_EQ(linkOf("a:b/c"), "./a:b/c/report.html");
  EXPECT_EQ(linkOf("a/b:c"), "a/b:c/report.html");
  EXPECT_EQ(linkOf("../a"), "../a/report.html");
  EXPECT_EQ(linkOf("file:///a/b"), "file:///a/b/report.html");
}

TEST(Index, letsItsOwnScriptsRunOnly) {
  const std::string page = pageOf({entryOf("a", Verdict::PASS, 0, 0)});
  const std::string policy = between(page, "Content-Security-Policy\" content=\"", "\">");
  const std::vector<std::string> scripts = allBetween(page, "<script>", "</script>");
  ASSERT_EQ(scripts.size(), 2U);
  for (const std::string& script : scripts) EXPECT_TRUE(contains(policy, sha256Base64(script)));
}

TEST(Index, ofNothingIsStillAPage) {
  EXPECT_TRUE(contains(pageOf({}), "<h1>0 inputs</h1>"));
  EXPECT_TRUE(contains(pageOf({{{}, "a", {}}}), "Incomplete"));
}
