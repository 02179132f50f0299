#include "scan/files/fingerprint.h"

#include <fmt/core.h>
#include <sys/stat.h>
#include <zlib.h>

#include <algorithm>
#include <vector>

namespace {

constexpr int64_t PIECE = 65536;  // bytes at either end

// The checksum continued by the bytes from `place` on, as many as a piece has or the file.
bool addPiece(const InputFile& file, int64_t place, uLong* checksum) {
  std::vector<unsigned char> bytes(PIECE);
  const ssize_t count = readAt(file, place, bytes.data(), bytes.size());
  if (count < 0) return false;
  *checksum = crc32(*checksum, bytes.data(), static_cast<uInt>(count));
  return true;
}

}  // namespace

bool takeFingerprint(const InputFile& file, Fingerprint* fingerprint) {
  struct stat facts = {};
  if (!file.isRegular || fstat(file.descriptor, &facts) != 0) return false;
  constexpr int64_t NANOSECONDS = 1000000000;
  fingerprint->size = facts.st_size;
  fingerprint->modificationTime = facts.st_mtim.tv_sec * NANOSECONDS + facts.st_mtim.tv_nsec;
  uLong checksum = crc32(0, nullptr, 0);
  if (!addPiece(file, 0, &checksum)) return false;
  if (!addPiece(file, std::max(int64_t{0}, fingerprint->size - PIECE), &checksum)) return false;
  fingerprint->checksum = fmt::format("{:08x}", checksum);
  return true;
}
