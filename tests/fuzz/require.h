// What a fuzz target demands: when it does not hold, the process ends and the input is kept.
#ifndef LUMAPROBE_TESTS_REQUIRE_H
#define LUMAPROBE_TESTS_REQUIRE_H

#include <cstdio>
#include <cstdlib>
#include <string>

inline void require(bool holds, const std::string& demand) {
  if (holds) return;
  std::fprintf(stderr, "does not hold: %s\n", demand.c_str());
  std::abort();
}

#endif
