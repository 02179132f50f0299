#include "scan/video/streamFacts.h"

#include <fmt/core.h>
#include <algorithm>
#include <array>
#include <cmath>
#include <string_view>

#include "scan/video/luma.h"

extern "C" {
#include <libavutil/display.h>
}

namespace {

std::string ratio(AVRational value, char sign) {
  return std::to_string(value.num) + sign + std::to_string(value.den);
}

// A name that FFmpeg may not have.
std::string nameOr(const char* name, const char* otherwise) {
  return name == nullptr ? otherwise : name;
}

const char* fieldOrder(AVFieldOrder order) {
  switch (order) {
    case AV_FIELD_PROGRESSIVE:
      return "progressive";
    case AV_FIELD_TT:
      return "tt";
    case AV_FIELD_BB:
      return "bb";
    case AV_FIELD_TB:
      return "tb";
    case AV_FIELD_BT:
      return "bt";
    default:
      return "unknown";
  }
}

// Degrees clockwise by which a player turns the picture.
double rotation(const AVStream& stream) {
  const uint8_t* const matrix =
      av_stream_get_side_data(&stream, AV_PKT_DATA_DISPLAYMATRIX, nullptr);
  if (matrix == nullptr) return 0.0;
  const double angle = av_display_rotation_get(reinterpret_cast<const int32_t*>(matrix));
  return std::isfinite(angle) ? 0.0 - angle : 0.0;
}

AVPixelFormat pixelFormat(const AVStream& stream) {
  return static_cast<AVPixelFormat>(stream.codecpar->format);
}

bool isFullRange(const AVCodecParameters& video) {
  const AVPixFmtDescriptor* const format =
      av_pix_fmt_desc_get(static_cast<AVPixelFormat>(video.format));
  // The older names of full-range formats say it themselves.
  const bool isByName = format != nullptr && std::string(format->name).substr(0, 4) == "yuvj";
  return video.color_range == AVCOL_RANGE_JPEG || isByName;
}

// Containers in which a missing end is seen without a declared duration.
bool showsItsEnd(const AVFormatContext& container) {
  constexpr std::array SHOWING = {"asf", "dv",  "gif",      "jpeg_pipe", "mjpeg",       "mxf",
                                  "obu", "ogg", "rawvideo", "roq",       "yuv4mpegpipe"};
  return std::find(SHOWING.begin(), SHOWING.end(), std::string_view(container.iformat->name)) !=
         SHOWING.end();
}

// The first frame's, of the video, else of the container, else of a stream of timecodes.
std::string startTimecode(const VideoReader& reader) {
  const AVFormatContext& container = *reader.container;
  std::vector<const AVDictionary*> places = {videoStream(reader).metadata, container.metadata};
  for (unsigned int i = 0; i < container.nb_streams; ++i) {
    places.push_back(container.streams[i]->metadata);
  }
  for (const AVDictionary* const place : places) {
    const AVDictionaryEntry* const timecode = av_dict_get(place, "timecode", nullptr, 0);
    if (timecode != nullptr) return timecode->value;
  }
  return "";
}

// Sound that is at least a second shorter or longer than the picture.
std::vector<std::string> unevenSound(const VideoReader& reader) {
  constexpr double TOLERANCE = 1.0;  // seconds
  const AVFormatContext& container = *reader.container;
  const double ofPicture = streamDuration(container, videoStream(reader));
  std::vector<std::string> warnings;
  for (const AudioFacts& audio : audioFacts(container)) {
    const double surplus = audio.duration - ofPicture;  // NaN: unknown
    if (!(std::fabs(surplus) >= TOLERANCE)) continue;
    warnings.push_back(fmt::format("the sound of stream {} is {:.1f} s {} than the picture",
                                   audio.stream, std::fabs(surplus),
                                   surplus < 0.0 ? "shorter" : "longer"));
  }
  return warnings;
}

// What to do about further videos; empty: there are none.
std::string furtherVideos(const VideoReader& reader) {
  const AVFormatContext& container = *reader.container;
  std::string numbers;
  for (unsigned int i = 0; i < container.nb_streams; ++i) {
    const AVStream& stream = *container.streams[i];
    const bool isCover = (stream.disposition & AV_DISPOSITION_ATTACHED_PIC) != 0;
    const bool isVideo = stream.codecpar->codec_type == AVMEDIA_TYPE_VIDEO && !isCover;
    if (isVideo && &stream != reader.stream)
      numbers += (numbers.empty() ? "" : ", ") + std::to_string(i);
  }
  if (numbers.empty()) return "";
  return "there are further video streams, which are not measured: --stream takes " + numbers;
}

}  // namespace

