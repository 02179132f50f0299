#include "scan/video/fileEnding.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <filesystem>
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

// The bytes from a place on, as many as there are.
std::string bytesAt(std::ifstream* file, std::streamoff place, std::streamoff length) {
  std::string bytes(static_cast<size_t>(length), '\0');
  file->clear();
  file->seekg(place);
  file->read(bytes.data(), length);
  bytes.resize(static_cast<size_t>(file->gcount()));
  return bytes;
}

std::string tailOf(std::ifstream* file, std::streamoff size, std::streamoff length) {
  const std::streamoff whole = std::min(size, length);
  return bytesAt(file, size - whole, whole);
}

uint64_t bigEndian(std::string_view bytes) {
  uint64_t number = 0;
  for (const char byte : bytes) number = number << 8 | static_cast<unsigned char>(byte);
  return number;
}

uint64_t littleEndian(std::string bytes) {
  std::reverse(bytes.begin(), bytes.end());
  return bigEndian(bytes);
}

// The length of the box at a place with its header; 0: to the end of the file.
uint64_t boxLength(std::ifstream* file, std::streamoff place) {
  constexpr uint64_t LENGTH_FOLLOWS = 1;  // in 64 bits, behind the box's type
  const uint64_t length = bigEndian(bytesAt(file, place, 4));
  return length == LENGTH_FOLLOWS ? bigEndian(bytesAt(file, place + 8, 8)) : length;
}

// The same of a RIFF chunk; one of length 0 was never finished.
uint64_t chunkLength(std::ifstream* file, std::streamoff place) {
  constexpr uint64_t HEADER = 8;
  const uint64_t length = littleEndian(bytesAt(file, place + 4, 4));
  return length == 0 ? 0 : HEADER + length;
}

// The same of an EBML element (RFC 8794): its identifier and its length say by their first bits how
// many bytes they have. A length of ones alone is unknown.
uint64_t elementLength(std::ifstream* file, std::streamoff place) {
  constexpr size_t LONGEST = 12;
  const std::string bytes = bytesAt(file, place, LONGEST);
  const auto widthAt = [&](size_t at) {
    size_t width = 1;
    while (width < 8 && at < bytes.size() && (bytes[at] & 0x80 >> (width - 1)) == 0) ++width;
    return width;
  };
  const size_t identifier = widthAt(0);
  const size_t width = widthAt(identifier);
  if (identifier + width > bytes.size()) return 0;
  const uint64_t ones = (uint64_t{1} << (7 * width)) - 1;
  const uint64_t length = bigEndian(std::string_view(bytes).substr(identifier, width)) & ones;
  return length == ones ? 0 : identifier + width + length;
}

// Whether an element of the file's top level reaches past its end. Each begins at a multiple of
// `unit`; what fills one up to there may be missing at the end. What is behind the last whole one
// and too short for a header is nobody's.
bool hasLongElement(std::ifstream* file, std::streamoff size, uint64_t unit,
                    uint64_t (*lengthAt)(std::ifstream*, std::streamoff)) {
  constexpr uint64_t SHORTEST_HEADER = 8;
  uint64_t left = static_cast<uint64_t>(size);
  while (left >= SHORTEST_HEADER) {
    const uint64_t length = lengthAt(file, size - static_cast<std::streamoff>(left));
    if (length == 0) return false;
    if (length > left) return true;
    left -= std::min(length + length % unit, left);
  }
  return false;
}

// The last four bytes of FLV are the length of the tag before them, which says it as well.
bool endsBehindTag(std::ifstream* file, std::streamoff size) {
  constexpr std::streamoff TAG_HEADER = 11;
  const auto length = static_cast<std::streamoff>(bigEndian(tailOf(file, size, 4)));
  if (length + 4 > size) return false;
  const std::string tag = bytesAt(file, size - 4 - length, 4);
  return static_cast<std::streamoff>(bigEndian(tag) & 0xffffff) + TAG_HEADER == length;
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
  // What came through a pipe is gone, and to open it again would be to wait for more.
  std::error_code ignored;
  if (std::filesystem::is_fifo(path, ignored)) return false;
  std::ifstream file(path, std::ios::binary | std::ios::ate);
  const std::streamoff size = file.tellg();
  if (size <= 0) return false;
  if (container == "mov,mp4,m4a,3gp,3g2,mj2") return hasLongElement(&file, size, 1, boxLength);
  if (container == "avi") return hasLongElement(&file, size, 2, chunkLength);
  if (container == "matroska,webm") return hasLongElement(&file, size, 1, elementLength);
  if (container == "flv") return !endsBehindTag(&file, size);
  if (container == "gif") return tailOf(&file, size, 2) != GIF_ENDING;
  if (container == "ogg") return !closesStream(tailOf(&file, size, OGG_LONGEST_PAGE));
  if (container != "mpegts") return false;
  return std::none_of(TRANSPORT_PACKETS.begin(), TRANSPORT_PACKETS.end(),
                      [&](int packet) { return size % packet == 0; });
}
