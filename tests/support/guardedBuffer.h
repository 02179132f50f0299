// Buffers that border on an unreadable page: an access past that border ends the test program.
#ifndef LUMAPROBE_TESTS_GUARDEDBUFFER_H
#define LUMAPROBE_TESTS_GUARDEDBUFFER_H

#include <cstddef>
#include <cstdint>

struct GuardedBuffer {
  uint8_t* data;  // `size` zero bytes
  size_t size;
  uint8_t* mapping;
  size_t mappingSize;
};

// The unreadable page follows the last byte. A size that is a multiple of an element's size leaves
// `data` aligned for that element.
GuardedBuffer allocBeforeGuard(size_t size);

// The unreadable page precedes the first byte.
GuardedBuffer allocAfterGuard(size_t size);

void freeGuardedBuffer(GuardedBuffer* buffer);

#endif
