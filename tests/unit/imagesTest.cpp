// Image records: constructors, destructors, comparison, conversions and dumps.
#include <gtest/gtest.h>

#include <csignal>
#include <cstring>
#include <numeric>
#include <string>
#include <type_traits>
#include <vector>

#include "definitions/definitions.h"
#include "support/frames.h"
#include "support/guardedBuffer.h"

// Under a sanitizer memory runs out as it does without: the allocator returns null.
extern "C" const char* __asan_default_options() {
  return "allocator_may_return_null=1";
}
extern "C" const char* __tsan_default_options() {
  return "allocator_may_return_null=1";
}

static_assert(std::is_same_v<decltype(Image::data), uint8_t*>);
static_assert(std::is_same_v<decltype(Image32::data), int32_t*>);
static_assert(std::is_same_v<decltype(ImageDouble::data), double*>);
static_assert(std::is_same_v<decltype(Image::w), uint64_t>);
static_assert(std::is_same_v<decltype(Image::h), uint64_t>);

// ---- constructors and destructors

TEST(MakeImage, wrapsTheGivenSamples) {
  uint8_t bytes[6] = {};
  int32_t ints[6] = {};
  double doubles[6] = {};
  const Image image = makeImage(2, 3, bytes);
  const Image32 image32 = makeImage32(2, 3, ints);
  const ImageDouble imageDouble = makeImageDouble(2, 3, doubles);
  EXPECT_EQ(2u, image.w);
  EXPECT_EQ(3u, image.h);
  EXPECT_EQ(bytes, image.data);
  EXPECT_EQ(2u, image32.w);
  EXPECT_EQ(3u, image32.h);
  EXPECT_EQ(ints, image32.data);
  EXPECT_EQ(2u, imageDouble.w);
  EXPECT_EQ(3u, imageDouble.h);
  EXPECT_EQ(doubles, imageDouble.data);
}

TEST(MakeImage, sharesTheSamples_whenTheRecordIsCopied) {
  uint8_t bytes[2] = {1, 2};
  const Image image = makeImage(2, 1, bytes);
  const Image copy = image;
  copy.data[1] = 9;
  EXPECT_EQ(9, image.data[1]);
  EXPECT_EQ(9, bytes[1]);
}

// The total of the samples of an image that is allocated after one of the same size, full of other
// values, has been freed.
template <typename Allocate, typename Release>
static double totalOfFresh(Allocate allocate, Release release, uint64_t w, uint64_t h) {
  auto dirty = allocate(w, h);
  if (w * h > 0) memset(dirty.data, 0x7F, w * h * sizeof(*dirty.data));
  release(&dirty);
  auto image = allocate(w, h);
  EXPECT_EQ(w, image.w);
  EXPECT_EQ(h, image.h);
  double total = 0.0;
  for (uint64_t i = 0; i < w * h; i++) total += image.data[i];
  release(&image);
  return total;
}

TEST(CallocImage, isZeroFilled) {
  for (auto [w, h] : oddSizes()) {
    ASSERT_EQ(0.0, totalOfFresh(callocImage, freeImage, w, h)) << w << "x" << h;
    ASSERT_EQ(0.0, totalOfFresh(callocImage32, freeImage32, w, h)) << w << "x" << h;
    ASSERT_EQ(0.0, totalOfFresh(callocImageDouble, freeImageDouble, w, h)) << w << "x" << h;
  }
}

template <typename Allocate, typename Release>
static void expectWritable(Allocate allocate, Release release, uint64_t w, uint64_t h) {
  auto image = allocate(w, h);
  EXPECT_EQ(w, image.w);
  EXPECT_EQ(h, image.h);
  ASSERT_NE(nullptr, image.data);
  for (uint64_t i = 0; i < w * h; i++) image.data[i] = 7;
  EXPECT_EQ(7, image.data[w * h - 1]);
  release(&image);
}

TEST(AllocImage, holdsAllItsSamples) {
  for (auto [w, h] : oddSizes()) {
    expectWritable(allocImage, freeImage, w, h);
    expectWritable(allocImage32, freeImage32, w, h);
    expectWritable(allocImageDouble, freeImageDouble, w, h);
  }
}

