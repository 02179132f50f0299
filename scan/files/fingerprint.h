// What tells whether a file is still the one that was analysed.
#ifndef LUMASCAN_FINGERPRINT_H
#define LUMASCAN_FINGERPRINT_H

#include <cstdint>
#include <string>

#include "scan/files/inputFile.h"

struct Fingerprint {
  int64_t size = 0;              // bytes
  int64_t modificationTime = 0;  // nanoseconds since 1970
  std::string checksum;  // CRC-32 of the first and the last 64 KiB, eight hexadecimal digits
};

inline bool operator==(const Fingerprint& a, const Fingerprint& b) {
  return a.size == b.size && a.modificationTime == b.modificationTime && a.checksum == b.checksum;
}

// False when it is no regular file, or cannot be read.
bool takeFingerprint(const InputFile& file, Fingerprint* fingerprint);

#endif
