#include "scan/fileEnding.h"

#include <algorithm>
#include <array>
#include <fstream>
#include <string_view>

namespace {

constexpr std::string_view GIF_ENDING("\0;", 2);    // the end of a block and the trailer
constexpr char OGG_PAGE[] = "OggS";                 // at the start of a page
constexpr size_t OGG_FLAGS = 5;                     // place in it
constexpr int OGG_CLOSES_STREAM = 4;                // flag
constexpr std::streamoff OGG_LONGEST_PAGE = 65307;  // bytes
// Bytes of a packet: as broadcast, with a time stamp in front, with error correction behind.
constexpr std::array TRANSPORT_PACKETS = {188, 192, 204};

std::string tailOf(std::ifstream* file, std::streamoff size, std::streamoff length) {
  std::string tail(static_cast<size_t>(std::min(size, length)), '\0');
  file->seekg(-static_cast<std::streamoff>(tail.size()), std::ios::end);
  file->read(tail.data(), static_cast<std::streamsize>(tail.size()));
  return tail;
}

bool closesStream(const std::string& tail) {
  const size_t page = tail.rfind(OGG_PAGE);
  return page != std::string::npos && page + OGG_FLAGS < tail.size() &&
         (tail[page + OGG_FLAGS] & OGG_CLOSES_STREAM) != 0;
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
