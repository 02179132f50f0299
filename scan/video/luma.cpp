#include "scan/video/luma.h"

#include <algorithm>
#include <cstring>
#include <new>
#include <string_view>

namespace {

constexpr int WORD_BITS = 16;

// Whether samples that are as far from each other as the format says lie within its rows. Of one
// format they do not, whose luma has no single step.
bool isEvenlySpaced(const AVPixFmtDescriptor& format) {
  constexpr int WIDTH = 64;
  const AVComponentDescriptor& y = format.comp[0];
  const int bytes = y.offset + (WIDTH - 1) * y.step + (y.depth > 8 ? 2 : 1);
  return bytes <= av_image_get_linesize(av_pix_fmt_desc_get_id(&format), WIDTH, y.plane);
}

// Whether a YUV format has its luma in bytes or in 16-bit words of their own.
bool isReadable(const AVPixFmtDescriptor& format) {
  constexpr uint64_t OTHERS = AV_PIX_FMT_FLAG_RGB | AV_PIX_FMT_FLAG_PAL |
                              AV_PIX_FMT_FLAG_BITSTREAM | AV_PIX_FMT_FLAG_FLOAT |
                              AV_PIX_FMT_FLAG_BAYER | AV_PIX_FMT_FLAG_HWACCEL;
  const AVComponentDescriptor& y = format.comp[0];
  // XYZ has three components and none of these flags.
  const bool isYuv = format.nb_components >= 3 && (format.flags & OTHERS) == 0 &&
                     std::string_view(format.name).substr(0, 3) != "xyz";
  const bool isByte = y.depth == 8 && y.shift == 0;
  const bool isWord = y.depth > 8 && y.depth + y.shift <= WORD_BITS && y.step % 2 == 0;
  return isYuv && (isByte || isWord) && isEvenlySpaced(format);
}

void copyRow(const uint8_t* samples, int step, int w, uint8_t* luma) {
  if (step == 1) {
    std::memcpy(luma, samples, static_cast<size_t>(w));
    return;
  }
  for (int x = 0; x < w; ++x) luma[x] = samples[x * step];
}

// `samples` are 16-bit words, y.step bytes apart, that hold y.depth bits above y.shift others.
void narrowRow(const uint8_t* samples, const AVComponentDescriptor& y, bool isBigEndian, int w,
               uint8_t* luma) {
  const int high = isBigEndian ? 0 : 1;
  const int drop = y.depth - 8;
  const int half = 1 << (drop - 1);
  const int mask = (1 << y.depth) - 1;
  for (int x = 0; x < w; ++x) {
    const uint8_t* const word = samples + x * y.step;
    const int value = ((word[high] << 8 | word[1 - high]) >> y.shift) & mask;
    luma[x] = static_cast<uint8_t>(std::min(255, (value + half) >> drop));
  }
}

// The luma of a readable format, brought to 8 bits.
void readLuma(const AVFrame& picture, uint8_t* luma) {
  const AVPixFmtDescriptor& format =
      *av_pix_fmt_desc_get(static_cast<AVPixelFormat>(picture.format));
  const AVComponentDescriptor& y = format.comp[0];
  const bool isBigEndian = (format.flags & AV_PIX_FMT_FLAG_BE) != 0;
  for (int row = 0; row < picture.height; ++row) {
    const uint8_t* const samples =
        picture.data[y.plane] + static_cast<ptrdiff_t>(row) * picture.linesize[y.plane] + y.offset;
    uint8_t* const out = luma + static_cast<ptrdiff_t>(row) * picture.width;
    if (y.depth == 8) {
      copyRow(samples, y.step, picture.width, out);
    } else {
      narrowRow(samples, y, isBigEndian, picture.width, out);
    }
  }
}

// What the scaler makes of a format: YUV of video range. From more than 8 bits to 8 it dithers,
// whatever it is told; it is let keep them.
AVPixelFormat scalerTarget(AVPixelFormat format) {
  return av_pix_fmt_desc_get(format)->comp[0].depth > 8 ? AV_PIX_FMT_YUV420P16LE
                                                        : AV_PIX_FMT_YUV420P;
}

// A scaler of the picture's size and format, which changes the format alone; null when there is no
// memory for it.
FfmpegOwner<SwsContext> makeScaler(const AVFrame& picture, AVPixelFormat target) {
  FfmpegOwner<SwsContext> scaler(sws_alloc_context());
  if (scaler == nullptr) return nullptr;
  av_opt_set_int(scaler.get(), "srcw", picture.width, 0);
  av_opt_set_int(scaler.get(), "srch", picture.height, 0);
  av_opt_set_int(scaler.get(), "dstw", picture.width, 0);
  av_opt_set_int(scaler.get(), "dsth", picture.height, 0);
  av_opt_set_int(scaler.get(), "src_format", picture.format, 0);
  av_opt_set_int(scaler.get(), "dst_format", target, 0);
  av_opt_set_int(scaler.get(), "sws_flags", SWS_BICUBIC | SWS_ACCURATE_RND | SWS_BITEXACT, 0);
  return sws_init_context(scaler.get(), nullptr, nullptr) < 0 ? nullptr : std::move(scaler);
}

bool convert(const AVFrame& picture, LumaConverter* converter, uint8_t* luma) {
  const auto format = static_cast<AVPixelFormat>(picture.format);
  const AVPixelFormat target = scalerTarget(format);
  if (converter->scaler == nullptr || converter->format != format ||
      converter->w != picture.width || converter->h != picture.height) {
    *converter = {makeScaler(picture, target), format, picture.width, picture.height};
  }
  if (converter->scaler == nullptr) throw std::bad_alloc();
  const FfmpegOwner<AVFrame> converted(av_frame_alloc());
  converted->format = target;
  converted->width = picture.width;
  converted->height = picture.height;
  const int scaled = sws_scale_frame(converter->scaler.get(), converted.get(), &picture);
  if (scaled == AVERROR(ENOMEM)) throw std::bad_alloc();
  if (scaled < 0) return false;
  readLuma(*converted, luma);
  return true;
}

}  // namespace