TEST(CallocImage, keepsTheOtherSide_whenOneIsZero) {
  Image image = callocImage(0, 5);
  EXPECT_EQ(0u, image.w);
  EXPECT_EQ(5u, image.h);
  freeImage(&image);
  Image32 image32 = callocImage32(5, 0);
  EXPECT_EQ(5u, image32.w);
  EXPECT_EQ(0u, image32.h);
  freeImage32(&image32);
  ImageDouble imageDouble = callocImageDouble(0, 0);
  EXPECT_EQ(0u, imageDouble.w);
  EXPECT_EQ(0u, imageDouble.h);
  freeImageDouble(&imageDouble);
}

// 2^40 * 2^20 samples are 2^60 bytes and more: beyond any address space, while the same product in
// 32 bits would be an allocation of 0 bytes, which succeeds.
TEST(AllocImage, hasNoData_whenMemoryIsExhausted) {
  const uint64_t w = uint64_t{1} << 40, h = uint64_t{1} << 20;
  EXPECT_EQ(nullptr, allocImage(w, h).data);
  EXPECT_EQ(nullptr, callocImage(w, h).data);
  EXPECT_EQ(nullptr, allocImage32(w, h).data);
  EXPECT_EQ(nullptr, callocImage32(w, h).data);
  EXPECT_EQ(nullptr, allocImageDouble(w, h).data);
  EXPECT_EQ(nullptr, callocImageDouble(w, h).data);
}

TEST(FreeImage, leavesTheFields) {
  Image image = callocImage(3, 2);
  freeImage(&image);
  EXPECT_EQ(3u, image.w);
  EXPECT_EQ(2u, image.h);
  EXPECT_NE(nullptr, image.data);
  Image32 image32 = callocImage32(3, 2);
  freeImage32(&image32);
  EXPECT_EQ(3u, image32.w);
  EXPECT_NE(nullptr, image32.data);
  ImageDouble imageDouble = callocImageDouble(3, 2);
  freeImageDouble(&imageDouble);
  EXPECT_EQ(3u, imageDouble.w);
  EXPECT_NE(nullptr, imageDouble.data);
}

TEST(FreeImage, isHarmless_withoutData) {
  Image image = {1, 1, nullptr};
  Image32 image32 = {1, 1, nullptr};
  ImageDouble imageDouble = {1, 1, nullptr};
  freeImage(&image);
  freeImage32(&image32);
  freeImageDouble(&imageDouble);
  EXPECT_EQ(nullptr, image.data);
  EXPECT_EQ(nullptr, image32.data);
  EXPECT_EQ(nullptr, imageDouble.data);
}

// ---- areEqual

TEST(AreEqual, isOne_forTheSameRecord_evenWithoutData) {
  const Image image = {2, 3, nullptr};
  EXPECT_EQ(1, areEqual(&image, &image));
}

TEST(AreEqual, isOne_forSharedSamples) {
  const Image a = {2, 3, nullptr}, b = {2, 3, nullptr};
  EXPECT_EQ(1, areEqual(&a, &b));
}

TEST(AreEqual, isOne_forEmptyRecordsOfDifferentBuffers) {
  uint8_t first = 1, second = 2;
  const Image a = {0, 0, &first}, b = {0, 0, &second};
  EXPECT_EQ(1, areEqual(&a, &b));
}

TEST(AreEqual, isZero_forEmptyRecordsOfDifferentSides) {
  const Image a = {0, 5, nullptr}, b = {0, 4, nullptr}, c = {5, 0, nullptr}, d = {4, 0, nullptr};
  EXPECT_EQ(0, areEqual(&a, &b));
  EXPECT_EQ(0, areEqual(&c, &d));
}

TEST(AreEqual, isZero_forTransposedShape_evenWithSharedSamples) {
  uint8_t bytes[6] = {};
  const Image a = {2, 3, bytes}, b = {3, 2, bytes};
  EXPECT_EQ(0, areEqual(&a, &b));
}

TEST(AreEqual, isZero_ifAnySampleDiffers) {
  std::vector<uint8_t> first = noiseFrame(5, 3, 1), second = first;
  const Image a = imageOver(first, 5, 3), b = imageOver(second, 5, 3);
  EXPECT_EQ(1, areEqual(&a, &b));
  for (size_t i = 0; i < second.size(); i++) {
    second[i] ^= 0x80;
    EXPECT_EQ(0, areEqual(&a, &b)) << i;
    second[i] ^= 0x80;
  }
}

