#include "scanRun.h"

#include <sys/stat.h>

#include <algorithm>
#include <chrono>
#include <filesystem>
#include <fstream>
#include <thread>

namespace fs = std::filesystem;

ProgramRun lumascan(const TemporaryDirectory& directory, const Arguments& arguments,
                    const std::string& standardInput, const std::function<void()>& prepare) {
  const std::string in =
      standardInput[0] == '/' ? standardInput : directory.path + "/" + standardInput;
  return runProgram(LUMASCAN_BINARY, arguments, directory.path, in, prepare);
}

Json readJson(const TemporaryDirectory& directory, const std::string& path) {
  return Json::parse(readFile(directory.path + "/" + path));
}

Json resultOf(const TemporaryDirectory& directory, const std::string& video) {
  return readJson(directory, "lumascan-results/" + video + ".lumascan/result.json");
}

std::vector<std::string> linesOf(const std::string& text) {
  std::vector<std::string> lines;
  for (size_t start = 0; start < text.size();) {
    const size_t end = std::min(text.find('\n', start), text.size() - 1) + 1;
    lines.push_back(text.substr(start, end - start));
    start = end;
  }
  return lines;
}

void makeVideo(const TemporaryDirectory& directory, const std::string& name) {
  makeClip(directory, name,
           {"-vf", "noise=alls=10", "-frames:v", "19", "-c:v", "libx264", "-preset", "ultrafast",
            "-g", "8", "-pix_fmt", "yuv420p", "-movflags", "faststart", "-f", "mp4"},
           "testsrc2=size=320x272:rate=25:duration=1");
}

void makeFifo(const TemporaryDirectory& directory, const std::string& name) {
  ASSERT_EQ(mkfifo((directory.path + "/" + name).c_str(), 0600), 0);
}

std::vector<pid_t> childrenOf(pid_t process) {
  const std::string number = std::to_string(process);
  std::ifstream list("/proc/" + number + "/task/" + number + "/children");
  std::vector<pid_t> children;
  for (pid_t child = 0; list >> child;) children.push_back(child);
  return children;
}

std::vector<pid_t> waitForChildren(pid_t process, size_t count) {
  std::vector<pid_t> children;
  for (int i = 0; i < 200 && children.size() != count; ++i) {
    std::this_thread::sleep_for(std::chrono::milliseconds(100));
    children = childrenOf(process);
  }
  EXPECT_EQ(children.size(), count);
  return children;
}

bool isAlive(pid_t process) {
  std::ifstream status("/proc/" + std::to_string(process) + "/stat");
  std::string number;
  std::string name;
  std::string state;
  return static_cast<bool>(status >> number >> name >> state) && state != "Z" && state != "X";
}

std::vector<std::pair<std::string, std::string>> filesBelow(const std::string& folder) {
  std::vector<std::pair<std::string, std::string>> files;
  for (const auto& entry : fs::recursive_directory_iterator(folder)) {
    if (!entry.is_regular_file() || entry.path().filename() == "run.json") continue;
    files.emplace_back(entry.path().lexically_relative(folder).string(),
                       readFile(entry.path().string()));
  }
  std::sort(files.begin(), files.end());
  return files;
}
