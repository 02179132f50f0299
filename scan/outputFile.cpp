#include "scan/outputFile.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <filesystem>

namespace {

// A name is on the disk when its folder is.
bool syncFolder(const std::string& path) {
  const std::string parent = std::filesystem::path(path).parent_path();
  const int folder =
      open(parent.empty() ? "." : parent.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
  if (folder < 0) return false;
  const bool isSynced = fsync(folder) == 0;
  const int error = errno;
  close(folder);
  errno = error;
  return isSynced;
}

// Whether everything that was written has reached the disk. Closes the stream.
bool finish(FILE* stream) {
  bool isWritten = std::ferror(stream) == 0;
  if (!isWritten) errno = EIO;
  isWritten = isWritten && std::fflush(stream) == 0 && fsync(fileno(stream)) == 0;
  const int error = errno;
  const bool isClosed = std::fclose(stream) == 0;
  if (!isWritten) errno = error;
  return isWritten && isClosed;
}

}  // namespace

bool openOutput(const std::string& path, OutputFile* file) {
  file->path = path;
  file->temporaryPath = path + ".part" + std::to_string(getpid());
  file->stream = std::fopen(file->temporaryPath.c_str(), "we");
  return file->stream != nullptr;
}

bool commitOutput(OutputFile* file) {
  const bool isWhole = finish(file->stream);
  file->stream = nullptr;
  if (isWhole && std::rename(file->temporaryPath.c_str(), file->path.c_str()) == 0) {
    return syncFolder(file->path);
  }
  const int error = errno;
  std::remove(file->temporaryPath.c_str());
  errno = error;
  return false;
}

void discardOutput(OutputFile* file) {
  std::fclose(file->stream);
  file->stream = nullptr;
  std::remove(file->temporaryPath.c_str());
}
