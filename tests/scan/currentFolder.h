// A folder of the test's own to work in.
#ifndef LUMASCAN_TESTS_CURRENT_FOLDER_H
#define LUMASCAN_TESTS_CURRENT_FOLDER_H

#include <filesystem>

#include "support/runProgram.h"

// A folder that is the current one as long as the record lives.
struct CurrentFolder {
  CurrentFolder() { std::filesystem::current_path(directory.path); }
  ~CurrentFolder() { std::filesystem::current_path("/"); }
  CurrentFolder(const CurrentFolder&) = delete;
  CurrentFolder& operator=(const CurrentFolder&) = delete;

  const TemporaryDirectory directory;
};

#endif
