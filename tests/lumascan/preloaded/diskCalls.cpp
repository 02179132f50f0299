// Stands between a program and its disk when it is started with this library in LD_PRELOAD.
// Environment variables say what for:
//
//   DISK_LOG=FILE          a line in this file for each step that brings something to the disk,
//   with
//                          tabs between the fields: "fsync", bytes, path or "rename", bytes, path,
//                          new path. Bytes are what a file has at that moment, 0 for a folder
//   DISK_ERROR=BYTE:PART   of files whose path has this part nothing can be read from this byte on
//   DISK_FULL=PART         files whose path has this part cannot be brought to the disk, which is
//   full
#include <dlfcn.h>
#include <fcntl.h>
#include <limits.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>

namespace {

// The function that this library stands in front of.
template <typename Function>
Function* original(const char* name) {
  return reinterpret_cast<Function*>(dlsym(RTLD_NEXT, name));
}

std::string pathOf(int descriptor) {
  char path[PATH_MAX];
  const std::string link = "/proc/self/fd/" + std::to_string(descriptor);
  const ssize_t length = readlink(link.c_str(), path, sizeof path);
  return {path, static_cast<size_t>(std::max(ssize_t{0}, length))};
}

// A line's beginning: what is done, and with how many bytes.
std::string stepOn(const char* step, const struct stat& file) {
  return step + ('\t' + std::to_string(S_ISDIR(file.st_mode) ? 0 : file.st_size)) + '\t';
}

void note(const std::string& line) {
  const char* const path = getenv("DISK_LOG");
  if (path == nullptr) return;
  const int log = open(path, O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, 0666);
  if (write(log, line.data(), line.size()) < 0) abort();
  close(log);
}

// How many of `size` bytes of a file at a place can be read.
size_t readableBytes(int descriptor, off_t place, size_t size) {
  const char* const setting = getenv("DISK_ERROR");
  if (setting == nullptr) return size;
  const char* const part = strchr(setting, ':') + 1;
  if (pathOf(descriptor).find(part) == std::string::npos) return size;
  const off_t ahead = atoll(setting) - place;
  return ahead <= 0 ? 0 : std::min(size, static_cast<size_t>(ahead));
}

}  // namespace

extern "C" {

int fsync(int descriptor) {
  struct stat file = {};
  fstat(descriptor, &file);
  note(stepOn("fsync", file) + pathOf(descriptor) + '\n');
  const char* const part = getenv("DISK_FULL");
  if (part != nullptr && pathOf(descriptor).find(part) != std::string::npos) {
    errno = ENOSPC;
    return -1;
  }
  return original<decltype(fsync)>("fsync")(descriptor);
}

int renameat(int fromFolder, const char* from, int toFolder, const char* to) noexcept {
  struct stat file = {};
  fstatat(fromFolder, from, &file, 0);
  note(stepOn("rename", file) + pathOf(fromFolder) + '/' + from + '\t' + pathOf(toFolder) + '/' +
       to + '\n');
  return original<int(int, const char*, int, const char*)>("renameat")(fromFolder, from, toFolder,
                                                                       to);
}

ssize_t read(int descriptor, void* bytes, size_t size) {
  const size_t readable = readableBytes(descriptor, lseek(descriptor, 0, SEEK_CUR), size);
  if (readable == 0 && size > 0) {
    errno = EIO;
    return -1;
  }
  return original<decltype(read)>("read")(descriptor, bytes, readable);
}

// By the name that it has where places have 64 bits.
ssize_t pread(int descriptor, void* bytes, size_t size, off_t place) {
  const size_t readable = readableBytes(descriptor, place, size);
  if (readable == 0 && size > 0) {
    errno = EIO;
    return -1;
  }
  return original<decltype(pread)>("pread64")(descriptor, bytes, readable, place);
}
}
