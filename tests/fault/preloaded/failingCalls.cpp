// Makes calls of the C library fail in a program that is started with this library in LD_PRELOAD.
// Environment variables say which; each fault that took place is a line in the file FAULTS_LOG.
//
//   FAULTS_READ_ERROR=BYTE:ERRNO    the input cannot be read from this byte on
//   FAULTS_READ_PIECE=BYTES         reading the input yields at most so many bytes at once
//   FAULTS_WRITE_ERROR=BYTE:ERRNO   the report cannot be written from this byte on
//   FAULTS_STREAM_ERROR=CALL        the call of ferror with this number, from 0 on, says yes
//   FAULTS_THREADS=PATTERN          one character per thread, over and over; x: it is not made
//   FAULTS_SIGNAL=CALL:SIGNAL       comes just before the call of fread with this number, from 0 on
//   FAULTS_RESIZE=CALL:BYTES        the input's file gets this size at the same moment
//
// The C library's own calls of read and write cannot be replaced. So a stream whose bytes are to
// fail is made by fopencookie, which leaves buffering, positions and errors to the C library as
// ever.
#include <dlfcn.h>
#include <fcntl.h>
#include <pthread.h>
#include <signal.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <sys/types.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>

namespace {

const char* inputName = "";

struct Setting {
  bool isSet;
  long first;
  long second;
};

Setting setting(const char* name) {
  Setting found = {};
  const char* text = getenv(name);
  if (text != nullptr) found.isSet = sscanf(text, "%ld:%ld", &found.first, &found.second) > 0;
  return found;
}

void logFault(const char* line) {
  const int log = open(getenv("FAULTS_LOG"), O_WRONLY | O_CREAT | O_APPEND, 0666);
  if (write(log, line, strlen(line)) < 0) abort();
  close(log);
}

// The function that this library stands in front of.
template <typename Function>
Function* original(const char* name) {
  return reinterpret_cast<Function*>(dlsym(RTLD_NEXT, name));
}

int descriptorOf(void* cookie) {
  return *static_cast<int*>(cookie);
}

// How many of `size` bytes at the place of `descriptor` can be had ahead of the byte that fails; -1
// with errno set when there is none.
ssize_t bytesAheadOfError(int descriptor, size_t size, const Setting& error, const char* line) {
  const ssize_t wanted = static_cast<ssize_t>(size);
  if (!error.isSet) return wanted;
  const ssize_t ahead = error.first - lseek(descriptor, 0, SEEK_CUR);
  if (ahead > 0) return std::min(wanted, ahead);
  logFault(line);
  errno = static_cast<int>(error.second);
  return -1;
}

ssize_t readCookie(void* cookie, char* bytes, size_t size) {
  const int descriptor = descriptorOf(cookie);
  const Setting piece = setting("FAULTS_READ_PIECE");
  if (piece.isSet && size > static_cast<size_t>(piece.first)) {
    size = static_cast<size_t>(piece.first);
    logFault("piece\n");
  }
  const ssize_t possible =
      bytesAheadOfError(descriptor, size, setting("FAULTS_READ_ERROR"), "read\n");
  return possible < 0 ? -1 : read(descriptor, bytes, static_cast<size_t>(possible));
}

// A cookie's writing function answers 0, never less, for an error.
ssize_t writeCookie(void* cookie, const char* bytes, size_t size) {
  const int descriptor = descriptorOf(cookie);
  const ssize_t possible =
      bytesAheadOfError(descriptor, size, setting("FAULTS_WRITE_ERROR"), "write\n");
  return possible < 0 ? 0 : write(descriptor, bytes, static_cast<size_t>(possible));
}

int seekCookie(void* cookie, off64_t* offset, int whence) {
  *offset = lseek(descriptorOf(cookie), *offset, whence);
  return *offset < 0 ? -1 : 0;
}

int closeCookie(void* cookie) {
  return close(descriptorOf(cookie));
}

// `descriptor` stays in use as long as the stream.
FILE* openCookie(const char* name, const char* mode, int flags, int* descriptor) {
  *descriptor = open(name, flags, 0666);
  if (*descriptor < 0) return nullptr;
  return fopencookie(descriptor, mode, {readCookie, writeCookie, seekCookie, closeCookie});
}

}  // namespace

extern "C" {

FILE* fopen64(const char* name, const char* mode) {
  static int input;
  static int report;
  const bool isInput = mode[0] == 'r';
  if (isInput) inputName = name;
  if (isInput && (setting("FAULTS_READ_ERROR").isSet || setting("FAULTS_READ_PIECE").isSet))
    return openCookie(name, mode, O_RDONLY, &input);
  if (!isInput && setting("FAULTS_WRITE_ERROR").isSet)
    return openCookie(name, mode, O_WRONLY | O_CREAT | O_TRUNC, &report);
  return original<decltype(fopen64)>("fopen64")(name, mode);
}

size_t fread(void* bytes, size_t size, size_t count, FILE* stream) {
  static long calls = 0;
  const Setting signal = setting("FAULTS_SIGNAL");
  const Setting resize = setting("FAULTS_RESIZE");
  if (signal.isSet && signal.first == calls) {
    logFault("signal\n");
    raise(static_cast<int>(signal.second));
  }
  if (resize.isSet && resize.first == calls) {
    logFault("resize\n");
    if (truncate(inputName, resize.second) != 0) abort();
  }
  calls++;
  return original<decltype(fread)>("fread")(bytes, size, count, stream);
}

int ferror(FILE* stream) noexcept {
  static long calls = 0;
  const Setting error = setting("FAULTS_STREAM_ERROR");
  if (error.isSet && error.first == calls++) {
    logFault("stream\n");
    return 1;
  }
  return original<int(FILE*)>("ferror")(stream);
}

int pthread_create(pthread_t* thread, const pthread_attr_t* attributes, void* (*entry)(void*),
                   void* argument) noexcept {
  static size_t calls = 0;
  const char* pattern = getenv("FAULTS_THREADS");
  if (pattern != nullptr && pattern[calls++ % strlen(pattern)] == 'x') {
    logFault("thread\n");
    return EAGAIN;
  }
  return original<int(pthread_t*, const pthread_attr_t*, void* (*)(void*), void*)>(
      "pthread_create")(thread, attributes, entry, argument);
}
}
