// Slice: repeats 16 columns to the right against repeats 16 rows below, strip by strip.
#include "indicators/slice.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <random>
#include <vector>

#include "support/lumaFrames.h"
#include "support/specialValues.h"

namespace {

const double QUIET_NAN = UNDEFINED;

double sliceOf(const LumaFrame& frame) {
  return measure(slice, frame, &FrameResults::slice);
}

// The ratio of every strip, counted sample by sample.
std::vector<double> ratiosOf(LumaFrame frame) {
  std::vector<double> ratios;
  for (int top = 0; top + 32 <= frame.h; top += 16) {
    int below = 0;
    int beside = 0;
    for (int y = top; y < top + 16; ++y) {
      for (int x = 0; x < frame.w; ++x) below += frame.at(x, y) == frame.at(x, y + 16);
      for (int x = 16; x < frame.w; ++x) beside += frame.at(x, y) == frame.at(x - 16, y);
    }
    ratios.push_back(below / (16.0 * frame.w) / (beside / (16.0 * (frame.w - 16))));
  }
  return ratios;
}

// Merge sort from the top down, as the GNU C library's qsort does it: the left half is the smaller
// one, and of two values that compare as equal, such as NaN and any other, the left one goes first.
std::vector<double> mergeSorted(const std::vector<double>& values) {
  if (values.size() < 2) return values;
  const auto middle = values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2);
  const std::vector<double> left = mergeSorted({values.begin(), middle});
  const std::vector<double> right = mergeSorted({middle, values.end()});
  std::vector<double> merged;
  size_t fromLeft = 0;
  size_t fromRight = 0;
  while (fromLeft < left.size() && fromRight < right.size()) {
    const bool isRightFirst = left[fromLeft] > right[fromRight];
    merged.push_back(isRightFirst ? right[fromRight++] : left[fromLeft++]);
  }
  merged.insert(merged.end(), left.begin() + static_cast<std::ptrdiff_t>(fromLeft), left.end());
  merged.insert(merged.end(), right.begin() + static_cast<std::ptrdiff_t>(fromRight), right.end());
  return merged;
}

// 2 to 11 strips. About half of them repeat nowhere, the others 1 to 16 samples sideways and 1
// to 16 downwards.
LumaFrame frameWithUndefinedStrips(std::minstd_rand* random) {
  const int strips = 2 + static_cast<int>((*random)() % 10);
  LumaFrame frame = frameOf(32, 16 * (strips + 1), [](int x, int y) { return 5 * x + 3 * y; });
  for (int strip = 0; strip < strips; ++strip) {
    if ((*random)() % 2 == 0) continue;
    const int beside = 1 + static_cast<int>((*random)() % 16);
    const int below = 1 + static_cast<int>((*random)() % 16);
    for (int y = 16 * strip; y < 16 * strip + beside; ++y) frame.at(16, y) = frame.at(0, y);
    for (int y = 16 * strip; y < 16 * strip + below; ++y) frame.at(1, y + 16) = frame.at(1, y);
  }
  return frame;
}

using Comparator = int (*)(const void*, const void*);

void expectAscendingOrder(Comparator order) {
  const auto of = [order](double a, double b) { return order(&a, &b); };
  EXPECT_EQ(of(1.0, 2.0), -1);
  EXPECT_EQ(of(2.0, 1.0), 1);
  EXPECT_EQ(of(1.5, 1.5), 0);
  EXPECT_EQ(of(0.0, -0.0), 0);
  EXPECT_EQ(of(-INF, -1e308), -1);
  EXPECT_EQ(of(INF, 1e308), 1);
  EXPECT_EQ(of(INF, INF), 0);
  EXPECT_EQ(of(QUIET_NAN, 1.0), 0);
  EXPECT_EQ(of(1.0, QUIET_NAN), 0);
  EXPECT_EQ(of(QUIET_NAN, QUIET_NAN), 0);
  // Differences below 1 are not rounded away.
  EXPECT_EQ(of(0.25, 0.75), -1);
}

}  // namespace

TEST(Slice, givesUp_below48Rows) {
  const LumaFrame frame(64, 47, 9);
  EXPECT_EQ(statusOf(slice, frame), -1);
  EXPECT_EQ(sliceOf(frame), 77.0);  // as it was before
}

