// A file that is read: opened once, so that all who read it read the same one, whatever becomes of
// its name.
#ifndef LUMASCAN_INPUT_FILE_H
#define LUMASCAN_INPUT_FILE_H

#include <sys/types.h>

#include <cstdint>
#include <functional>
#include <memory>
#include <string>

struct InputFile {
  InputFile() = default;
  ~InputFile();
  InputFile(const InputFile&) = delete;
  InputFile& operator=(const InputFile&) = delete;

  int descriptor = -1;     // -1: it could not be opened
  std::string error;       // why
  bool isRegular = false;  // it has a size and places; of a pipe or a device bytes come once
};

using OpenInput = std::shared_ptr<const InputFile>;

// Opens a file. Of a pipe that nobody writes to yet, without waiting for it.
OpenInput openInput(const std::string& path);

OpenInput openStandardInput();

// Bytes of a regular file from a place on: as many as asked for, or up to its end. Negative, with
// errno set, when it cannot be read.
ssize_t readAt(const InputFile& file, int64_t place, void* bytes, size_t size);

// The next bytes of a pipe or a device, at least one unless it has ended. Waits for them while it
// may: that is asked several times a second, with the seconds so far; errno is ECANCELED behind it.
// Seconds in which the process is stopped do not count.
ssize_t readNext(const InputFile& file, void* bytes, size_t size,
                 const std::function<bool(double silence)>& mayWait);

// Bytes; negative when it is not known.
int64_t fileSize(const InputFile& file);

#endif
