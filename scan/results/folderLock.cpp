#include "scan/results/folderLock.h"

#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <cstring>
#include <filesystem>
#include <thread>

#include "scan/files/names.h"

namespace fs = std::filesystem;

namespace {

// Waits a little: the workers of a scan that has just been killed hold its lock until they end,
// too.
bool lockDescriptor(int descriptor) {
  constexpr int ATTEMPTS = 20;
  constexpr std::chrono::milliseconds PAUSE(100);
  for (int i = 0; i < ATTEMPTS; ++i) {
    if (i > 0) std::this_thread::sleep_for(PAUSE);
    if (flock(descriptor, LOCK_EX | LOCK_NB) == 0) return true;
  }
  return false;
}

}  // namespace

int lockFolder(const std::string& folder, std::string* error) {
  const std::string name = "\"" + printableName(folder) + "\"";
  std::error_code failure;
  fs::create_directories(folder, failure);
  if (failure) {
    *error = "cannot create " + name + ": " + failure.message();
    return -1;
  }
  const int descriptor = open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
  if (descriptor < 0) {
    *error = "cannot open " + name + ": " + std::strerror(errno);
  } else if (!lockDescriptor(descriptor)) {
    *error = "another scan is writing to " + name;
    close(descriptor);
    return -1;
  }
  return descriptor;
}
