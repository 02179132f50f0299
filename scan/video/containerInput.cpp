#include "scan/video/containerInput.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdio>
#include <string_view>

namespace {

// As FFmpeg names them. Stills have names that end in "_pipe".
constexpr std::array VIDEO_CONTAINERS = {"4xm",         "alias_pix",
                                         "anm",         "apng",
                                         "argo_brp",    "asf",
                                         "asf_o",       "av1",
                                         "avi",         "avs",
                                         "avs2",        "avs3",
                                         "bethsoftvid", "bfi",
                                         "bink",        "bmv",
                                         "brender_pix", "c93",
                                         "cavsvideo",   "cdg",
                                         "cdxl",        "cine",
                                         "dfa",         "dhav",
                                         "dirac",       "dnxhd",
                                         "dsicin",      "dv",
                                         "dxa",         "ea",
                                         "ea_cdata",    "film_cpk",
                                         "filmstrip",   "fits",
                                         "flic",        "flv",
                                         "frm",         "gdv",
                                         "gif",         "gxf",
                                         "h261",        "h263",
                                         "h264",        "hevc",
                                         "hnm",         "ico",
                                         "idcin",       "iff",
                                         "ifv",         "ingenient",
                                         "ipmovie",     "ipu",
                                         "iv8",         "ivf",
                                         "ivr",         "jv",
                                         "kux",         "live_flv",
                                         "lmlm4",       "luodat",
                                         "lvf",         "lxf",
                                         "m4v",         "matroska,webm",
                                         "mgsts",       "mjpeg",
                                         "mjpeg_2000",  "mlv",
                                         "mm",          "mods",
                                         "moflex",      "mov,mp4,m4a,3gp,3g2,mj2",
                                         "mpeg",        "mpegts",
                                         "mpegvideo",   "mpjpeg",
                                         "msp",         "mtv",
                                         "mv",          "mvi",
                                         "mxf",         "mxg",
                                         "nsv",         "nut",
                                         "nuv",         "obu",
                                         "ogg",         "paf",
                                         "pmp",         "psxstr",
                                         "pva",         "r3d",
                                         "rawvideo",    "rl2",
                                         "rm",          "roq",
                                         "rpl",         "sdr2",
                                         "ser",         "sga",
                                         "siff",        "simbiosis_imx",
                                         "smjpeg",      "smk",
                                         "smush",       "swf",
                                         "thp",         "tiertexseq",
                                         "tmv",         "txd",
                                         "ty",          "vc1",
                                         "vc1test",     "vivo",
                                         "vividas",     "vmd",
                                         "wc3movie",    "wsvqa",
                                         "wtv",         "xmv",
                                         "yop",         "yuv4mpegpipe"};
constexpr std::array PLAYLISTS = {
    "concat", "dash", "hls", "imf", "rtsp", "sdp", "webm_dash_manifest"};
constexpr std::string_view STILL = "_pipe";
constexpr size_t BUFFER_BYTES = 32768;

template <typename Names>
bool isAmong(std::string_view name, const Names& names) {
  return std::find(names.begin(), names.end(), name) != names.end();
}

int readBytes(void* opaque, uint8_t* bytes, int size) {
  auto* const input = static_cast<ContainerInput*>(opaque);
  const auto wanted = static_cast<size_t>(size);
  bool isSilent = false;
  const auto mayWait = [&](double silence) {
    isSilent = input->patience > 0.0 && silence >= input->patience;
    return !isSilent && !input->isGivenUp;
  };
  const ssize_t count = input->file->isRegular ? readAt(*input->file, input->place, bytes, wanted)
                                               : readNext(*input->file, bytes, wanted, mayWait);
  if (isSilent) return AVERROR(ETIMEDOUT);
  if (count < 0) return AVERROR(errno);
  if (count == 0) return AVERROR_EOF;
  input->place += count;
  if (input->place > input->furthest) {
    input->furthest = input->place;
    const auto all = static_cast<double>(fileSize(*input->file));
    input->onAdvance(all > 0.0 ? static_cast<double>(input->place) / all : 0.0);
  }
  return static_cast<int>(count);
}

int64_t seekTo(void* opaque, int64_t offset, int whence) {
  auto* const input = static_cast<ContainerInput*>(opaque);
  const int64_t size = fileSize(*input->file);
  if ((whence & AVSEEK_SIZE) != 0) return size;
  const int direction = whence & ~AVSEEK_FORCE;
  const int64_t base = direction == SEEK_SET ? 0 : direction == SEEK_CUR ? input->place : size;
  const int64_t place = av_sat_add64(base, offset);
  if (base < 0 || place < 0) return AVERROR(EINVAL);
  input->place = place;
  return input->place;
}

bool makeStream(ContainerInput* input) {
  auto* const buffer = static_cast<unsigned char*>(av_malloc(BUFFER_BYTES));
  if (buffer == nullptr) return false;
  const bool isRegular = input->file->isRegular;
  input->stream.reset(avio_alloc_context(buffer, BUFFER_BYTES, 0, input, readBytes, nullptr,
                                         isRegular ? seekTo : nullptr));
  if (input->stream == nullptr) av_free(buffer);
  return input->stream != nullptr;
}

// Some demuxers ask while they look for a long time.
int isGivenUp(void* opaque) {
  return static_cast<ContainerInput*>(opaque)->isGivenUp ? 1 : 0;
}

int refuseToOpen(AVFormatContext* /*container*/, AVIOContext** /*stream*/, const char* /*address*/,
                 int /*flags*/, AVDictionary** /*options*/) {
  return AVERROR(EPERM);
}

// A name with the source's extension, which is all that a demuxer may know of it: damaged streams
// without a header are recognised by that.
std::string plainName(const std::string& path) {
  constexpr size_t LONGEST = 8;
  const size_t dot = path.rfind('.');
  const std::string extension = dot == std::string::npos ? "" : path.substr(dot + 1);
  const bool isPlain =
      extension.size() <= LONGEST && std::all_of(extension.begin(), extension.end(), [](char c) {
        return (c >= '0' && c <= '9') || (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z');
      });
  return isPlain ? "video." + extension : "video";
}

// Why a source cannot be opened, and what to do.
std::string openingError(const VideoSource& source, int error) {
  const bool isOtherFormat = error == AVERROR_INVALIDDATA || error == AVERROR(EINVAL);
  const bool isRaw = source.path.size() > 4 &&
                     source.path.compare(source.path.size() - 4, std::string::npos, ".yuv") == 0;
  if (isOtherFormat && source.isStandardInput) return "standard input is no YUV4MPEG stream";
  if (isOtherFormat && isRaw && source.rawWidth == 0)
    return "raw video says nothing about itself: give --raw WIDTHxHEIGHT@FPS";
  return ffmpegError(error);
}

std::string refusalOf(const std::string& demuxer) {
  if (isAmong(demuxer, PLAYLISTS)) return "it is a playlist, no video: name the videos themselves";
  return "there is no video in it, but what FFmpeg calls \"" + demuxer + "\"";
}

// The format that the source must have, or else the one that FFmpeg takes it for.
int findFormat(const VideoSource& source, const std::string& name, AVFormatContext* container,
               const AVInputFormat** format) {
  if (source.isStandardInput) *format = av_find_input_format("yuv4mpegpipe");
  if (source.rawWidth > 0) *format = av_find_input_format("rawvideo");
  if (*format != nullptr) return 0;
  const int error = av_probe_input_buffer2(container->pb, format, name.c_str(), container, 0, 0);
  // By the names of pictures it would open the files itself, as many as there are.
  const bool opensFiles = error >= 0 && ((*format)->flags & AVFMT_NOFILE) != 0;
  if (!opensFiles) return error;
  *format = nullptr;
  return av_probe_input_buffer2(container->pb, format, "", container, 0, 0);
}

std::string openAs(const VideoSource& source, ContainerInput* input, AVFormatContext** container) {
  if (!makeStream(input)) return ffmpegError(AVERROR(ENOMEM));
  (*container)->pb = input->stream.get();
  (*container)->interrupt_callback = {isGivenUp, input};
  const std::string name = plainName(source.path);
  const AVInputFormat* format = nullptr;
  int error = findFormat(source, name, *container, &format);
  if (error < 0) return openingError(source, error);
  if (!isVideoContainer(format->name)) return refusalOf(format->name);

  // A second lock: should a demuxer ask for another one, or for a protocol.
  (*container)->io_open = refuseToOpen;
  (*container)->format_whitelist = av_strdup(format->name);
  (*container)->protocol_whitelist = av_strdup("none");
  AVDictionary* options = nullptr;
  if (source.rawWidth > 0) {
    const std::string size =
        std::to_string(source.rawWidth) + 'x' + std::to_string(source.rawHeight);
    av_dict_set(&options, "video_size", size.c_str(), 0);
    av_dict_set(&options, "framerate", source.rawRate.c_str(), 0);
    av_dict_set(&options, "pixel_format", "yuv420p", 0);
  }
  error = avformat_open_input(container, name.c_str(), format, &options);
  av_dict_free(&options);
  return error < 0 ? openingError(source, error) : "";
}

}  // namespace

bool isVideoContainer(const std::string& demuxer) {
  const bool isStill = demuxer.size() > STILL.size() &&
                       demuxer.compare(demuxer.size() - STILL.size(), STILL.size(), STILL) == 0;
  // A drawing is made of what it finds on the machine: fonts, for one.
  const bool isDrawing = demuxer == "svg_pipe";
  return (isStill && !isDrawing) || isAmong(demuxer, VIDEO_CONTAINERS);
}

OpenInput fileOf(const VideoSource& source) {
  if (source.file) return source.file;
  return source.isStandardInput ? openStandardInput() : openInput(source.path);
}

std::string openContainer(const VideoSource& source, ContainerInput* input,
                          AVFormatContext** container) {
  input->file = fileOf(source);
  input->patience = source.patience;
  std::string error = input->file->error;
  if (error.empty()) error = openAs(source, input, container);
  if (error.empty()) return "";
  avformat_free_context(*container);  // null where FFmpeg has freed it
  *container = nullptr;
  return error;
}
