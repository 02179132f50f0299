#include "scan/files/inputFile.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>

namespace {

std::shared_ptr<InputFile> described(int descriptor) {
  auto file = std::make_shared<InputFile>();
  file->descriptor = descriptor;
  struct stat facts = {};
  const bool isKnown = descriptor >= 0 && fstat(descriptor, &facts) == 0;
  if (!isKnown) {
    file->error = std::strerror(errno);
  } else if (S_ISDIR(facts.st_mode)) {
    file->error = std::strerror(EISDIR);
  }
  file->isRegular = isKnown && S_ISREG(facts.st_mode);
  return file;
}

}  // namespace

InputFile::~InputFile() {
  if (descriptor >= 0) close(descriptor);
}

OpenInput openInput(const std::string& path) {
  return described(open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY));
}

OpenInput openStandardInput() {
  const auto file = described(fcntl(STDIN_FILENO, F_DUPFD_CLOEXEC, STDERR_FILENO + 1));
  file->isRegular = false;  // it may begin in the middle of a file
  return file;
}

ssize_t readAt(const InputFile& file, int64_t place, void* bytes, size_t size) {
  size_t filled = 0;
  while (filled < size) {
    const ssize_t count = pread(file.descriptor, static_cast<char*>(bytes) + filled, size - filled,
                                place + static_cast<int64_t>(filled));
    if (count < 0 && errno == EINTR) continue;
    if (count < 0 && filled == 0) return -1;
    if (count <= 0) break;
    filled += static_cast<size_t>(count);
  }
  return static_cast<ssize_t>(filled);
}

ssize_t readNext(const InputFile& file, void* bytes, size_t size,
                 const std::function<bool(double silence)>& mayWait) {
  constexpr int TICK = 100;  // milliseconds
  for (int ticks = 0;;) {
    if (!mayWait(ticks * TICK / 1000.0)) {
      errno = ECANCELED;
      return -1;
    }
    // One that nobody has written to yet would be at its end otherwise.
    pollfd waiting = {file.descriptor, POLLIN, 0};
    const int ready = poll(&waiting, 1, TICK);
    if (ready < 0 && errno != EINTR) return -1;
    if (ready == 0) ++ticks;
    if (ready <= 0) continue;
    const ssize_t count = read(file.descriptor, bytes, size);
    if (count >= 0 || (errno != EINTR && errno != EAGAIN)) return count;
  }
}

int64_t fileSize(const InputFile& file) {
  struct stat facts = {};
  return fstat(file.descriptor, &facts) == 0 ? static_cast<int64_t>(facts.st_size) : -1;
}
