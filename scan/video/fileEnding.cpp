#include "scan/video/fileEnding.h"

#include <algorithm>
#include <array>
#include <cstdint>
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
constexpr int64_t OGG_LONGEST_PAGE = 65307;  // bytes
// Bytes of a packet: as broadcast, with a time stamp in front, with error correction behind.
constexpr std::array TRANSPORT_PACKETS = {188, 192, 204};

// The bytes from a place on, as many as there are.
std::string bytesAt(const InputFile& file, int64_t place, int64_t length) {
  std::string bytes(static_cast<size_t>(length), '\0');
  const ssize_t count = readAt(file, place, bytes.data(), bytes.size());
  bytes.resize(static_cast<size_t>(std::max(ssize_t{0}, count)));
  return bytes;
}

std::string tailOf(const InputFile& file, int64_t size, int64_t length) {
  const int64_t whole = std::min(size, length);
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
uint64_t boxLength(const InputFile& file, int64_t place) {
  constexpr uint64_t LENGTH_FOLLOWS = 1;  // in 64 bits, behind the box's type
  const uint64_t length = bigEndian(bytesAt(file, place, 4));
  return length == LENGTH_FOLLOWS ? bigEndian(bytesAt(file, place + 8, 8)) : length;
}

// The same of a RIFF chunk; one of length 0 was never finished.
uint64_t chunkLength(const InputFile& file, int64_t place) {
  constexpr uint64_t HEADER = 8;
  const uint64_t length = littleEndian(bytesAt(file, place + 4, 4));
  return length == 0 ? 0 : HEADER + length;
}

// The same of an EBML element (RFC 8794): its identifier and its length say by their first bits how
// many bytes they have. A length of ones alone is unknown.
uint64_t elementLength(const InputFile& file, int64_t place) {
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

// The same of a RoQ chunk; the file's own header has none.
uint64_t roqLength(const InputFile& file, int64_t place) {
  constexpr uint64_t HEADER = 8;
  constexpr uint64_t NONE = 0xffffffff;
  const uint64_t length = littleEndian(bytesAt(file, place + 2, 4));
  return length == NONE ? HEADER : HEADER + length;
}

// The same of an open bitstream unit of AV1: a byte of flags, perhaps another one, and a length in
// groups of seven bits, the lowest first, of which all but the last are marked.
uint64_t unitLength(const InputFile& file, int64_t place) {
  constexpr size_t LONGEST = 10;
  constexpr int HAS_EXTENSION = 4;
  constexpr int HAS_LENGTH = 2;
  const std::string bytes = bytesAt(file, place, LONGEST);
  if ((bytes[0] & HAS_LENGTH) == 0) return 0;
  const size_t header = (bytes[0] & HAS_EXTENSION) != 0 ? 2 : 1;
  uint64_t length = 0;
  for (size_t i = header; i < bytes.size(); ++i) {
    length |= (static_cast<uint64_t>(bytes[i]) & 0x7f) << (7 * (i - header));
    if ((bytes[i] & 0x80) == 0) return i + 1 + length;
  }
  return LONGEST;  // the length itself is cut
}

// The same of an element of MXF (SMPTE 336): a key, and a length whose first byte says how many
// follow, or is the length itself.
uint64_t keyedLength(const InputFile& file, int64_t place) {
  constexpr size_t KEY_LENGTH = 16;
  const std::string bytes = bytesAt(file, place, KEY_LENGTH + 9);
  if (bytes.size() <= KEY_LENGTH) return KEY_LENGTH + 1;  // it is cut
  const auto first = static_cast<unsigned char>(bytes[KEY_LENGTH]);
  const size_t width = first < 0x80 ? 0 : first & 0x7fU;
  const std::string_view length = std::string_view(bytes).substr(KEY_LENGTH + 1, width);
  return KEY_LENGTH + 1 + width + (width == 0 ? first : bigEndian(length));
}

// Whether an element of the file's top level, from a place on, reaches past its end. Each begins at
// a multiple of `unit`; what fills one up to there may be missing at the end. What is behind the
// last whole one and too short for a header is nobody's.
bool hasLongElement(const InputFile& file, int64_t size, uint64_t unit,
                    uint64_t (*lengthAt)(const InputFile&, int64_t), uint64_t shortestHeader = 8,
                    uint64_t place = 0) {
  uint64_t left = static_cast<uint64_t>(size) - place;
  while (left >= shortestHeader) {
    const uint64_t length = lengthAt(file, size - static_cast<int64_t>(left));
    if (length == 0) return false;
    if (length > left) return true;
    left -= std::min(length + length % unit, left);
  }
  return false;
}

// The last four bytes of FLV are the length of the tag before them, which says it as well.
bool endsBehindTag(const InputFile& file, int64_t size) {
  constexpr int64_t TAG_HEADER = 11;
  const auto length = static_cast<int64_t>(bigEndian(tailOf(file, size, 4)));
  if (length + 4 > size) return false;
  const std::string tag = bytesAt(file, size - 4 - length, 4);
  return static_cast<int64_t>(bigEndian(tag) & 0xffffff) + TAG_HEADER == length;
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

// Whether the header of an ASF file names a length that the file does not have. One that was
// broadcast has none.
bool isShorterThanASFSays(const InputFile& file, int64_t size) {
  constexpr int64_t LONGEST_HEADER = 1 << 16;
  constexpr std::string_view FILE_PROPERTIES(
      "\xa1\xdc\xab\x8c\x47\xa9\xcf\x11\x8e\xe4\0\xc0\x0c\x20\x53\x65", 16);
  constexpr size_t LENGTH = 40;  // places in this object
  constexpr size_t FLAGS = 88;
  constexpr size_t OBJECT = 104;
  const std::string header = bytesAt(file, 0, LONGEST_HEADER);
  const size_t place = header.find(FILE_PROPERTIES);
  if (place == std::string::npos || place + OBJECT > header.size()) return false;
  const bool isBroadcast = (header[place + FLAGS] & 1) != 0;
  return !isBroadcast &&
         littleEndian(header.substr(place + LENGTH, 8)) > static_cast<uint64_t>(size);
}

// Whether the last partition of an MXF file (SMPTE 377) is not all there. The first one says where
// it begins, or 0.
bool lacksFooter(const InputFile& file, int64_t size) {
  constexpr int64_t LENGTH = 16;  // places in the first one
  constexpr int64_t FOOTER = 24;  // behind the length
  const std::string length = bytesAt(file, LENGTH, 1);
  const bool isLong = !length.empty() && (length[0] & 0x80) != 0;
  const int64_t value = LENGTH + 1 + (isLong ? length[0] & 0x7f : 0);
  const uint64_t footer = bigEndian(bytesAt(file, value + FOOTER, 8));
  if (footer >= static_cast<uint64_t>(size)) return true;
  return footer > 0 && hasLongElement(file, size, 1, keyedLength, 1, footer);
}

constexpr std::string_view JPEG_END("\xff\xd9");

// Whether no end of the picture follows the beginning of its data in a JPEG file. Cameras write
// more behind that, films even.
bool lacksEndOfPicture(const InputFile& file, int64_t size) {
  constexpr std::string_view START("\xff\xd8");
  constexpr char PICTURE_DATA = '\xda';
  constexpr int64_t CHUNK = 1 << 16;
  if (bytesAt(file, 0, 2) != START) return false;
  int64_t place = 2;
  for (char marker = 0; marker != PICTURE_DATA;) {
    const std::string segment = bytesAt(file, place, 4);
    if (segment.size() < 4) return true;
    if (segment[0] != '\xff') return false;  // it is no JPEG
    marker = segment[1];
    place += 2 + static_cast<int64_t>(bigEndian(std::string_view(segment).substr(2)));
  }
  // The next one begins with the last byte of this one.
  for (; place < size; place += CHUNK) {
    if (bytesAt(file, place, CHUNK + 1).find(JPEG_END) != std::string::npos) return false;
  }
  return true;
}

// The same of the last picture of a stream of them.
bool lacksEndOfLastPicture(const InputFile& file, int64_t size) {
  constexpr int64_t LONGEST_PICTURE = 1 << 24;  // bytes; of a longer one nothing is said
  constexpr std::string_view START("\xff\xd8\xff");
  const std::string tail = tailOf(file, size, LONGEST_PICTURE);
  const size_t start = tail.rfind(START);
  return start != std::string::npos && tail.find(JPEG_END, start) == std::string::npos;
}

// Of DV a frame has 10 sequences of 12000 bytes, or 12 where the eighth bit of the fourth byte says
// that there are 50 fields a second.
bool endsInsideFrame(const InputFile& file, int64_t size) {
  constexpr int64_t SEQUENCE = 12000;
  const std::string header = bytesAt(file, 0, 4);
  if (header.size() < 4) return true;
  const bool has50Fields = (header[3] & 0x80) != 0;
  return size % (SEQUENCE * (has50Fields ? 12 : 10)) != 0;
}

}  // namespace

bool lacksEnding(const InputFile& file, const std::string& container) {
  const int64_t size = file.isRegular ? fileSize(file) : 0;  // what came through a pipe is gone
  if (size <= 0) return false;
  if (container == "mov,mp4,m4a,3gp,3g2,mj2") return hasLongElement(file, size, 1, boxLength);
  if (container == "avi") return hasLongElement(file, size, 2, chunkLength);
  if (container == "matroska,webm") return hasLongElement(file, size, 1, elementLength);
  if (container == "flv") return !endsBehindTag(file, size);
  if (container == "gif") return tailOf(file, size, 2) != GIF_ENDING;
  if (container == "ogg") return !closesStream(tailOf(file, size, OGG_LONGEST_PAGE));
  if (container == "roq") return hasLongElement(file, size, 1, roqLength);
  if (container == "obu") return hasLongElement(file, size, 1, unitLength, 1);
  if (container == "asf") return isShorterThanASFSays(file, size);
  if (container == "mxf") return lacksFooter(file, size);
  if (container == "dv") return endsInsideFrame(file, size);
  if (container == "mjpeg") return lacksEndOfLastPicture(file, size);
  if (container == "jpeg_pipe") return lacksEndOfPicture(file, size);
  if (container != "mpegts") return false;
  return std::none_of(TRANSPORT_PACKETS.begin(), TRANSPORT_PACKETS.end(),
                      [&](int packet) { return size % packet == 0; });
}
