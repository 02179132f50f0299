#include "scan/results/folderLock.h"

#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <filesystem>
#include <fstream>

#include "scan/files/json.h"
#include "scan/files/names.h"

namespace fs = std::filesystem;

namespace {

constexpr char LOCK[] = ".lumascan-lock";

bool isOfScan(const fs::path& run) {
  std::error_code ignored;
  if (!fs::is_regular_file(run, ignored)) return false;
  std::ifstream file(run);
  const Json json = Json::parse(file, nullptr, false);
  return textOf(memberOf(json, "tool"), "name") == "lumascan";
}

// Whether there is something in a folder, and nothing that a scan has left.
bool isForeign(const fs::path& folder) {
  std::error_code ignored;
  const bool isOwn = fs::is_regular_file(folder / LOCK, ignored) || isOfScan(folder / "run.json");
  return !isOwn && !fs::is_empty(folder, ignored);
}

// A lock of a file that is open for writing holds on network file systems, too.
int openLock(const std::string& folder) {
  const int place = open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
  if (place < 0) return -1;
  const int lock = openat(place, LOCK, O_RDWR | O_CREAT | O_NOFOLLOW | O_CLOEXEC, 0666);
  const int error = errno;
  close(place);
  errno = error;
  return lock;
}

}  // namespace

int lockFolder(const std::string& folder, bool isTakenOver, std::string* error) {
  const std::string name = "\"" + printableName(folder) + "\"";
  std::error_code failure;
  fs::create_directories(folder, failure);
  if (failure) {
    *error = "cannot create " + name + ": " + failure.message();
    return -1;
  }
  if (!isTakenOver && isForeign(folder)) {
    *error = name + " has files in it, and none of a scan: --take-over writes to it all the same";
    return -1;
  }
  const int lock = openLock(folder);
  if (lock >= 0 && flock(lock, LOCK_EX | LOCK_NB) == 0) return lock;
  *error = errno == EWOULDBLOCK ? "another scan is writing to " + name
                                : "cannot lock " + name + ": " + std::strerror(errno);
  if (lock >= 0) close(lock);
  return -1;
}
