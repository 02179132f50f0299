// Maps whole pages between two unreadable ones and hands out their beginning or their end.
#include "support/guardedBuffer.h"

#include <sys/mman.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>

static size_t pageSize() {
  return static_cast<size_t>(sysconf(_SC_PAGESIZE));
}

// The buffer starts at the first readable page.
GuardedBuffer allocAfterGuard(size_t size) {
  const size_t page = pageSize();
  const size_t readable = (size + page - 1) / page * page;
  const size_t mappingSize = readable + 2 * page;
  void* mapping = mmap(nullptr, mappingSize, PROT_NONE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
  if (mapping == MAP_FAILED) {
    perror("mmap");
    abort();
  }
  uint8_t* start = static_cast<uint8_t*>(mapping) + page;
  if (readable > 0 && mprotect(start, readable, PROT_READ | PROT_WRITE) != 0) {
    perror("mprotect");
    abort();
  }
  return {start, size, static_cast<uint8_t*>(mapping), mappingSize};
}

GuardedBuffer allocBeforeGuard(size_t size) {
  GuardedBuffer buffer = allocAfterGuard(size);
  buffer.data = buffer.mapping + buffer.mappingSize - pageSize() - size;
  return buffer;
}

void freeGuardedBuffer(GuardedBuffer* buffer) {
  munmap(buffer->mapping, buffer->mappingSize);
}
