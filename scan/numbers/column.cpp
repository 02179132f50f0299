#include "scan/numbers/column.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <string>
#include <system_error>

namespace {

std::string folder() {
  const char* const named = std::getenv("TMPDIR");
  return named != nullptr && *named != '\0' ? named : "/var/tmp";
}

[[noreturn]] void fail(int error) {
  throw std::system_error(error, std::generic_category(),
                          "cannot keep values in a temporary file in \"" + folder() + "\"");
}

int makeFile() {
  std::string path = folder() + "/lumascanXXXXXX";
  const int file = mkostemp(path.data(), O_CLOEXEC);
  if (file < 0) fail(errno);
  unlink(path.c_str());
  return file;
}

// Moves a piece in as many steps as it takes. step(done): bytes that one step has moved; 0: no
// more.
template <typename Step>
void moveAll(const Step& step) {
  for (size_t done = 0; done < PieceFile::PIECE;) {
    const ssize_t count = step(done);
    if (count < 0 && errno == EINTR) continue;
    if (count <= 0) fail(count < 0 ? errno : EIO);
    done += static_cast<size_t>(count);
  }
}

}  // namespace

PieceFile& PieceFile::operator=(PieceFile&& other) noexcept {
  std::swap(file_, other.file_);
  return *this;
}

PieceFile::~PieceFile() {
  if (file_ >= 0) close(file_);
}

void PieceFile::write(size_t number, const void* piece) {
  if (file_ < 0) file_ = makeFile();
  moveAll([&](size_t done) {
    return pwrite(file_, static_cast<const char*>(piece) + done, PIECE - done,
                  static_cast<off_t>(number * PIECE + done));
  });
}

void PieceFile::read(size_t number, void* piece) const {
  moveAll([&](size_t done) {
    return pread(file_, static_cast<char*>(piece) + done, PIECE - done,
                 static_cast<off_t>(number * PIECE + done));
  });
}
