#include "scan/files/outputFile.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstring>
#include <ctime>
#include <filesystem>

#include "scan/files/names.h"
#include "scan/files/temporaryName.h"

namespace {

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

// Keeps errno.
void closeFolder(OutputFile* file) {
  const int error = errno;
  close(file->folder);
  file->folder = -1;
  errno = error;
}

}  // namespace

OutputFile::~OutputFile() {
  if (stream != nullptr) discardOutput(this);
}

bool openOutput(const std::string& path, OutputFile* file) {
  const std::filesystem::path place = path;
  const std::string folder = place.has_parent_path() ? place.parent_path().string() : ".";
  file->path = path;
  file->temporaryName = temporaryName(place.filename());
  file->folder = open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
  if (file->folder < 0) return false;
  const int descriptor = openat(file->folder, file->temporaryName.c_str(),
                                O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, 0666);
  if (descriptor >= 0) file->stream = fdopen(descriptor, "w");
  if (file->stream == nullptr) closeFolder(file);
  return file->stream != nullptr;
}

bool commitOutput(OutputFile* file) {
  const std::string name = std::filesystem::path(file->path).filename();
  const char* const temporary = file->temporaryName.c_str();
  bool isGood = finish(file->stream);
  file->stream = nullptr;
  isGood = isGood && renameat(file->folder, temporary, file->folder, name.c_str()) == 0;
  const int error = errno;
  if (!isGood) unlinkat(file->folder, temporary, 0);
  errno = error;
  // A name is on the disk when its folder is.
  isGood = isGood && fsync(file->folder) == 0;
  closeFolder(file);
  return isGood;
}

void discardOutput(OutputFile* file) {
  std::fclose(file->stream);
  file->stream = nullptr;
  unlinkat(file->folder, file->temporaryName.c_str(), 0);
  closeFolder(file);
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

bool isOfWholeDisk(const std::string& error) {
  constexpr std::array CODES = {ENOSPC, EDQUOT, EROFS, EIO};
  return std::any_of(CODES.begin(), CODES.end(), [&](int code) {
    const std::string reason = std::strerror(code);
    return error.size() >= reason.size() &&
           error.compare(error.size() - reason.size(), reason.size(), reason) == 0;
  });
}

void writeText(std::string_view text, FILE* out) {
  std::fwrite(text.data(), 1, text.size(), out);
}

void removeLeftovers(const std::string& folder) {
  const std::time_t now = std::time(nullptr);
  std::error_code error;
  for (const auto& entry : std::filesystem::directory_iterator(folder, error)) {
    struct stat facts = {};
    const bool isFile = lstat(entry.path().c_str(), &facts) == 0 && S_ISREG(facts.st_mode);
    if (isFile && isLeftover(entry.path().filename(), facts.st_mtime, now))
      std::filesystem::remove(entry.path(), error);
  }
}
