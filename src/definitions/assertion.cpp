#include "definitions/assertion.h"

#include <errno.h>  // program_invocation_short_name

#include <cstdio>
#include <cstdlib>

void assertionFailed(const char* expression, const char* module, uint32_t line,
                     const char* function) {
  std::fflush(nullptr);
  std::fprintf(stderr, "%s: %s:%u: %s: Assertion `%s' failed.\n", program_invocation_short_name,
               module, line, function, expression);
  std::abort();
}