TEST(AreEqual, readsNothingBeyondTheSamples) {
  for (auto [w, h] : oddSizes()) {
    GuardedBuffer first = allocBeforeGuard(w * h), second = allocBeforeGuard(w * h);
    const Image a = {w, h, first.data}, b = {w, h, second.data};
    EXPECT_EQ(1, areEqual(&a, &b));
    second.data[w * h - 1] = 1;
    EXPECT_EQ(0, areEqual(&a, &b));
    freeGuardedBuffer(&first);
    freeGuardedBuffer(&second);
  }
}

// ---- conversions

TEST(ConvU8toI32, widensWithoutSign) {
  std::vector<uint8_t> bytes(256);
  std::iota(bytes.begin(), bytes.end(), uint8_t{0});
  std::vector<int32_t> ints(256, -1), expected(256);
  std::iota(expected.begin(), expected.end(), 0);
  const Image src = imageOver(bytes, 64, 4);
  Image32 dest = imageOver(ints, 64, 4);
  convU8toI32(&src, &dest);
  EXPECT_EQ(expected, ints);
}

TEST(ConvU8toI32, acceptsAnotherShapeOfTheSameCount) {
  std::vector<uint8_t> bytes = {1, 2, 3, 4, 5, 6, 7, 255};
  std::vector<int32_t> ints(8, -1);
  const Image src = imageOver(bytes, 4, 2);
  Image32 dest = imageOver(ints, 2, 4);
  convU8toI32(&src, &dest);
  EXPECT_EQ((std::vector<int32_t>{1, 2, 3, 4, 5, 6, 7, 255}), ints);
}

TEST(ConvI32toU8, keepsTheLowByte) {
  // 256 = 0x100, 300 = 0x12C (44), -1 = 0xFFFFFFFF, -300 = -0x12C = 0xFFFFFED4 (212), and the
  // extremes 0x80000000 and 0x7FFFFFFF.
  std::vector<int32_t> ints = {255, 256, 300, -1, -256, -300, INT32_MIN, INT32_MAX};
  std::vector<uint8_t> bytes(8, 77);
  const Image32 src = imageOver(ints, 8, 1);
  Image dest = imageOver(bytes, 8, 1);
  convI32toU8(&src, &dest);
  EXPECT_EQ((std::vector<uint8_t>{255, 0, 44, 255, 0, 212, 0, 255}), bytes);
}

TEST(ConvI32toU8, acceptsAnotherShapeOfTheSameCount) {
  std::vector<int32_t> ints = {1, 2, 3, 4, 5, 6};
  std::vector<uint8_t> bytes(6, 77);
  const Image32 src = imageOver(ints, 6, 1);
  Image dest = imageOver(bytes, 2, 3);
  convI32toU8(&src, &dest);
  EXPECT_EQ((std::vector<uint8_t>{1, 2, 3, 4, 5, 6}), bytes);
}

TEST(Conversions, giveTheFrameBack_withinItsBounds) {
  for (auto [w, h] : oddSizes()) {
    const std::vector<uint8_t> frame = noiseFrame(w, h, 3);
    GuardedBuffer bytes = allocBeforeGuard(w * h), ints = allocBeforeGuard(w * h * 4);
    GuardedBuffer back = allocBeforeGuard(w * h);
    memcpy(bytes.data, frame.data(), w * h);
    const Image src = {w, h, bytes.data};
    Image32 wide = {w, h, reinterpret_cast<int32_t*>(ints.data)};
    Image dest = {w, h, back.data};
    convU8toI32(&src, &wide);
    convI32toU8(&wide, &dest);
    ASSERT_EQ(0, memcmp(frame.data(), back.data, w * h)) << w << "x" << h;
    freeGuardedBuffer(&bytes);
    freeGuardedBuffer(&ints);
    freeGuardedBuffer(&back);
  }
}

