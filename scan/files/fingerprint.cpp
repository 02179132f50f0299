#include "scan/files/fingerprint.h"

#include <fcntl.h>
#include <fmt/core.h>
#include <sys/stat.h>
#include <unistd.h>
#include <zlib.h>

#include <algorithm>
#include <cerrno>
#include <vector>

namespace {

constexpr int64_t PIECE = 65536;  // bytes at either end

// The checksum continued by the bytes from `offset` on, as many as a piece has or the file.
bool addPiece(int file, int64_t offset, uLong* checksum) {
  std::vector<unsigned char> bytes(PIECE);
  size_t filled = 0;
  for (ssize_t count = 1; count > 0 && filled < bytes.size();) {
    count = pread(file, bytes.data() + filled, bytes.size() - filled,
                  offset + static_cast<int64_t>(filled));
    if (count < 0) return false;
    filled += static_cast<size_t>(count);
  }
  *checksum = crc32(*checksum, bytes.data(), static_cast<uInt>(filled));
  return true;
}

bool describe(int file, Fingerprint* fingerprint) {
  struct stat facts = {};
  if (fstat(file, &facts) != 0) return false;
  constexpr int64_t NANOSECONDS = 1000000000;
  fingerprint->size = facts.st_size;
  fingerprint->modificationTime = facts.st_mtim.tv_sec * NANOSECONDS + facts.st_mtim.tv_nsec;
  uLong checksum = crc32(0, nullptr, 0);
  if (!addPiece(file, 0, &checksum)) return false;
  if (!addPiece(file, std::max(int64_t{0}, fingerprint->size - PIECE), &checksum)) return false;
  fingerprint->checksum = fmt::format("{:08x}", checksum);
  return true;
}

}  // namespace

bool takeFingerprint(const std::string& path, Fingerprint* fingerprint) {
  // Opening a pipe must not wait for somebody who writes to it.
  const int file = open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK);
  if (file < 0) return false;
  const bool isGood = describe(file, fingerprint);
  const int error = errno;
  close(file);
  errno = error;
  return isGood;
}
