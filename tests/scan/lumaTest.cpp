// 8-bit luma of pictures in every pixel format.
#include "scan/video/luma.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <utility>
#include <vector>

#include "support/frames.h"

namespace {

constexpr int W = 33;
constexpr int H = 17;

// A picture of the format, with rows that are longer than its width, filled with noise.
FfmpegOwner<AVFrame> noisePicture(AVPixelFormat format, int w = W, int h = H) {
  FfmpegOwner<AVFrame> picture(av_frame_alloc());
  picture->format = format;
  picture->width = w;
  picture->height = h;
  if (av_frame_get_buffer(picture.get(), 0) < 0) return nullptr;
  uint64_t random = seedRandom(static_cast<uint32_t>(format) + 1);
  for (const AVBufferRef* buffer : picture->buf) {
    for (size_t i = 0; buffer != nullptr && i < buffer->size; ++i) {
      buffer->data[i] = static_cast<uint8_t>(nextRandom(&random));
    }
  }
  return picture;
}

std::vector<uint8_t> lumaOf(const AVFrame& picture) {
  constexpr uint8_t BEHIND = 77;
  LumaConverter converter;
  std::vector<uint8_t> luma(
      static_cast<size_t>(picture.width) * static_cast<size_t>(picture.height) + 1, BEHIND);
  EXPECT_TRUE(convertToLuma(&picture, &converter, luma.data()));
  EXPECT_EQ(luma.back(), BEHIND);
  luma.pop_back();
  return luma;
}

// Calls check(format, its description) for every format of the library that has a path.
template <typename Check>
void forEveryFormat(LumaPath path, Check check) {
  int formats = 0;
  const AVPixFmtDescriptor* format = nullptr;
  while ((format = av_pix_fmt_desc_next(format)) != nullptr) {
    const AVPixelFormat id = av_pix_fmt_desc_get_id(format);
    if (lumaPathOf(id) != path) continue;
    SCOPED_TRACE(format->name);
    check(id, *format);
    ++formats;
  }
  EXPECT_GT(formats, 8);
}

// A picture whose first rows count through all values of its depth, each in a word of two bytes
// above `shift` bits that are set.
FfmpegOwner<AVFrame> countingPicture(AVPixelFormat format, int depth, int shift, bool isBigEndian) {
  FfmpegOwner<AVFrame> picture = noisePicture(format, 256, 1 << (depth - 8));
  for (int value = 0; value < 1 << depth; ++value) {
    const int word = value << shift | ((1 << shift) - 1);
    uint8_t* const bytes = picture->data[0] + value / 256 * picture->linesize[0] + value % 256 * 2;
    bytes[isBigEndian ? 0 : 1] = static_cast<uint8_t>(word >> 8);
    bytes[isBigEndian ? 1 : 0] = static_cast<uint8_t>(word & 0xff);
  }
  return picture;
}

}  // namespace

TEST(Luma, ofEightBitsIsWhatTheScalerTakesFromThem) {
  // The scaler leaves luma of the same size, depth and range as it is.
  forEveryFormat(LumaPath::COPIED, [](AVPixelFormat id, const AVPixFmtDescriptor& format) {
    const FfmpegOwner<AVFrame> picture = noisePicture(id, 32, 16);
    ASSERT_NE(picture, nullptr);
    const std::vector<uint8_t> luma = lumaOf(*picture);
    // Of full range it is told that it is of video range, lest it converts.
    std::string name = format.name;
    if (name.substr(0, 4) == "yuvj") id = av_get_pix_fmt(name.erase(3, 1).c_str());
    if (id == AV_PIX_FMT_NV16) {  // which it does not know: luma is a plane, as in NV12
      for (int i = 0; i < 32 * 16; ++i) {
        EXPECT_EQ(luma[static_cast<size_t>(i)],
                  picture->data[0][i / 32 * picture->linesize[0] + i % 32]);
      }
      return;
    }
    ASSERT_NE(sws_isSupportedInput(id), 0) << name;
    const FfmpegOwner<SwsContext> scaler(sws_getContext(32, 16, id, 32, 16, AV_PIX_FMT_YUV444P,
                                                        SWS_POINT, nullptr, nullptr, nullptr));
    const FfmpegOwner<AVFrame> expected = noisePicture(AV_PIX_FMT_YUV444P, 32, 16);
    sws_scale(scaler.get(), picture->data, picture->linesize, 0, 16, expected->data,
              expected->linesize);
    EXPECT_EQ(luma, lumaOf(*expected));
  });
}