TEST(Conversions, doNothing_onEmptyImages) {
  const Image src = {0, 5, nullptr};
  Image32 wide = {3, 0, nullptr};
  Image dest = {0, 0, nullptr};
  convU8toI32(&src, &wide);
  convI32toU8(&wide, &dest);
  SUCCEED() << "an access would have been one through a null pointer";
}

// The images without data show that nothing is touched before the assertion.
TEST(ConversionsDeathTest, stop_ifTheCountsDisagree) {
  const Image bytes = {4, 2, nullptr};
  Image32 ints = {3, 3, nullptr};
  EXPECT_EXIT(convU8toI32(&bytes, &ints), testing::KilledBySignal(SIGABRT),
              "[^ ]: definitions:[0-9]+: convU8toI32: Assertion "
              "`src->w \\* src->h == dest->w \\*dest->h' failed\\.");
  const Image32 src = {3, 3, nullptr};
  Image dest = {4, 2, nullptr};
  EXPECT_EXIT(convI32toU8(&src, &dest), testing::KilledBySignal(SIGABRT),
              "[^ ]: definitions:[0-9]+: convI32toU8: Assertion "
              "`src->w \\* src->h == dest->w \\*dest->h' failed\\.");
}

// 2^32 + 4 samples are not 4, although the low halves of the counts are the same.
TEST(ConversionsDeathTest, compareTheCountsInSixtyFourBits) {
  const Image bytes = {(uint64_t{1} << 32) + 4, 1, nullptr};
  const Image32 src = {(uint64_t{1} << 32) + 4, 1, nullptr};
  Image32 ints = {4, 1, nullptr};
  Image dest = {4, 1, nullptr};
  EXPECT_EXIT(convU8toI32(&bytes, &ints), testing::KilledBySignal(SIGABRT), "convU8toI32: Assert");
  EXPECT_EXIT(convI32toU8(&src, &dest), testing::KilledBySignal(SIGABRT), "convI32toU8: Assert");
}

// ---- dumps

static std::string dump(int32_t x0, int32_t x1, int32_t y0, int32_t y1) {
  std::vector<uint8_t> frame = horizontalRamp(10, 10);
  const Image image = imageOver(frame, 10, 10);
  testing::internal::CaptureStdout();
  printRange(&image, x0, x1, y0, y1);
  return testing::internal::GetCapturedStdout();
}

static std::string dump32(int32_t x0, int32_t x1, int32_t y0, int32_t y1) {
  std::vector<int32_t> samples = {0, -1, 1234, INT32_MIN, 5, 6};
  const Image32 image = imageOver(samples, 6, 1);
  testing::internal::CaptureStdout();
  printRange32(&image, x0, x1, y0, y1);
  return testing::internal::GetCapturedStdout();
}

TEST(PrintRange, takesSamplesFromTheStart_whateverTheRectangle) {
  EXPECT_EQ("000 001 \n002 003 \n", dump(5, 6, 0, 1));
  EXPECT_EQ("0  -1  \n1234  -2147483648  \n", dump32(5, 6, 0, 1));
}

TEST(PrintRange, padsToThreeDigits) {
  std::vector<uint8_t> frame = {7, 42, 255};
  const Image image = imageOver(frame, 3, 1);
  testing::internal::CaptureStdout();
  printRange(&image, 0, 2, 0, 0);
  EXPECT_EQ("007 042 255 \n", testing::internal::GetCapturedStdout());
}

TEST(PrintRange, takesNegativeBounds) {
  EXPECT_EQ("000 001 \n002 003 \n", dump(-3, -2, -1, 0));
  EXPECT_EQ("0  -1  \n1234  -2147483648  \n", dump32(-3, -2, -1, 0));
}

TEST(PrintRange, printsNothing_ifTheRowsAreReversed) {
  EXPECT_EQ("", dump(0, 1, 1, 0));
  EXPECT_EQ("", dump(1, 0, 1, 0));
  EXPECT_EQ("", dump32(0, 1, 1, 0));
  EXPECT_EQ("", dump32(1, 0, 1, 0));
}

TEST(PrintRange, printsOnlyLineEnds_ifTheColumnsAreReversed) {
  EXPECT_EQ("\n\n\n", dump(1, 0, 2, 4));
  EXPECT_EQ("\n\n\n", dump32(1, 0, 2, 4));
}
