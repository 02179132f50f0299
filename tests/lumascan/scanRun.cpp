#include "scanRun.h"

#include <fcntl.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <csignal>
#include <filesystem>
#include <fstream>
#include <stdexcept>
#include <thread>

namespace fs = std::filesystem;

namespace {

bool isReady(pid_t worker) {
  std::string name;
  std::getline(std::ifstream("/proc/" + std::to_string(worker) + "/comm"), name);
  return name == "lumascan worker";
}

}  // namespace

ProgramRun lumascan(const TemporaryDirectory& directory, const Arguments& arguments,
                    const std::string& standardInput, const std::function<void()>& prepare) {
  const std::string in =
      standardInput[0] == '/' ? standardInput : directory.path + "/" + standardInput;
  return runProgram(LUMASCAN_BINARY, arguments, directory.path, in, prepare);
}

std::function<void()> limitDescriptors(int most) {
  return [=] {
    // Those that the test hands down would count.
    if (close_range(3, ~0U, 0) != 0) _exit(126);
    const auto descriptors = static_cast<rlim_t>(most);
    const rlimit limit = {descriptors, descriptors};
    if (setrlimit(RLIMIT_NOFILE, &limit) != 0) _exit(126);
  };
}

void preload(const char* library, const char* variable, const std::string& value) {
  setenv("LD_PRELOAD", library, 1);
  // The address sanitizer wants to be the first library unless told otherwise.
  setenv("ASAN_OPTIONS", "verify_asan_link_order=0", 1);
  setenv(variable, value.c_str(), 1);
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

std::string streamedVideo(const TemporaryDirectory& directory) {
  makeClip(directory, "streamed.y4m", {"-pix_fmt", "yuv420p"});
  return readFile(directory.path + "/streamed.y4m");
}

RunningScan::RunningScan(const TemporaryDirectory& directory, const Arguments& arguments,
                         const std::function<void()>& prepare)
    : program(startProgram(LUMASCAN_BINARY, arguments, directory.path, "/dev/null", prepare)) {}

RunningScan::~RunningScan() {
  if (isOver) return;
  kill(program.process, SIGKILL);
  waitFor(program);
}

ProgramRun endOf(RunningScan* scan) {
  scan->isOver = true;
  return waitFor(scan->program);
}

std::string errorsOf(const RunningScan& scan) {
  std::string text;
  char bytes[4096];
  // The program goes on writing where it is: its place in the file is not moved.
  for (ssize_t count; (count = pread(fileno(scan.program.err), bytes, sizeof bytes,
                                     static_cast<off_t>(text.size()))) > 0;) {
    text.append(bytes, static_cast<size_t>(count));
  }
  return text;
}

void waitUntil(const RunningScan& scan, const std::string& what,
               const std::function<bool()>& isSo) {
  constexpr auto PAUSE = std::chrono::milliseconds(2);
  constexpr auto NEVER = std::chrono::minutes(3);
  for (const auto start = std::chrono::steady_clock::now();;) {
    const bool isLast =
        !isAlive(scan.program.process) || std::chrono::steady_clock::now() - start > NEVER;
    if (isSo()) return;
    if (isLast) break;
    std::this_thread::sleep_for(PAUSE);
  }
  throw std::runtime_error("waited in vain for " + what + "; lumascan said: " + errorsOf(scan));
}

void waitForError(const RunningScan& scan, const std::string& text) {
  waitUntil(scan, text, [&] { return errorsOf(scan).find(text) != std::string::npos; });
}

std::vector<pid_t> childrenOf(const RunningScan& scan) {
  const std::string number = std::to_string(scan.program.process);
  std::ifstream list("/proc/" + number + "/task/" + number + "/children");
  std::vector<pid_t> children;
  for (pid_t child = 0; list >> child;) children.push_back(child);
  return children;
}

std::vector<pid_t> workersOf(const RunningScan& scan) {
  std::vector<pid_t> workers = childrenOf(scan);
  const auto isOther = [](pid_t child) { return !isReady(child); };
  workers.erase(std::remove_if(workers.begin(), workers.end(), isOther), workers.end());
  return workers;
}

std::vector<pid_t> waitForWorkers(const RunningScan& scan, size_t count) {
  std::vector<pid_t> workers;
  waitUntil(scan, std::to_string(count) + " workers", [&] {
    workers = workersOf(scan);
    return workers.size() == count;
  });
  return workers;
}

pid_t waitForNextWorker(const RunningScan& scan, pid_t last) {
  pid_t next = -1;
  waitUntil(scan, "the next worker", [&] {
    for (const pid_t worker : workersOf(scan)) {
      if (worker != last) next = worker;
    }
    return next > 0;
  });
  return next;
}

Feed::Feed(const RunningScan& scan, const std::string& path) {
  waitUntil(scan, "a reader of " + path, [&] {
    descriptor = open(path.c_str(), O_WRONLY | O_NONBLOCK | O_CLOEXEC);
    return descriptor >= 0;
  });
  fcntl(descriptor, F_SETFL, 0);
  std::signal(SIGPIPE, SIG_IGN);  // a worker that has gone is an error of the test, not its end
}

Feed::~Feed() {
  close(descriptor);
}

void feed(const Feed& to, const std::string& bytes) {
  for (size_t done = 0; done < bytes.size();) {
    const ssize_t count = write(to.descriptor, bytes.data() + done, bytes.size() - done);
    if (count <= 0) throw std::runtime_error("nobody reads what is fed");
    done += static_cast<size_t>(count);
  }
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
    const fs::path name = entry.path().filename();
    if (!entry.is_regular_file() || name == "run.json" || name == ".lumascan-lock") continue;
    files.emplace_back(entry.path().lexically_relative(folder).string(),
                       readFile(entry.path().string()));
  }
  std::sort(files.begin(), files.end());
  return files;
}
