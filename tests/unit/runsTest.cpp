// Run counting along rows, along columns and in a flat sequence.
#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <limits>
#include <vector>

#include "definitions/definitions.h"
#include "support/frames.h"
#include "support/guardedBuffer.h"

// A line of samples: `stretches` alternate between strong (9) and weak (0), strong first.
static std::vector<int32_t> line(const std::vector<size_t>& stretches, size_t length) {
  std::vector<int32_t> samples;
  for (size_t i = 0; i < stretches.size(); i++)
    samples.insert(samples.end(), stretches[i], i % 2 == 0 ? 9 : 0);
  samples.resize(length, 0);
  return samples;
}

// Samples -1, 0 and 1, each above the threshold 0.0 with a chance of `percent`.
static std::vector<int32_t> strongAndWeak(uint64_t count, uint32_t percent, uint32_t seed) {
  uint64_t state = seedRandom(seed);
  std::vector<int32_t> samples(count);
  for (int32_t& sample : samples)
    sample = nextRandom(&state) % 100 < percent ? 1 : -static_cast<int32_t>(nextRandom(&state) % 2);
  return samples;
}

static std::vector<int32_t> countH(std::vector<int32_t> samples, uint64_t w, uint64_t h,
                                   uint64_t blockW, uint64_t blockH, uint32_t minLen,
                                   double threshold = 1.0) {
  const Image32 src = imageOver(samples, w, h);
  std::vector<int32_t> counts(w / blockW * (h / blockH));
  Image32 dest = imageOver(counts, w / blockW, h / blockH);
  EXPECT_EQ(0, countSeqsH(&src, &dest, blockW, blockH, minLen, threshold));
  return counts;
}

static std::vector<int32_t> countV(std::vector<int32_t> samples, uint64_t w, uint64_t h,
                                   uint64_t blockW, uint64_t blockH, uint32_t minLen,
                                   double threshold = 1.0) {
  const Image32 src = imageOver(samples, w, h);
  std::vector<int32_t> counts(w / blockW * (h / blockH)), lengths(w);
  Image32 dest = imageOver(counts, w / blockW, h / blockH), counters = imageOver(lengths, w, 1);
  EXPECT_EQ(0, countSeqsV(&src, &dest, &counters, blockW, blockH, minLen, threshold));
  return counts;
}

// The same line as a row of one block and as a column of one block.
static void expectCount(int32_t expected, const std::vector<int32_t>& samples, uint32_t minLen,
                        double threshold = 1.0) {
  const uint64_t length = samples.size();
  EXPECT_EQ(std::vector<int32_t>{expected},
            countH(samples, length, 1, length, 1, minLen, threshold));
  EXPECT_EQ(std::vector<int32_t>{expected},
            countV(samples, 1, length, 1, length, minLen, threshold));
}

// ---- countSeqsH and countSeqsV alike

TEST(CountSeqs, countsARunOnce_whenItReachesTheLength) {
  expectCount(0, line({11}, 64), 12);
  expectCount(1, line({12}, 64), 12);
  expectCount(1, line({30}, 64), 12);
  expectCount(2, line({12, 1, 12}, 64), 12);
  expectCount(0, line({11, 1, 11}, 64), 12);
}

TEST(CountSeqs, countsARunAtTheEndOfTheBlock) {
  expectCount(1, line({0, 8, 12}, 20), 12);
  expectCount(0, line({0, 9, 11}, 20), 12);
  expectCount(1, line({20}, 20), 20);
  expectCount(0, line({20}, 20), 21);
}

TEST(CountSeqs, takesValuesAtTheThresholdAsWeak) {
  expectCount(0, {5, 5, 5, 5}, 2, 5.0);
  expectCount(1, {5, 6, 6, 5}, 2, 5.0);
  expectCount(1, {5, 5, 5, 5}, 2, 4.999);
}

// Cut to whole numbers the thresholds 2.5 and -2.5 would be 2 and -2.
TEST(CountSeqs, comparesWithFractionsOfTheThreshold) {
  expectCount(1, {2, 3, 2, 2}, 1, 2.5);
  expectCount(2, {-2, -3, -2, -3}, 1, -2.5);
}

TEST(CountSeqs, comparesWithThresholdsOutsideTheRangeOfSamples) {
  expectCount(0, {INT32_MAX, INT32_MAX}, 1, 2147483647.0);
  expectCount(1, {INT32_MAX, INT32_MAX}, 1, 2147483646.5);
  expectCount(0, {INT32_MAX, INT32_MAX}, 1, 1e300);
  expectCount(1, {INT32_MIN, INT32_MIN}, 1, -1e300);
  expectCount(0, {INT32_MAX, INT32_MAX}, 1, std::numeric_limits<double>::quiet_NaN());
}

