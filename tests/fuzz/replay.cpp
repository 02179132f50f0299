// Gives a fuzz target every file of the folders and files named on the command line, in the order
// of their names.
#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <string>
#include <vector>

#include "support/runProgram.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size);

namespace {

std::vector<std::string> filesOf(const std::string& path) {
  if (!std::filesystem::is_directory(path)) return {path};
  std::vector<std::string> files;
  for (const auto& entry : std::filesystem::directory_iterator(path)) {
    files.push_back(entry.path().string());
  }
  std::sort(files.begin(), files.end());
  return files;
}

}  // namespace

int main(int argc, char** argv) {
  size_t inputs = 0;
  for (int i = 1; i < argc; ++i) {
    const std::vector<std::string> files = filesOf(argv[i]);
    for (const std::string& file : files) {
      std::fprintf(stderr, "%s\n", file.c_str());
      const std::string bytes = readFile(file);
      // Exactly as many bytes as there are, so that a sanitizer sees every read beside them.
      const std::vector<uint8_t> input(bytes.begin(), bytes.end());
      LLVMFuzzerTestOneInput(input.data(), input.size());
    }
    inputs += files.size();
  }
  std::printf("%zu inputs\n", inputs);
  return inputs > 0 ? 0 : 1;
}
