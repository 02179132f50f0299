// Assertions on the sizes of images, active in every build.
#ifndef LUMAPROBE_ASSERTION_H
#define LUMAPROBE_ASSERTION_H

#include <cstdint>

// Flushes all open output streams, so that every row written so far is kept, then reports in the
// form of the C library's assert and aborts.
[[noreturn]] void assertionFailed(const char* expression, const char* module, uint32_t line,
                                  const char* function);

// `text`, `module` and `line` name the assertion to the user. They are written out, rather than
// taken from the code, so that they stay the same when the code moves and reports of different
// versions can be compared. Only the two conversions in plain/images.cpp give the line they stand
// in.
#define ASSERT_AT(condition, text, module, line) \
  ((condition) ? void(0) : assertionFailed(text, module, line, __func__))

#endif