TEST(CountSeqs, countsEveryRun_forLengthOne) {
  expectCount(3, line({1, 2, 5, 1, 2}, 20), 1);
}

// A run has at least one sample, so it never is of length 0.
TEST(CountSeqs, countsNothing_forLengthZero) {
  expectCount(0, line({1, 2, 5, 1, 2}, 20), 0);
}

TEST(CountSeqs, addsOntoWhatTheOutputHolds) {
  std::vector<int32_t> samples = line({3}, 5), counts = {40}, lengths(5);
  const Image32 row = imageOver(samples, 5, 1), column = imageOver(samples, 1, 5);
  Image32 dest = imageOver(counts, 1, 1), counters = imageOver(lengths, 5, 1);
  countSeqsH(&row, &dest, 5, 1, 3, 1.0);
  EXPECT_EQ(41, counts[0]);
  countSeqsV(&column, &dest, &counters, 1, 5, 3, 1.0);
  EXPECT_EQ(42, counts[0]);
}

// ---- countSeqsH

// Columns 246 .. 265 of a row of two blocks of 256.
TEST(CountSeqsH, losesARunThatStraddlesABlockBorder) {
  const std::vector<int32_t> samples = line({0, 246, 20}, 512);
  EXPECT_EQ((std::vector<int32_t>{0, 0}), countH(samples, 512, 1, 256, 1, 12));
  EXPECT_EQ((std::vector<int32_t>{1, 1}), countH(samples, 512, 1, 256, 1, 10));
}

// Two rows of 6, the run from column 3 of the first to column 2 of the second.
TEST(CountSeqsH, endsARunWithTheRow) {
  EXPECT_EQ(std::vector<int32_t>{0}, countH(line({0, 3, 6}, 12), 6, 2, 6, 2, 4));
  EXPECT_EQ(std::vector<int32_t>{2}, countH(line({0, 3, 6}, 12), 6, 2, 6, 2, 3));
}

TEST(CountSeqsH, leavesTheOutput_ifItOrABlockIsEmpty) {
  std::vector<int32_t> samples(16, 9), counts(4, -7);
  const Image32 src = imageOver(samples, 4, 4);
  Image32 noColumns = imageOver(counts, 0, 2), noRows = imageOver(counts, 2, 0);
  Image32 dest = imageOver(counts, 2, 2);
  EXPECT_EQ(0, countSeqsH(&src, &noColumns, 2, 2, 1, 0.0));
  EXPECT_EQ(0, countSeqsH(&src, &noRows, 2, 2, 1, 0.0));
  EXPECT_EQ(0, countSeqsH(&src, &dest, 0, 2, 1, 0.0));
  EXPECT_EQ(0, countSeqsH(&src, &dest, 2, 0, 1, 0.0));
  EXPECT_EQ(std::vector<int32_t>(4, -7), counts);
}

// ---- countSeqsV

TEST(CountSeqsV, losesARunThatStraddlesABlockBorder) {
  // Rows 250 .. 261: 6 in the upper block, 6 in the lower one.
  EXPECT_EQ((std::vector<int32_t>{0, 0}), countV(line({0, 250, 12}, 512), 1, 512, 1, 256, 12));
  // Rows 244 .. 255: the twelfth is the last row of the upper block.
  EXPECT_EQ((std::vector<int32_t>{1, 0}), countV(line({0, 244, 12}, 512), 1, 512, 1, 256, 12));
  // Rows 256 .. 267 lie in the lower block alone.
  EXPECT_EQ((std::vector<int32_t>{0, 1}), countV(line({0, 256, 12}, 512), 1, 512, 1, 256, 12));
}

TEST(CountSeqsV, countsInBlocksOfOneRow) {
  EXPECT_EQ((std::vector<int32_t>{1, 1, 0}), countV({9, 9, 0}, 1, 3, 1, 1, 1));
  EXPECT_EQ((std::vector<int32_t>{0, 0, 0}), countV({9, 9, 9}, 1, 3, 1, 1, 2));
}

TEST(CountSeqsV, touchesNothing_onEmptyGrid) {
  const Image32 src = {4, 4, nullptr};
  Image32 noRows = {2, 0, nullptr}, counters = {4, 1, nullptr};
  EXPECT_EQ(0, countSeqsV(&src, &noRows, &counters, 2, 2, 1, 0.0));
}

// A grid without columns, or blocks without, covers no sample.
TEST(CountSeqsV, countsNothing_withoutColumns) {
  std::vector<int32_t> samples(16, 9), counts(4, -7), lengths(4);
  const Image32 src = imageOver(samples, 4, 4);
  Image32 noColumns = imageOver(counts, 0, 2), dest = imageOver(counts, 2, 2);
  Image32 counters = imageOver(lengths, 4, 1);
  EXPECT_EQ(0, countSeqsV(&src, &noColumns, &counters, 2, 2, 1, 0.0));
  EXPECT_EQ(0, countSeqsV(&src, &dest, &counters, 0, 2, 1, 0.0));
  EXPECT_EQ(std::vector<int32_t>(4, -7), counts);
  EXPECT_EQ(std::vector<int32_t>(4), lengths);
}

