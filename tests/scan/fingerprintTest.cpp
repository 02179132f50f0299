// Fingerprints of files that change here and there.
#include "scan/files/fingerprint.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <string>

#include "openFiles.h"
#include "support/runProgram.h"

namespace {

constexpr size_t PIECE = 65536;  // bytes at either end that the checksum covers

Fingerprint fingerprintOf(const std::string& path) {
  Fingerprint fingerprint;
  EXPECT_TRUE(takeFingerprint(*openInput(path), &fingerprint)) << path;
  return fingerprint;
}

std::string checksumOf(const std::string& bytes) {
  const TemporaryDirectory directory;
  writeFile(directory.path + "/file", bytes);
  return fingerprintOf(directory.path + "/file").checksum;
}

std::string changedAt(std::string bytes, size_t place) {
  bytes[place] = static_cast<char>(bytes[place] ^ 1);
  return bytes;
}

}  // namespace

TEST(Fingerprint, hasTheSizeAndTheTimeInNanoseconds) {
  const TemporaryDirectory directory;
  const std::string path = directory.path + "/file";
  writeFile(path, std::string(1234, 'x'));
  const timespec times[2] = {{0, 0}, {1700000000, 123456789}};
  ASSERT_EQ(utimensat(AT_FDCWD, path.c_str(), times, 0), 0);
  const Fingerprint fingerprint = fingerprintOf(path);
  EXPECT_EQ(fingerprint.size, 1234);
  EXPECT_EQ(fingerprint.modificationTime, 1700000000123456789);
}

TEST(Fingerprint, isTheCRC32OfTheFirstAndTheLastPiece) {
  // A file that is shorter than a piece is both, one after the other: eighteen digits, for which
  // "gzip -lv" says the same.
  EXPECT_EQ(checksumOf("123456789"), "4b837ae4");
  // Of nothing it is 0; eight digits all the same.
  EXPECT_EQ(checksumOf(""), "00000000");
}

TEST(Fingerprint, seesAChangeInTheFirstAndTheLastPieceAlone) {
  const std::string bytes(3 * PIECE, 'x');
  const std::string before = checksumOf(bytes);
  EXPECT_NE(checksumOf(changedAt(bytes, 0)), before);
  EXPECT_NE(checksumOf(changedAt(bytes, PIECE - 1)), before);
  EXPECT_EQ(checksumOf(changedAt(bytes, PIECE)), before);
  EXPECT_EQ(checksumOf(changedAt(bytes, 2 * PIECE - 1)), before);
  EXPECT_NE(checksumOf(changedAt(bytes, 2 * PIECE)), before);
  EXPECT_NE(checksumOf(changedAt(bytes, 3 * PIECE - 1)), before);
}

TEST(Fingerprint, seesAnyChangeOfAFileNoLongerThanTwoPieces) {
  for (const size_t size : {size_t{1}, size_t{100}, PIECE, PIECE + 1, 2 * PIECE}) {
    const std::string bytes(size, 'x');
    const std::string before = checksumOf(bytes);
    for (const size_t place : {size_t{0}, size / 2, size - 1}) {
      EXPECT_NE(checksumOf(changedAt(bytes, place)), before) << size << " " << place;
    }
  }
}

TEST(Fingerprint, isAnother_whenTheFileGrows) {
  const TemporaryDirectory directory;
  const std::string path = directory.path + "/file";
  writeFile(path, std::string(3 * PIECE, 'x'));
  const Fingerprint before = fingerprintOf(path);
  writeFile(path, std::string(3 * PIECE + 1, 'x'));
  const Fingerprint after = fingerprintOf(path);
  // Both ends are as they were.
  EXPECT_EQ(after.checksum, before.checksum);
  EXPECT_EQ(after.size, before.size + 1);
}

TEST(Fingerprint, isNotTaken_ofWhatIsNoFile) {
  const TemporaryDirectory directory;
  Fingerprint fingerprint;
  const std::string pipe = directory.path + "/pipe";
  ASSERT_EQ(mkfifo(pipe.c_str(), 0600), 0);
  // Nobody writes to the pipe: a call that waited would never return.
  for (const std::string& path : {directory.path + "/missing", directory.path, pipe}) {
    EXPECT_FALSE(takeFingerprint(*openInput(path), &fingerprint)) << path;
  }
}

TEST(Fingerprint, leavesNoFileOpen_whetherItIsTakenOrNot) {
  const TemporaryDirectory directory;
  writeFile(directory.path + "/file", "any bytes");
  const size_t before = openFiles();
  fingerprintOf(directory.path + "/file");
  Fingerprint fingerprint;
  EXPECT_FALSE(
      takeFingerprint(*openInput(directory.path), &fingerprint));  // can be opened, but not read
  EXPECT_EQ(openFiles(), before);
}
