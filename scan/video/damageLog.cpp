#include "scan/video/damageLog.h"

#include <cstdarg>
#include <cstdio>
#include <string_view>
#include <utility>

namespace {

// Formats of FFmpeg 5.1 for what it does not hold for an error.
constexpr std::string_view DAMAGED_PACKET = "Packet corrupt (stream = %d";
constexpr std::string_view LOST_PACKETS = "Continuity check failed for pid %d";
// Of a parser, which names a decoder of its own.
constexpr std::string_view LOST_PICTURE = "missing picture in access unit";
// Of what checks sizes, for whomever.
constexpr std::string_view REFUSED_SIZE = "Picture size %ux%u ";

thread_local AVFormatContext* readContainer = nullptr;

bool startsWith(const char* text, std::string_view start) {
  return std::string_view(text).substr(0, start.size()) == start;
}

std::string formatted(const char* format, va_list arguments) {
  char text[256];
  std::vsnprintf(text, sizeof text, format, arguments);
  return text;
}

// The first argument, a number.
int firstNumber(va_list arguments) {
  va_list copy;
  va_copy(copy, arguments);
  const int number = va_arg(copy, int);
  va_end(copy);
  return number;
}

void addContainerMessage(const AVFormatContext& container, int level, const char* format,
                         va_list arguments) {
  auto* const log = static_cast<DamageLog*>(container.opaque);
  if (log == nullptr) return;
  ContainerMessage message = {container.pb == nullptr ? 0 : avio_tell(container.pb), -1, -1, ""};
  if (startsWith(format, DAMAGED_PACKET)) {
    message.stream = firstNumber(arguments);
    message.text = "damaged packet";
  } else if (startsWith(format, LOST_PACKETS)) {
    message.streamId = firstNumber(arguments);
    message.text = "packets of the transport stream are missing";
  } else if (level <= AV_LOG_ERROR) {
    message.text = formatted(format, arguments);
  } else {
    return;
  }
  const std::lock_guard<std::mutex> lock(log->mutex);
  log->ofContainer.push_back(std::move(message));
}

void addDecoderMessage(const AVCodecContext& decoder, int level, const char* format,
                       va_list arguments) {
  auto* const log = static_cast<DamageLog*>(decoder.opaque);
  if (level > AV_LOG_ERROR) return;
  const std::string text = formatted(format, arguments);
  const std::lock_guard<std::mutex> lock(log->mutex);
  log->unfinished += text;
  if (text.empty() || text.back() != '\n') return;
  log->ofDecoder.push_back(std::move(log->unfinished));
  log->unfinished.clear();
}

// Of parts that belong to a container without knowing it: some demuxers, filters of packets,
// parsers.
void addReadersMessage(const AVClass* kind, int level, const char* format, va_list arguments) {
  const bool isOfDecoder = kind == avcodec_get_class() && !startsWith(format, LOST_PICTURE);
  if (readContainer == nullptr || isOfDecoder || kind == sws_get_class()) return;
  addContainerMessage(*readContainer, level, format, arguments);
}

void noteRefusedSize(va_list arguments) {
  const auto w = va_arg(arguments, unsigned int);
  const auto h = va_arg(arguments, unsigned int);
  if (readContainer == nullptr || w == 0 || h == 0) return;
  auto* const log = static_cast<DamageLog*>(readContainer->opaque);
  log->refusedSize = std::to_string(w) + 'x' + std::to_string(h);
}

void listen(void* source, int level, const char* format, va_list arguments) {
  const AVClass* const kind = source == nullptr ? nullptr : *static_cast<const AVClass**>(source);
  va_list copy;
  va_copy(copy, arguments);
  if (startsWith(format, REFUSED_SIZE)) {
    noteRefusedSize(copy);
  } else if (kind == avformat_get_class()) {
    addContainerMessage(*static_cast<AVFormatContext*>(source), level, format, copy);
  } else if (kind == avcodec_get_class() &&
             static_cast<AVCodecContext*>(source)->opaque != nullptr) {
    addDecoderMessage(*static_cast<AVCodecContext*>(source), level, format, copy);
  } else {
    addReadersMessage(kind, level, format, copy);
  }
  va_end(copy);
  if (kind != sws_get_class()) av_log_default_callback(source, level, format, arguments);
}

}  // namespace

void listenToFfmpeg() {
  av_log_set_callback(listen);
}

Listening::Listening(AVFormatContext* container) {
  readContainer = container;
}

Listening::~Listening() {
  readContainer = nullptr;
}

std::vector<ContainerMessage> takeContainerMessages(DamageLog* log) {
  const std::lock_guard<std::mutex> lock(log->mutex);
  return std::exchange(log->ofContainer, {});
}

std::vector<std::string> takeDecoderMessages(DamageLog* log) {
  const std::lock_guard<std::mutex> lock(log->mutex);
  return std::exchange(log->ofDecoder, {});
}