// Three strong rows of two columns; the first column enters with a length of 2, so its run is 5.
TEST(CountSeqsV, startsFromTheCountersItIsGiven) {
  std::vector<int32_t> samples(6, 9), counts(2), lengths = {2, 0};
  const Image32 src = imageOver(samples, 2, 3);
  Image32 dest = imageOver(counts, 2, 1), counters = imageOver(lengths, 2, 1);
  countSeqsV(&src, &dest, &counters, 1, 3, 5, 0.0);
  EXPECT_EQ((std::vector<int32_t>{1, 0}), counts);
}

TEST(CountSeqsV, clearsTheCountersOfTheCoveredColumnsOnly) {
  std::vector<int32_t> samples(35, 9), counts(3), lengths = {0, 0, 0, 0, 0, 0, -7};
  const Image32 src = imageOver(samples, 7, 5);
  Image32 dest = imageOver(counts, 3, 1), counters = imageOver(lengths, 7, 1);
  countSeqsV(&src, &dest, &counters, 2, 5, 4, 0.0);
  EXPECT_EQ((std::vector<int32_t>{2, 2, 2}), counts);
  EXPECT_EQ((std::vector<int32_t>{0, 0, 0, 0, 0, 0, -7}), lengths);
}

// ---- both against the runs of each line of each block

// Maximal runs of at least minLen positive samples among `count` ones, `step` apart.
static int32_t longRuns(const int32_t* samples, uint64_t count, uint64_t step, uint64_t minLen) {
  int32_t found = 0;
  uint64_t start = 0;  // of the present run
  for (uint64_t i = 0; i <= count; i++) {
    if (i < count && samples[i * step] > 0) continue;
    if (i > start && i - start >= minLen) found++;
    start = i + 1;
  }
  return found;
}

TEST(CountSeqs, agreesWithTheRunsOfEachLine_andReadsNothingBeyondTheLastBlock) {
  const FrameSize blocks[] = {{1, 1}, {5, 3}, {3, 8}, {16, 16}, {40, 2}, {2, 40}};
  for (auto [w, h] : oddSizes()) {
    for (auto [blockW, blockH] : blocks) {
      const uint64_t blocksX = w / blockW, blocksY = h / blockH;
      if (blocksX * blocksY == 0) continue;
      const uint64_t read = (blocksY * blockH - 1) * w + blocksX * blockW;
      GuardedBuffer buffer = allocBeforeGuard(read * 4);
      int32_t* samples = reinterpret_cast<int32_t*>(buffer.data);
      const std::vector<int32_t> noise = strongAndWeak(read, 75, 1);
      memcpy(samples, noise.data(), read * 4);
      const Image32 src = {w, h, samples};
      for (uint32_t minLen : {1u, 2u, 3u, 5u, 16u}) {
        std::vector<int32_t> rows, columns;
        for (uint64_t block = 0; block < blocksX * blocksY; block++) {
          const int32_t* corner = samples + block / blocksX * blockH * w + block % blocksX * blockW;
          rows.push_back(0);
          columns.push_back(0);
          for (uint64_t y = 0; y < blockH; y++)
            rows.back() += longRuns(corner + y * w, blockW, 1, minLen);
          for (uint64_t x = 0; x < blockW; x++)
            columns.back() += longRuns(corner + x, blockH, w, minLen);
        }
        std::vector<int32_t> countsH(blocksX * blocksY), countsV(blocksX * blocksY);
        std::vector<int32_t> lengths(blocksX * blockW);
        Image32 destH = imageOver(countsH, blocksX, blocksY);
        Image32 destV = imageOver(countsV, blocksX, blocksY);
        Image32 counters = imageOver(lengths, blocksX * blockW, 1);
        countSeqsH(&src, &destH, blockW, blockH, minLen, 0.0);
        countSeqsV(&src, &destV, &counters, blockW, blockH, minLen, 0.0);
        ASSERT_EQ(rows, countsH) << w << "x" << h << " by " << blockW << "x" << blockH;
        ASSERT_EQ(columns, countsV) << w << "x" << h << " by " << blockW << "x" << blockH;
        ASSERT_EQ(std::vector<int32_t>(blocksX * blockW), lengths);
      }
      freeGuardedBuffer(&buffer);
    }
  }
}

// ---- tempCountSeqsH

static int32_t tempCount(std::vector<int32_t> samples, uint64_t w, uint64_t h, int32_t threshold,
                         int32_t minLen) {
  const Image32 src = imageOver(samples, w, h);
  return tempCountSeqsH(&src, 99, threshold, -99, 12345, minLen);
}