TEST(Slice, givesUp_upTo16Columns) {
  for (int w : {1, 15, 16}) {
    EXPECT_EQ(statusOf(slice, LumaFrame(w, 64, 9)), -1) << w;
    EXPECT_EQ(sliceOf(LumaFrame(w, 64, 9)), 77.0) << w;
  }
}

TEST(Slice, isMeasured_from17ColumnsAnd48RowsOn) {
  EXPECT_TRUE(returnsNull(slice, LumaFrame(17, 48, 9)));
  EXPECT_EQ(sliceOf(LumaFrame(17, 48, 9)), 1.0);
}

TEST(Slice, usesTwoStrips_of48Rows) {
  // Rows 32 to 47 repeat nowhere sideways, which would be a third strip; as the rows below the
  // second strip they repeat it in 16 of 32 columns: ratios 1 / 1 and 0.5 / 1.
  LumaFrame frame(32, 48, 5);
  fill(frame, 16, 32, 16, 16, 9);
  EXPECT_EQ(sliceOf(frame), 2.0);
}

TEST(Slice, isOne_onFlatFrame) {
  EXPECT_EQ(sliceOf(LumaFrame(64, 96, 128)), 1.0);
}

TEST(Slice, isZero_whereStripsRepeatDownwardsOnly) {
  // Every ratio is 1 / 0.
  EXPECT_EQ(sliceOf(frameOf(48, 64, [](int x, int) { return 5 * x; })), 0.0);
}

TEST(Slice, isInfinite_whereStripsRepeatSidewaysOnly) {
  // Every ratio is 0 / 1.
  EXPECT_EQ(sliceOf(frameOf(48, 48, [](int, int y) { return 5 * y; })), INF);
}

TEST(Slice, isInfinite_whereAStripRepeatsSidewaysOnly) {
  // Only rows 16 to 31 have another level: ratios 0, 0 and, for rows 32 to 47 with 48 to 63, 1.
  LumaFrame frame(32, 64, 5);
  fill(frame, 0, 16, 32, 16, 9);
  EXPECT_EQ(sliceOf(frame), INF);
}

TEST(Slice, isNaN_whereStripsRepeatNowhere) {
  // Samples differ by 80 from those 16 columns to the right and by 48 from those 16 rows below:
  // every ratio is 0 / 0.
  EXPECT_TRUE(std::isnan(sliceOf(frameOf(48, 64, [](int x, int y) { return 5 * x + 3 * y; }))));
}

TEST(Slice, takesWhatAMergeSortPutsFirst_whereStripsAreUndefined) {
  std::minstd_rand random(5);
  int withoutSmallest = 0;
  for (int i = 0; i < 60; ++i) {
    const LumaFrame frame = frameWithUndefinedStrips(&random);
    const std::vector<double> ratios = ratiosOf(frame);
    const double first = mergeSorted(ratios)[0];
    const double value = sliceOf(frame);
    EXPECT_TRUE(value == 1.0 / first || (std::isnan(value) && std::isnan(first)))
        << "frame " << i << ": " << value << " is not 1 / " << first;
    const auto isSmaller = [=](double ratio) {
      return ratio < first || (std::isnan(first) && !std::isnan(ratio));
    };
    withoutSmallest += std::any_of(ratios.begin(), ratios.end(), isSmaller);
  }
  EXPECT_GE(withoutSmallest, 10);  // elsewhere any way of sorting gives the same
}

TEST(Slice, dividesSharesOfDifferentWidths) {
  // One sample of 32 x 48 differs, at (5, 20). Downwards it spoils 1 of 512 pairs in strip 0 (row 4
  // with 20) and in strip 1 (row 20 with 36), sideways 1 of 256 in strip 1. The smallest ratio is
  // that of strip 0, (511 / 512) / 1.
  LumaFrame frame(32, 48, 5);
  frame.at(5, 20) = 6;
  EXPECT_EQ(sliceOf(frame), 1.0 / (511.0 / 512.0));
  // At (5, 3) it spoils 1 of 512 and 1 of 256 in strip 0: ratio 511 / 510, above the 1 of strip 1.
  frame = LumaFrame(32, 48, 5);
  frame.at(5, 3) = 6;
  EXPECT_EQ(sliceOf(frame), 1.0);
}

