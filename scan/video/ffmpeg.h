// FFmpeg's libraries for C++: their headers, owners of what they allocate, their words for errors.
#ifndef LUMASCAN_FFMPEG_H
#define LUMASCAN_FFMPEG_H

extern "C" {
#include <libavcodec/avcodec.h>
#include <libavformat/avformat.h>
#include <libavutil/imgutils.h>
#include <libavutil/opt.h>
#include <libavutil/parseutils.h>
#include <libavutil/pixdesc.h>
#include <libswscale/swscale.h>
}

#include <memory>
#include <string>

struct FfmpegDeleter {
  void operator()(AVFormatContext* context) const { avformat_close_input(&context); }
  void operator()(AVIOContext* context) const {
    av_freep(&context->buffer);
    avio_context_free(&context);
  }
  void operator()(AVCodecContext* context) const { avcodec_free_context(&context); }
  void operator()(AVPacket* packet) const { av_packet_free(&packet); }
  void operator()(AVFrame* frame) const { av_frame_free(&frame); }
  void operator()(SwsContext* context) const { sws_freeContext(context); }
};

template <typename T>
using FfmpegOwner = std::unique_ptr<T, FfmpegDeleter>;

constexpr char NO_MEMORY[] = "it takes more memory than there is, or than --memory-limit allows";

inline std::string ffmpegError(int code) {
  if (code == AVERROR(ENOMEM)) return NO_MEMORY;
  if (code == AVERROR(ETIMEDOUT)) return "nothing has come for the time of --stall-timeout";
  char text[AV_ERROR_MAX_STRING_SIZE] = {};
  av_strerror(code, text, sizeof text);
  return text;
}

#endif