LumaPath lumaPathOf(AVPixelFormat format) {
  const AVPixFmtDescriptor* const description = av_pix_fmt_desc_get(format);
  if (description == nullptr) return LumaPath::NONE;
  if (isReadable(*description)) {
    return description->comp[0].depth == 8 ? LumaPath::COPIED : LumaPath::NARROWED;
  }
  return sws_isSupportedInput(format) != 0 ? LumaPath::CONVERTED : LumaPath::NONE;
}

const char* lumaPathName(LumaPath path) {
  switch (path) {
    case LumaPath::COPIED:
      return "copied";
    case LumaPath::NARROWED:
      return "narrowed";
    case LumaPath::CONVERTED:
      return "converted";
    default:
      return "none";
  }
}

LumaRange lumaRangeOf(const AVFrame& picture) {
  const auto format = static_cast<AVPixelFormat>(picture.format);
  if (lumaPathOf(format) == LumaPath::CONVERTED) return {};
  // The formats that hold JPEG's levels have names of their own.
  const bool isFull = picture.color_range == AVCOL_RANGE_JPEG ||
                      std::string_view(av_get_pix_fmt_name(format)).substr(0, 4) == "yuvj";
  return isFull ? FULL_RANGE : LumaRange{};
}

bool convertToLuma(const AVFrame* picture, LumaConverter* converter, uint8_t* luma) {
  switch (lumaPathOf(static_cast<AVPixelFormat>(picture->format))) {
    case LumaPath::COPIED:
    case LumaPath::NARROWED:
      readLuma(*picture, luma);
      return true;
    case LumaPath::CONVERTED:
      return convert(*picture, converter, luma);
    default:
      return false;
  }
}
