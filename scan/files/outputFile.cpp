#include "scan/files/outputFile.h"

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <filesystem>

#include "scan/files/names.h"

namespace {

constexpr char TEMPORARY[] = ".part";  // the process's number follows

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
  // The stream does not keep the reason: as a rule another byte fails for the same.
  if (!isWritten && write(fileno(stream), "", 1) >= 0) errno = EIO;
  isWritten = isWritten && std::fflush(stream) == 0 && fsync(fileno(stream)) == 0;
  const int error = errno;
  const bool isClosed = std::fclose(stream) == 0;
  if (!isWritten) errno = error;
  return isWritten && isClosed;
}

}  // namespace

bool openOutput(const std::string& path, OutputFile* file) {
  file->path = path;
  file->temporaryPath = path + TEMPORARY + std::to_string(getpid());
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

std::string writeOutput(const std::string& path, const std::function<void(FILE*)>& write) {
  OutputFile file;
  bool isGood = openOutput(path, &file);
  if (isGood) {
    write(file.stream);
    isGood = commitOutput(&file);
  }
  return isGood ? "" : "cannot write \"" + printableName(path) + "\": " + std::strerror(errno);
}

void writeText(std::string_view text, FILE* out) {
  std::fwrite(text.data(), 1, text.size(), out);
}

void removeLeftovers(const std::string& folder) {
  std::error_code error;
  for (const auto& entry : std::filesystem::directory_iterator(folder, error)) {
    const std::string extension = entry.path().extension().string();
    const std::string number = extension.substr(std::min(sizeof TEMPORARY - 1, extension.size()));
    const bool isTemporary = extension.compare(0, sizeof TEMPORARY - 1, TEMPORARY) == 0 &&
                             !number.empty() &&
                             number.find_first_not_of("0123456789") == std::string::npos;
    if (isTemporary && entry.is_regular_file(error)) std::filesystem::remove(entry.path(), error);
  }
}