TEST(Luma, isReadWithinTheRowsOfEveryFormat) {
  for (const LumaPath path : {LumaPath::COPIED, LumaPath::NARROWED}) {
    forEveryFormat(path, [](AVPixelFormat id, const AVPixFmtDescriptor& format) {
      const AVComponentDescriptor& y = format.comp[0];
      for (int w = 1; w <= 100; ++w) {
        EXPECT_LE(y.offset + (w - 1) * y.step + (y.depth > 8 ? 2 : 1),
                  av_image_get_linesize(id, w, y.plane))
            << w;
      }
    });
  }
}

TEST(Luma, hasAPathFromAllThatDecodersDeliver) {
  std::string without;
  const AVPixFmtDescriptor* format = nullptr;
  while ((format = av_pix_fmt_desc_next(format)) != nullptr) {
    const bool isInDevice = (format->flags & AV_PIX_FMT_FLAG_HWACCEL) != 0;
    const bool hasPath = lumaPathOf(av_pix_fmt_desc_get_id(format)) != LumaPath::NONE;
    EXPECT_FALSE(isInDevice && hasPath) << format->name;
    if (!isInDevice && !hasPath) without += std::string(format->name) + ' ';
  }
  // The first one's luma has no single step, and the scaler knows none of them. Only raw files that
  // say so have them.
  EXPECT_EQ(without, "uyyvyy411 bgr4 rgb4 x2rgb10be x2bgr10be ");
}

TEST(Luma, leavesOutWhatPadsTheRows) {
  const FfmpegOwner<AVFrame> picture = noisePicture(AV_PIX_FMT_YUV420P);
  ASSERT_GT(picture->linesize[0], W);
  const std::vector<uint8_t> luma = lumaOf(*picture);
  for (int y = 0; y < H; ++y) {
    for (int x = 0; x < W; ++x) {
      ASSERT_EQ(luma[static_cast<size_t>(y * W + x)],
                picture->data[0][y * picture->linesize[0] + x]);
    }
  }
}

TEST(Luma, keepsFullRange) {
  const FfmpegOwner<AVFrame> picture = noisePicture(AV_PIX_FMT_YUVJ420P);
  std::fill_n(picture->data[0], W, uint8_t{255});
  picture->color_range = AVCOL_RANGE_JPEG;
  EXPECT_EQ(lumaOf(*picture)[0], 255);
}

TEST(Luma, ofMoreBitsIsRoundedAndCut) {
  struct Deep {
    AVPixelFormat format;
    int depth;
    int shift;
    bool isBigEndian;
  };
  for (const Deep& deep :
       {Deep{AV_PIX_FMT_YUV420P9LE, 9, 0, false}, Deep{AV_PIX_FMT_YUV420P10LE, 10, 0, false},
        Deep{AV_PIX_FMT_YUV422P10BE, 10, 0, true}, Deep{AV_PIX_FMT_YUV444P12LE, 12, 0, false},
        Deep{AV_PIX_FMT_YUV420P14LE, 14, 0, false}, Deep{AV_PIX_FMT_YUV420P16BE, 16, 0, true},
        Deep{AV_PIX_FMT_P010LE, 10, 6, false}, Deep{AV_PIX_FMT_P010BE, 10, 6, true}}) {
    SCOPED_TRACE(av_get_pix_fmt_name(deep.format));
    const FfmpegOwner<AVFrame> picture =
        countingPicture(deep.format, deep.depth, deep.shift, deep.isBigEndian);
    const std::vector<uint8_t> luma = lumaOf(*picture);
    // One step of 8 bits is 2^(b - 8) of b: its middle is rounded up, and the last half step cut.
    const int step = 1 << (deep.depth - 8);
    for (int value = 0; value < 1 << deep.depth; ++value) {
      const int nearest = value / step + (value % step >= step / 2 ? 1 : 0);
      ASSERT_EQ(luma[static_cast<size_t>(value)], nearest > 255 ? 255 : nearest) << value;
    }
  }
}

TEST(Luma, ofEveryOtherFormatIsConverted) {
  forEveryFormat(LumaPath::NARROWED, [](AVPixelFormat id, const AVPixFmtDescriptor&) {
    EXPECT_EQ(lumaOf(*noisePicture(id)).size(), size_t{W} * H);
  });
  forEveryFormat(LumaPath::CONVERTED, [](AVPixelFormat id, const AVPixFmtDescriptor&) {
    EXPECT_EQ(lumaOf(*noisePicture(id)).size(), size_t{W} * H);
  });
}

