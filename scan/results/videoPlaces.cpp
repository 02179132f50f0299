#include "scan/results/videoPlaces.h"

#include <algorithm>
#include <filesystem>
#include <fstream>

#include "scan/files/json.h"
#include "scan/files/names.h"

namespace fs = std::filesystem;

std::vector<std::string> scanFolders(const std::string& results) {
  std::vector<std::string> folders = {fs::current_path().string()};
  const fs::path path = fs::path(results) / "run.json";
  std::error_code ignored;
  if (!fs::is_regular_file(path, ignored)) return folders;
  std::ifstream file(path);
  const Json run = Json::parse(file, nullptr, false);
  for (const std::string& uri : textsOf(run, "folders")) {
    const std::string folder = pathOfUri(uri);
    if (std::find(folders.begin(), folders.end(), folder) == folders.end())
      folders.push_back(folder);
  }
  return folders;
}

bool isOfPipe(const InputFacts& input) {
  return input.path == "-";
}

bool isVideoGone(const InputFacts& input, const std::vector<std::string>& folders) {
  if (isOfPipe(input) || input.pathUri.empty()) return false;
  const std::string path = pathOfUri(input.pathUri);
  return std::all_of(folders.begin(), folders.end(), [&](const std::string& folder) {
    std::error_code ignored;
    return fs::status(fs::path(folder) / path, ignored).type() == fs::file_type::not_found;
  });
}
