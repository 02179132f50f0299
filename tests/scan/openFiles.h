// How many files the test's own process has open.
#ifndef LUMASCAN_TESTS_OPEN_FILES_H
#define LUMASCAN_TESTS_OPEN_FILES_H

#include <cstddef>
#include <filesystem>
#include <iterator>

// One more than there are, always: the folder that is read to count them.
inline size_t openFiles() {
  const std::filesystem::directory_iterator files("/proc/self/fd");
  return static_cast<size_t>(std::distance(begin(files), end(files)));
}

#endif