TEST(Luma, ofGreyAndRgbIsThatOfVideoRange_withoutDither) {
  for (const AVPixelFormat format :
       {AV_PIX_FMT_GRAY8, AV_PIX_FMT_GRAY16LE, AV_PIX_FMT_RGB24, AV_PIX_FMT_RGB48LE}) {
    SCOPED_TRACE(av_get_pix_fmt_name(format));
    const FfmpegOwner<AVFrame> picture = noisePicture(format);
    // Black is 16 and white 235, between them 219 steps for 255. Two equal bytes are a level of 16
    // bits, of which dither would make a pattern. The scaler takes 255 * 256 for white, not 65535:
    // with what it rounds, up to 1.5 too much.
    for (int level = 0; level < 256; ++level) {
      std::fill_n(picture->buf[0]->data, picture->buf[0]->size, static_cast<uint8_t>(level));
      const std::vector<uint8_t> luma = lumaOf(*picture);
      EXPECT_EQ(luma, std::vector<uint8_t>(luma.size(), luma[0]));
      EXPECT_NEAR(luma[0], 16 + 219.0 * level / 255, 1.5) << level;
    }
  }
}

TEST(Luma, followsChangesOfSizeAndFormat) {
  LumaConverter converter;
  for (const int w : {16, 33, 16}) {
    for (const AVPixelFormat format : {AV_PIX_FMT_RGB24, AV_PIX_FMT_BGR24}) {
      const FfmpegOwner<AVFrame> picture = noisePicture(format, w, 9);
      std::vector<uint8_t> luma(static_cast<size_t>(w) * 9);
      ASSERT_TRUE(convertToLuma(picture.get(), &converter, luma.data()));
      EXPECT_EQ(luma, lumaOf(*picture));
    }
  }
}

TEST(Luma, hasNoPathFromADevice) {
  EXPECT_EQ(lumaPathOf(AV_PIX_FMT_VAAPI), LumaPath::NONE);
  EXPECT_EQ(lumaPathOf(AV_PIX_FMT_NONE), LumaPath::NONE);
  EXPECT_EQ(lumaPathOf(AV_PIX_FMT_YUV420P), LumaPath::COPIED);
  EXPECT_EQ(lumaPathOf(AV_PIX_FMT_YUV420P10), LumaPath::NARROWED);
  EXPECT_EQ(lumaPathOf(AV_PIX_FMT_GRAY8), LumaPath::CONVERTED);
  EXPECT_EQ(lumaPathOf(AV_PIX_FMT_XYZ12), LumaPath::CONVERTED);
  FfmpegOwner<AVFrame> picture(av_frame_alloc());
  picture->format = AV_PIX_FMT_VAAPI;
  LumaConverter converter;
  uint8_t luma = 77;
  EXPECT_FALSE(convertToLuma(picture.get(), &converter, &luma));
  EXPECT_EQ(luma, 77);
}

TEST(Luma, hasTheLevelsThatThePictureSays) {
  const auto rangeOf = [](AVPixelFormat format, AVColorRange said) {
    const FfmpegOwner<AVFrame> picture = noisePicture(format);
    picture->color_range = said;
    const LumaRange range = lumaRangeOf(*picture);
    return std::pair(range.black, range.white);
  };
  const std::pair<int, int> video(16, 235);
  const std::pair<int, int> all(0, 255);
  // Copied and narrowed levels are those that the stream has.
  for (const AVPixelFormat format : {AV_PIX_FMT_YUV420P, AV_PIX_FMT_NV12, AV_PIX_FMT_YUV422P10LE}) {
    EXPECT_EQ(rangeOf(format, AVCOL_RANGE_UNSPECIFIED), video) << format;
    EXPECT_EQ(rangeOf(format, AVCOL_RANGE_MPEG), video) << format;
    EXPECT_EQ(rangeOf(format, AVCOL_RANGE_JPEG), all) << format;
  }
  // Formats that have all levels by their name, whatever else is said.
  for (const AVPixelFormat format : {AV_PIX_FMT_YUVJ420P, AV_PIX_FMT_YUVJ444P}) {
    for (const AVColorRange said : {AVCOL_RANGE_UNSPECIFIED, AVCOL_RANGE_MPEG, AVCOL_RANGE_JPEG}) {
      EXPECT_EQ(rangeOf(format, said), all) << format << ' ' << said;
    }
  }
  // The scaler makes video levels of these.
  for (const AVPixelFormat format : {AV_PIX_FMT_GBRP, AV_PIX_FMT_RGB24, AV_PIX_FMT_GRAY8,
                                     AV_PIX_FMT_GRAY10LE, AV_PIX_FMT_PAL8}) {
    EXPECT_EQ(lumaPathOf(format), LumaPath::CONVERTED) << format;
    for (const AVColorRange said : {AVCOL_RANGE_UNSPECIFIED, AVCOL_RANGE_MPEG, AVCOL_RANGE_JPEG}) {
      EXPECT_EQ(rangeOf(format, said), video) << format << ' ' << said;
    }
  }
}