StreamFacts streamFacts(const VideoReader& reader) {
  const AVStream& stream = videoStream(reader);
  const AVCodecParameters& video = *stream.codecpar;
  const AVRational shape =
      stream.sample_aspect_ratio.num > 0 ? stream.sample_aspect_ratio : video.sample_aspect_ratio;
  const bool isRateKnown = stream.avg_frame_rate.num > 0 && stream.avg_frame_rate.den > 0;
  StreamFacts facts;
  facts.container = reader.container->iformat->name;
  facts.codec = avcodec_get_name(video.codec_id);
  facts.profile = nameOr(avcodec_profile_name(video.codec_id, video.profile), "");
  facts.pixelFormat = nameOr(av_get_pix_fmt_name(pixelFormat(stream)), "unknown");
  facts.width = video.width;
  facts.height = video.height;
  facts.frameRate = isRateKnown ? av_q2d(stream.avg_frame_rate) : UNKNOWN;
  facts.frameRateFraction = isRateKnown ? ratio(stream.avg_frame_rate, '/') : "";
  facts.timeBase = ratio(stream.time_base, '/');
  facts.declaredDuration = declaredDuration(reader);
  facts.declaredFrames = std::max(int64_t{0}, stream.nb_frames);
  facts.fieldOrder = fieldOrder(video.field_order);
  facts.colorRange = nameOr(av_color_range_name(video.color_range), "unknown");
  facts.colorTransfer = nameOr(av_color_transfer_name(video.color_trc), "unknown");
  facts.rotation = rotation(stream);
  facts.sampleAspectRatio = shape.num > 0 ? ratio(shape, ':') : "1:1";
  facts.bitRate = video.bit_rate;
  facts.containerBitRate = reader.container->bit_rate;
  facts.startTimecode = startTimecode(reader);
  facts.audio = audioFacts(*reader.container);
  return facts;
}

std::vector<std::string> streamWarnings(const VideoReader& reader) {
  const AVStream& stream = videoStream(reader);
  const AVCodecParameters& video = *stream.codecpar;
  std::vector<std::string> warnings;
  const auto warn = [&](bool applies, const char* text) {
    if (applies) warnings.emplace_back(text);
  };
  const bool isConverted = lumaPathOf(pixelFormat(stream)) == LumaPath::CONVERTED;
  warn(isFullRange(video) && !isConverted,
       "full-range video: levels are measured as they are, 0 to 255");
  warn(video.color_trc == AVCOL_TRC_SMPTE2084 || video.color_trc == AVCOL_TRC_ARIB_STD_B67,
       "high dynamic range: levels are measured as they are, without tone mapping");
  warn(video.field_order > AV_FIELD_PROGRESSIVE,
       "interlaced video: frames are measured as they are, without deinterlacing");
  warn(rotation(stream) != 0.0, "players turn this video: it is measured as it is stored");
  warn(isConverted,
       "the pixel format has no luma of its own: it is converted to luma of video range");
  warn(stream.avg_frame_rate.num <= 0, "the frame rate is not known: 25 is assumed for freezing");
  warn(std::isnan(declaredDuration(reader)) && !showsItsEnd(*reader.container),
       "the container does not say how long it is: a missing end may not be seen");
  for (const std::string& warning : unevenSound(reader)) warn(true, warning.c_str());
  const std::string others = furtherVideos(reader);
  warn(!others.empty(), others.c_str());
  return warnings;
}
