#include "scan/fileEnding.h"

#include <algorithm>
#include <array>
#include <fstream>
#include <string_view>

namespace {

constexpr std::string_view GIF_ENDING("\0;", 2);  // the end of a block and the trailer
// Of an Ogg page (RFC 3533): what it starts with, places in its header, and the header's length;
// the lengths of its segments follow, a byte each.
constexpr char OGG_PAGE[] = "OggS";
constexpr size_t OGG_FLAGS = 5;
constexpr size_t OGG_SEGMENTS = 26;
constexpr size_t OGG_HEADER = 27;
constexpr size_t OGG_CLOSES_STREAM = 4;
constexpr std::streamoff OGG_LONGEST_PAGE = 65307;  // bytes
// Bytes of a packet: as broadcast, with a time stamp in front, with error correction behind.
constexpr std::array TRANSPORT_PACKETS = {188, 192, 204};

std::string tailOf(std::ifstream* file, std::streamoff size, std::streamoff length) {
  std::string tail(static_cast<size_t>(std::min(size, length)), '\0');
  file->seekg(-static_cast<std::streamoff>(tail.size()), std::ios::end);
  file->read(tail.data(), static_cast<std::streamsize>(tail.size()));
  return tail;
}

// Whether the last page closes a stream, and is there as a whole.
bool closesStream(const std::string& tail) {
  const size_t start = tail.rfind(OGG_PAGE);
  if (start == std::string::npos || start + OGG_HEADER > tail.size()) return false;
  const auto byteAt = [&](size_t place) {
    return size_t{static_cast<unsigned char>(tail[start + place])};
  };
  const size_t segments = byteAt(OGG_SEGMENTS);
  if (start + OGG_HEADER + segments > tail.size()) return false;
  size_t length = OGG_HEADER + segments;
  for (size_t i = 0; i < segments; ++i) length += byteAt(OGG_HEADER + i);
  return (byteAt(OGG_FLAGS) & OGG_CLOSES_STREAM) != 0 && start + length <= tail.size();
}

}  // namespace

bool lacksEnding(const std::string& path, const std::string& container) {
  std::ifstream file(path, std::ios::binary | std::ios::ate);
  const std::streamoff size = file.tellg();
  if (size <= 0) return false;
  if (container == "gif") return tailOf(&file, size, 2) != GIF_ENDING;
  if (container == "ogg") return !closesStream(tailOf(&file, size, OGG_LONGEST_PAGE));
  if (container != "mpegts") return false;
  return std::none_of(TRANSPORT_PACKETS.begin(), TRANSPORT_PACKETS.end(),
                      [&](int packet) { return size % packet == 0; });
}