TEST(TempCountSeqsH, isZero_onEmptyImage) {
  const Image32 a = {0, 5, nullptr}, b = {5, 0, nullptr};
  EXPECT_EQ(0, tempCountSeqsH(&a, 0, 0, 0, 0, 1));
  EXPECT_EQ(0, tempCountSeqsH(&b, 0, 0, 0, 0, 1));
}

// The weak sample after the run counts with it: 3 strong ones suffice for a length of 4.
TEST(TempCountSeqsH, countsRunsOneShorterThanTheLength) {
  EXPECT_EQ(1, tempCount(line({0, 2, 3}, 10), 10, 1, 1, 4));
  EXPECT_EQ(0, tempCount(line({0, 2, 3}, 10), 10, 1, 1, 5));
  EXPECT_EQ(2, tempCount(line({3, 1, 3}, 10), 10, 1, 1, 4));
}

// Columns 6 .. 9 up to the end of the only row: the scan resumes at the width 10, 10 - 6 = 4.
TEST(TempCountSeqsH, hasNoWeakSampleToCount_ifTheRunEndsWithTheImage) {
  EXPECT_EQ(1, tempCount(line({0, 6, 4}, 10), 10, 1, 1, 4));
  EXPECT_EQ(0, tempCount(line({0, 6, 4}, 10), 10, 1, 1, 5));
}

// Rows of 4: the run from position 2 to 7 is followed to position 4 only, which gives 2; positions
// 4 .. 7 are runs of 1 each, for there the search ends before it begins.
TEST(TempCountSeqsH, followsARunToTheWidthOnly) {
  const std::vector<int32_t> samples = line({0, 2, 6}, 12);
  EXPECT_EQ(5, tempCount(samples, 4, 3, 1, 1));
  EXPECT_EQ(1, tempCount(samples, 4, 3, 1, 2));
  EXPECT_EQ(0, tempCount(samples, 4, 3, 1, 3));
}

TEST(TempCountSeqsH, takesValuesAtTheThresholdAsWeak) {
  EXPECT_EQ(0, tempCount({5, 5, 5, 5}, 4, 1, 5, 1));
  EXPECT_EQ(1, tempCount({5, 6, 6, 5}, 4, 1, 5, 3));  // two strong ones and the weak one
  EXPECT_EQ(1, tempCount({-5, -4, -4, -5}, 4, 1, -5, 3));
}

TEST(TempCountSeqsH, comparesAcrossTheWholeRange) {
  EXPECT_EQ(0, tempCount({INT32_MAX, 0}, 2, 1, INT32_MAX, 1));
  EXPECT_EQ(0, tempCount({INT32_MIN, INT32_MIN}, 2, 1, INT32_MIN, 1));
  EXPECT_EQ(1, tempCount({INT32_MIN, INT32_MAX}, 2, 1, INT32_MIN, 1));
}

// By the number of strong samples ahead of each position, which is computed backwards. Inside the
// first `w` samples a run is followed to the next weak one or to `w`; further on it has length 1.
static int32_t expectedTempCount(const std::vector<int32_t>& samples, uint64_t w, uint64_t minLen) {
  std::vector<uint64_t> ahead(samples.size() + 1, 0);
  for (uint64_t i = samples.size(); i-- > 0;)
    ahead[i] = samples[i] > 0 ? (i + 1 < w ? ahead[i + 1] : 0) + 1 : 0;
  int32_t count = 0;
  uint64_t i = 0;
  while (i < samples.size()) {
    const bool endsAtWeak = i + ahead[i] < w;
    const uint64_t length = ahead[i] + (endsAtWeak ? 1 : 0);
    if (ahead[i] > 0 && length >= minLen) count++;
    i += ahead[i] > 0 ? length : 1;
  }
  return count;
}

TEST(TempCountSeqsH, agreesWithTheStretchesAhead_onNoiseUpToAGuardPage) {
  for (auto [w, h] : oddSizes()) {
    for (uint32_t percent : {20u, 60u, 90u, 100u}) {
      const std::vector<int32_t> samples = strongAndWeak(w * h, percent, percent);
      GuardedBuffer buffer = allocBeforeGuard(w * h * 4);
      memcpy(buffer.data, samples.data(), w * h * 4);
      const Image32 src = {w, h, reinterpret_cast<int32_t*>(buffer.data)};
      for (int32_t minLen : {1, 2, 3, 5, 12})
        ASSERT_EQ(expectedTempCount(samples, w, static_cast<uint64_t>(minLen)),
                  tempCountSeqsH(&src, 0, 0, 0, 0, minLen))
            << w << "x" << h << ", " << percent << " percent, length " << minLen;
      freeGuardedBuffer(&buffer);
    }
  }
}
