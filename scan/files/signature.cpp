#include "scan/files/signature.h"

#include <algorithm>
#include <array>
#include <string_view>

#include "scan/files/inputFile.h"

namespace {

using namespace std::string_view_literals;

struct Signature {
  size_t place;
  std::string_view bytes;
};

constexpr Signature SIGNATURES[] = {
    {0, "\x30\x26\xb2\x75\x8e\x66\xcf\x11\xa6\xd9\x00\xaa\x00\x62\xce\x6c"sv},  // ASF
    {8, "AVI "sv},
    {0, "FLV\x01"sv},
    {0, "\0\0\0\0\x01\xbc"sv},  // GXF
    {0, "DKIF\0\0"sv},          // IVF
    {0, "\x1a\x45\xdf\xa3"sv},  // Matroska
    {4, "ftyp"sv},              // MP4 and QuickTime, by the first box
    {4, "moov"sv},
    {4, "mdat"sv},
    {4, "wide"sv},
    {4, "free"sv},
    {4, "skip"sv},
    {4, "pnot"sv},
    {0, "\0\0\x01\xba"sv},                                              // MPEG program stream
    {0, "\x06\x0e\x2b\x34\x02\x05\x01\x01\x0d\x01\x02\x01\x01\x02"sv},  // MXF
    {0, "nut/multimedia container\0"sv},
    {0, "OggS\0"sv},
    {0, ".RMF\0\0"sv},
    {0, "YUV4MPEG2 "sv},
};
constexpr size_t LOOKED_AT = 2048;  // bytes

// Packets one behind the other, each of which begins with the same byte: as broadcast, with a time
// stamp in front, with error correction behind.
bool isTransportStream(std::string_view bytes) {
  constexpr char SYNC = 0x47;
  constexpr size_t ENOUGH = 5;  // packets
  struct Packets {
    size_t start;
    size_t length;
  };
  constexpr std::array KINDS = {Packets{0, 188}, Packets{4, 192}, Packets{0, 204}};
  return std::any_of(KINDS.begin(), KINDS.end(), [&](const Packets& kind) {
    const size_t last = kind.start + (ENOUGH - 1) * kind.length;
    if (last >= bytes.size()) return false;
    for (size_t place = kind.start; place <= last; place += kind.length) {
      if (bytes[place] != SYNC) return false;
    }
    return true;
  });
}

}  // namespace

bool hasVideoSignature(const std::string& path) {
  const OpenInput file = openInput(path);
  if (!file->isRegular) return false;
  std::array<char, LOOKED_AT> buffer = {};
  const ssize_t count = readAt(*file, 0, buffer.data(), buffer.size());
  const std::string_view bytes(buffer.data(), static_cast<size_t>(std::max(ssize_t{0}, count)));
  const bool isKnown =
      std::any_of(std::begin(SIGNATURES), std::end(SIGNATURES), [&](const Signature& signature) {
        return bytes.size() >= signature.place &&
               bytes.substr(signature.place, signature.bytes.size()) == signature.bytes;
      });
  return isKnown || isTransportStream(bytes);
}
