// What pages say about a file and its analysis, in words.
#include "scan/report/resultFacts.h"

#include <gtest/gtest.h>

#include "sample.h"

namespace {

// The fact of that title; empty when it is not among them.
std::string factOf(const ResultRecord& record, const std::string& title) {
  for (const Fact& fact : factsOf(record)) {
    if (fact.title == title) return fact.text;
  }
  return "";
}

// Twelve seconds, all that the file declares.
ResultRecord twelveSeconds() {
  return sampleInput("clips/a.mp4", 300, 25.0, 1).record;
}

}  // namespace

TEST(Facts, tellWhatIsDeclared_whereItIsASecondMoreOrLess) {
  ResultRecord record = twelveSeconds();
  const auto durationFor = [&](double declared) {
    record.input.stream->declaredDuration = declared;
    return factOf(record, "Duration");
  };
  EXPECT_EQ(durationFor(12.0), "0:00:12.000");
  EXPECT_EQ(durationFor(12.75), "0:00:12.000");
  EXPECT_EQ(durationFor(13.0), "0:00:12.000 of 0:00:13.000 declared");
  EXPECT_EQ(durationFor(3614.5), "0:00:12.000 of 1:00:14.500 declared");
  EXPECT_EQ(durationFor(11.0), "0:00:12.000 of 0:00:11.000 declared");
  EXPECT_EQ(durationFor(UNKNOWN), "0:00:12.000");
  // Nothing was analysed: it lasts for what is declared.
  record.analysis.reset();
  EXPECT_EQ(durationFor(14.0), "0:00:14.000");
}

TEST(Facts, countTheDurationOfARangeFromItsStart) {
  // 100 frames of 25 a second behind the 250th one.
  const ResultRecord record = sampleRange("clips/a.mp4", 100, 25.0, 1, 250).record;
  EXPECT_EQ(durationOf(record), 4.0);
  EXPECT_EQ(factOf(record, "Duration"), "0:00:04.000 of 0:00:14.000 declared");
  EXPECT_EQ(factOf(record, "Frames"), "100, from frame 250");
  EXPECT_EQ(factOf(twelveSeconds(), "Frames"), "300");
}

TEST(Facts, countWhatIsDamaged) {
  ResultRecord record = twelveSeconds();
  const auto damageOf = [&](std::optional<int64_t> corrupt, std::optional<int64_t> errors) {
    record.analysis->corruptFrames = corrupt;
    record.analysis->decodeErrors = errors;
    return factOf(record, "Damage");
  };
  EXPECT_EQ(damageOf(3, 2), "3 damaged frames, 2 decoding errors");
  EXPECT_EQ(damageOf(3, std::nullopt), "3 damaged frames");
  EXPECT_EQ(damageOf(std::nullopt, 2), "2 decoding errors");
  EXPECT_EQ(damageOf(0, 2), "0 damaged frames, 2 decoding errors");
  EXPECT_EQ(damageOf(1, 1), "1 damaged frame, 1 decoding error");
  EXPECT_EQ(damageOf(0, 0), "none");
  EXPECT_EQ(damageOf(std::nullopt, std::nullopt), "");
  record.analysis->messages = 14;
  EXPECT_EQ(damageOf(0, 0), "0 damaged frames, 0 decoding errors, 14 messages");
  EXPECT_EQ(damageOf(3, std::nullopt), "3 damaged frames, 14 messages");
}

TEST(Facts, giveTheRateOfTheFile_notTheOneOfTheAnalysis) {
  ResultRecord record = twelveSeconds();
  record.input.stream->frameRate = 30000.0 / 1001.0;
  EXPECT_EQ(factOf(record, "Frame rate"), "29.97 per second");
  EXPECT_EQ(frameRateOf(record), 25.0);
  record.analysis->fps = UNKNOWN;
  EXPECT_EQ(frameRateOf(record), 30000.0 / 1001.0);
}

TEST(Facts, describeTheFile) {
  const ResultRecord record = twelveSeconds();
  EXPECT_EQ(factOf(record, "Path"), "clips/a.mp4");
  EXPECT_EQ(factOf(record, "Codec"), "h264, yuv420p");
  EXPECT_EQ(factOf(record, "Container"), "mov,mp4,m4a,3gp,3g2,mj2");
  EXPECT_EQ(factOf(record, "Fields"), "progressive");
  EXPECT_EQ(factOf(record, "Colour"), "tv, bt709");
  EXPECT_EQ(factOf(record, "Luma"), "copied");
  EXPECT_EQ(factOf(record, "File size"), "48.2 MB");  // 48,213,377 bytes
  EXPECT_EQ(factOf(record, "Checksum"), "9ae0daaf");
  EXPECT_EQ(factOf(record, "Analysed by"), "lumascan 1.0.0");
}

TEST(Facts, countBytesInThousands) {
  ResultRecord record = twelveSeconds();
  const auto sizeFor = [&](int64_t bytes) {
    record.input.fingerprint->size = bytes;
    return factOf(record, "File size");
  };
  EXPECT_EQ(sizeFor(0), "0 bytes");
  EXPECT_EQ(sizeFor(999), "999 bytes");
  EXPECT_EQ(sizeFor(1000), "1.0 kB");
  EXPECT_EQ(sizeFor(1'260'000), "1.3 MB");
  EXPECT_EQ(sizeFor(5'000'000'000), "5.0 GB");
  EXPECT_EQ(sizeFor(2'500'000'000'000), "2.5 TB");
  EXPECT_EQ(sizeFor(7'000'000'000'000'000'000), "7000.0 PB");
}

TEST(Facts, tellHowThePictureIsShown) {
  ResultRecord record = twelveSeconds();
  StreamFacts& stream = *record.input.stream;
  const std::string size = "1920 \xc3\x97 1080";
  EXPECT_EQ(factOf(record, "Picture"), size);
  stream.sampleAspectRatio = "4:3";
  EXPECT_EQ(factOf(record, "Picture"), size + ", samples 4:3");
  stream.rotation = -90.0;
  EXPECT_EQ(factOf(record, "Picture"), size + ", samples 4:3, rotated -90\xc2\xb0");
  stream.sampleAspectRatio = "0:1";
  stream.rotation = UNKNOWN;
  EXPECT_EQ(factOf(record, "Picture"), size);
}

TEST(Facts, leaveOutWhatIsUnknown) {
  std::string titles;
  ResultRecord record = failedInput("a.mp4").record;
  record.input.fingerprint.reset();
  for (const Fact& fact : factsOf(record)) titles += fact.title + std::string(";");
  EXPECT_EQ(titles, "Path;Analysed by;");
}