TEST(Slice, takesSmallestRatio_whereverItIs) {
  // 5 strips; two rows of another level start each strip below strip `worst`, so that only there
  // 2 of 16 rows differ from the rows below: ratio 448 / 512.
  for (int worst = 0; worst < 5; ++worst) {
    LumaFrame frame(32, 96, 5);
    for (int below = worst + 1; below < 6; ++below) fill(frame, 0, 16 * below, 32, 2, 9);
    EXPECT_EQ(sliceOf(frame), 1.0 / (448.0 / 512.0)) << worst;
  }
}

TEST(Slice, ignoresRowsAfterTheLastWholeStrip) {
  // Rows 48 to 62 could only matter to a third strip.
  LumaFrame frame(32, 63, 5);
  for (int y = 48; y < 63; ++y) {
    for (int x = 0; x < 32; ++x) frame.at(x, y) = static_cast<uint8_t>(100 + x);
  }
  EXPECT_EQ(sliceOf(frame), 1.0);
}

TEST(Slice, usesThirdStrip_of64Rows) {
  // Row 63, below row 47, differs: 32 of 512 pairs of strip 2.
  LumaFrame frame(32, 64, 5);
  fill(frame, 0, 63, 32, 1, 9);
  EXPECT_EQ(sliceOf(frame), 1.0 / (480.0 / 512.0));
}

TEST(Slice, writesOnlyItsField) {
  expectWritesOnly(slice, LumaFrame(64, 64, 5), &FrameResults::slice);
}

TEST(CompareShifted, marksEqualSamplesInTheSequence) {
  // 4 x 3 against itself two positions on; the last two columns of a row meet the next row.
  LumaFrame source(4, 3);
  source.samples = {1, 2, 1, 3,  //
                    1, 3, 1, 4,  //
                    9, 4, 0, 0};
  LumaFrame marks(4, 2, 7);
  const Image from = source.view();
  Image to = marks.view();
  compareShifted(&from, &to, 2);
  // 1-1, 2-3, 1-1, 3-3; 1-1, 3-4, 1-9, 4-4.
  EXPECT_EQ(marks.samples, (std::vector<uint8_t>{1, 0, 1, 1, 1, 0, 0, 1}));
}

TEST(CompareShifted, readsRowsOfTheSource_intoANarrowerImage) {
  // Columns 0 and 1 of 4 x 3 against the row below.
  LumaFrame source(4, 3);
  source.samples = {1, 2, 8, 8,  //
                    1, 5, 8, 8,  //
                    7, 5, 8, 8};
  LumaFrame marks(2, 2, 7);
  const Image from = source.view();
  Image to = marks.view();
  compareShifted(&from, &to, 4);
  EXPECT_EQ(marks.samples, (std::vector<uint8_t>{1, 0, 0, 1}));
}

TEST(CompareShifted, takesNegativeShift) {
  std::vector<uint8_t> sequence{3, 3, 4, 4, 4};
  const Image from{4, 1, sequence.data() + 1};
  LumaFrame marks(4, 1, 7);
  Image to = marks.view();
  compareShifted(&from, &to, -1);
  EXPECT_EQ(marks.samples, (std::vector<uint8_t>{1, 0, 1, 1}));
}

TEST(CompareShifted, doesNothing_onEmptyDestination) {
  LumaFrame source(4, 3);
  std::vector<uint8_t> untouched(4, 7);
  const Image from = source.view();
  for (Image to : {Image{0, 2, untouched.data()}, Image{2, 0, untouched.data()}}) {
    compareShifted(&from, &to, 1);
    EXPECT_EQ(untouched, std::vector<uint8_t>(4, 7));
  }
}

TEST(Compare, ordersAscending_withNaNEqualToAll) {
  expectAscendingOrder(compare);
}

TEST(CompareDoubleAsc, ordersAscending_withNaNEqualToAll) {
  expectAscendingOrder(compare_Double_asc);
}

TEST(Compare, sortsAscending) {
  std::vector<double> values{2.5, -1.0, INF, 0.0, 2.25, -INF};
  std::qsort(values.data(), values.size(), sizeof(double), compare);
  EXPECT_EQ(values, (std::vector<double>{-INF, -1.0, 0.0, 2.25, 2.5, INF}));
}
