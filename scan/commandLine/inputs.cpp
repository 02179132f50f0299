#include "scan/commandLine/inputs.h"

#include <fnmatch.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <map>

#include "scan/commandLine/messages.h"
#include "scan/files/names.h"
#include "scan/files/signature.h"
#include "scan/results/storedResult.h"

namespace fs = std::filesystem;

namespace {

constexpr std::array VIDEO_EXTENSIONS = {
    "264", "265",  "3g2",  "3gp",  "asf",  "avc", "avi", "dv",   "divx", "f4v", "flv",   "gif",
    "gxf", "h264", "h265", "hevc", "ivf",  "m1v", "m2t", "m2ts", "m2v",  "m4v", "mjpeg", "mjpg",
    "mkv", "mov",  "mp4",  "mpe",  "mpeg", "mpg", "mpv", "mts",  "mxf",  "nut", "obu",   "ogm",
    "ogv", "qt",   "rm",   "rmvb", "roq",  "ts",  "vob", "webm", "wmv",  "y4m"};
// Files that share a container with videos, and are none.
constexpr std::array OTHER_EXTENSIONS = {"aac", "flac", "m4a", "mka",  "mp3", "oga",
                                         "ogg", "opus", "wav", "weba", "wma"};
template <typename Names>
bool isAmong(const std::string& name, const Names& names) {
  return std::find(names.begin(), names.end(), name) != names.end();
}

std::string extensionOf(const fs::path& path) {
  std::string extension = path.extension().string();
  if (!extension.empty()) extension.erase(0, 1);
  for (char& c : extension) c = static_cast<char>(c >= 'A' && c <= 'Z' ? c - 'A' + 'a' : c);
  return extension;
}

bool isVideo(const fs::path& path, bool isRaw) {
  const std::string extension = extensionOf(path);
  if (isRaw && extension == "yuv") return true;
  if (isAmong(extension, VIDEO_EXTENSIONS)) return true;
  return !isAmong(extension, OTHER_EXTENSIONS) && hasVideoSignature(path.string());
}

bool matches(const std::vector<std::string>& patterns, const fs::path& path, int flags) {
  return std::any_of(patterns.begin(), patterns.end(), [&](const std::string& pattern) {
    return fnmatch(pattern.c_str(), path.c_str(), flags) == 0 ||
           fnmatch(pattern.c_str(), path.filename().c_str(), flags) == 0;
  });
}

// Such files are no videos, though macOS calls companions of videos "._film.mp4".
bool isHidden(const fs::path& path) {
  return path.filename().native()[0] == '.';
}

// Patterns that ask for files ask for them whatever they are called, but for a hidden one only
// where they begin with its period.
bool isWanted(const Options& options, const fs::path& path) {
  if (matches(options.exclude, path, 0)) return false;
  if (!options.include.empty())
    return matches(options.include, path, isHidden(path) ? FNM_PERIOD | FNM_PATHNAME : 0);
  return !isHidden(path) && isVideo(path, options.raw.rawWidth > 0);
}

bool isResultFolder(const fs::path& folder, const fs::path& output) {
  std::error_code error;
  return folder.extension() == ".lumascan" || fs::equivalent(folder, output, error);
}

std::string refusal(const fs::path& path, const std::string& reason) {
  return "cannot open \"" + printableName(path.string()) + "\": " + reason;
}

void addFolder(const Options& options, const fs::path& folder, std::vector<std::string>* files,
               std::vector<std::string>* problems) {
  std::vector<std::string> found;
  int hidden = 0;
  std::error_code error;
  fs::recursive_directory_iterator walk(folder, error);
  while (!error && walk != fs::recursive_directory_iterator()) {
    std::error_code ignored;
    const fs::path path = walk->path();
    if (walk->is_directory(ignored)) {
      std::error_code closed;
      const bool isEntered =
          !walk->is_symlink(ignored) && !isHidden(path) && !isResultFolder(path, options.output);
      // The walk itself would end at a folder that may not be entered: it is said, and passed over.
      if (isEntered) fs::directory_iterator(path, closed);
      if (closed) problems->push_back(refusal(path, closed.message()));
      if (closed || !isEntered) walk.disable_recursion_pending();
    } else if (walk->is_regular_file(ignored) && isWanted(options, path)) {
      found.push_back(path.string());
    } else if (isHidden(path)) {
      ++hidden;
    }
    walk.increment(error);
    if (error) {
      problems->push_back(refusal(path, error.message()));
      error.clear();
      break;
    }
  }
  if (error) problems->push_back(refusal(folder, error.message()));
  if (options.isVerbose && hidden > 0)
    complain("hidden files left out of " + quoted(folder.string()) + ": " + std::to_string(hidden));
  if (found.empty() && !error) {
    problems->push_back("there is no video in \"" + printableName(folder.string()) + "\"");
  }
  // Of the current folder, names without "./" in front.
  for (std::string& path : found) path = fs::path(path).lexically_normal().string();
  // Numbers in names by their values: 2 comes before 10.
  std::sort(found.begin(), found.end(), [](const std::string& a, const std::string& b) {
    return strverscmp(a.c_str(), b.c_str()) < 0;
  });
  files->insert(files->end(), found.begin(), found.end());
}

// The names in a list, ended by zero bytes where there are any and by line feeds otherwise, or CR
// LF.
std::vector<std::string> readList(const std::string& path, std::vector<std::string>* problems) {
  std::ifstream file(path, std::ios::binary);
  std::istream& in = path == "-" ? std::cin : file;
  if (!in) problems->push_back(refusal(path, std::strerror(errno)));
  std::string text;
  for (char c = 0; in.get(c);) text += c;
  if (in.bad()) problems->push_back(refusal(path, std::strerror(errno)));
  const char separator = text.find('\0') == std::string::npos ? '\n' : '\0';
  std::vector<std::string> names;
  for (size_t start = 0; start < text.size();) {
    const size_t end = std::min(text.find(separator, start), text.size());
    std::string name = text.substr(start, end - start);
    if (separator == '\n' && !name.empty() && name.back() == '\r') name.pop_back();
    if (!name.empty()) names.push_back(name);
    start = end + 1;
  }
  return names;
}

// Without those that come again. Another file whose results would go to the same folder is left
// out, and that is said.
std::vector<VideoSource> eachOnce(const std::vector<VideoSource>& sources,
                                  std::vector<std::string>* problems) {
  std::map<std::string, std::string> places;  // where a folder's results come from
  std::vector<VideoSource> once;
  for (const VideoSource& source : sources) {
    const std::string folder = resultFolder("", source);
    const std::string place =
        source.isStandardInput ? "-" : fs::absolute(source.path).lexically_normal().string();
    const auto known = places.emplace(folder, place);
    if (known.second) {
      once.push_back(source);
    } else if (known.first->second != place) {
      problems->push_back("the results of \"" + printableName(source.path) +
                          "\" would go where those of \"" + printableName(known.first->second) +
                          "\" go");
    }
  }
  return once;
}

// The videos that a name stands for: a file, or those of a folder.
void addInput(const Options& options, const std::string& name, std::vector<std::string>* files,
              std::vector<std::string>* problems) {
  std::error_code error;
  const fs::file_status status = fs::status(name, error);
  if (fs::is_directory(status)) {
    addFolder(options, name, files, problems);
  } else if (!fs::exists(status)) {
    const bool isAddress = name.find("://") != std::string::npos;
    problems->push_back(refusal(name, isAddress ? "it is an address, and only files are read"
                                      : error   ? error.message()
                                                : std::strerror(ENOENT)));
  } else {
    files->push_back(name);
  }
}

}  // namespace

std::vector<VideoSource> findInputs(const Options& options, std::vector<std::string>* problems) {
  std::vector<VideoSource> sources;
  const auto add = [&](const std::string& path, bool isStandardInput) {
    VideoSource source = options.raw;
    // So that nobody takes a file of that name for standard input.
    source.path = path == "-" && !isStandardInput ? "./-" : path;
    source.isStandardInput = isStandardInput;
    sources.push_back(source);
  };
  const auto addNamed = [&](const std::string& name) {
    std::vector<std::string> files;
    addInput(options, name, &files, problems);
    for (const std::string& file : files) add(file, false);
  };
  for (const std::string& input : options.inputs) {
    if (input == "-") {
      add(input, true);
    } else {
      addNamed(input);
    }
  }
  if (!options.filesFrom.empty()) {
    for (const std::string& name : readList(options.filesFrom, problems)) addNamed(name);
  }
  return eachOnce(sources, problems);
}
