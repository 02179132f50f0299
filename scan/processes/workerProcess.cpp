#include "scan/processes/workerProcess.h"

#include <fcntl.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <csignal>
#include <cstring>
#include <mutex>

#include "scan/files/names.h"
#include "scan/processes/childProcess.h"

namespace {

constexpr size_t MOST_LOG = 2000;  // bytes kept of what a worker says
constexpr int STOPPED_EARLY = 1;   // status of a worker whose parent is gone
constexpr auto MESSAGE_INTERVAL = std::chrono::milliseconds(100);

constexpr size_t LONGEST_MESSAGE = 65536;  // bytes
constexpr int MOST_LAST_READS = 32;

void send(int to, const WorkerMessage& message) {
  const std::string line = messageLine(message);
  // The parent reads all of it, or is gone.
  if (write(to, line.data(), line.size()) < 0) _exit(STOPPED_EARLY);
}

// Sends heartbeats, from any thread: what is new at once, and else seldom enough.
struct HeartbeatSender {
  int to;
  std::mutex mutex;
  std::chrono::steady_clock::time_point last = {};
  Heartbeat told;

  void tell(Stage stage, double position, int64_t frames) {
    const std::lock_guard<std::mutex> lock(mutex);
    const auto now = std::chrono::steady_clock::now();
    const bool isNew = told.stage != stageName(stage) || (told.frames == 0 && frames > 0);
    if (!isNew && now - last < MESSAGE_INTERVAL) return;
    last = now;
    told = {stageName(stage), position, frames};
    send(to, told);
  }
};

// When memory runs out the system shall choose a worker, not its parent.
void offerToBeKilled() {
  FILE* const file = std::fopen("/proc/self/oom_score_adj", "we");
  if (file == nullptr) return;
  std::fputs("1000", file);
  std::fclose(file);
}

void resetSignals() {
  // Ctrl-C reaches the whole group; what it means is the parent's decision.
  std::signal(SIGINT, SIG_IGN);
  sigset_t none;
  sigemptyset(&none);
  sigprocmask(SIG_SETMASK, &none, nullptr);
}

[[noreturn]] void work(const ScanJob& job, const ScanSettings& settings, bool isVerbose,
                       int messages) {
  offerToBeKilled();
  limitMemory(settings.memoryLimit);
  prctl(PR_SET_NAME, WORKER_NAME);
  av_log_set_level(isVerbose ? AV_LOG_INFO : AV_LOG_ERROR);
  HeartbeatSender sender;
  sender.to = messages;
  send(messages, runJob(job, settings, [&](Stage stage, double position, int64_t frames) {
         sender.tell(stage, position, frames);
       }));
  std::fflush(nullptr);
  _exit(0);
}

// Some of what can be read without waiting, added to `text`: whoever writes faster than this
// process reads shall not keep it from other work, nor fill its memory. False at the end.
bool readSome(int from, std::string* text) {
  char bytes[65536];
  const ssize_t count = read(from, bytes, sizeof bytes);
  if (count > 0) text->append(bytes, static_cast<size_t>(count));
  return count != 0;
}

// False when it is no message.
bool takeMessage(const std::string& line, WorkerProcess* worker) {
  const std::optional<WorkerMessage> message = readMessage(line);
  if (!message) return false;
  if (const auto* const heartbeat = std::get_if<Heartbeat>(&*message)) {
    worker->heartbeat = *heartbeat;
  } else {
    worker->end = std::get<JobEnd>(*message);
  }
  return true;
}

void closeDescriptor(int* descriptor) {
  if (*descriptor >= 0) close(*descriptor);
  *descriptor = -1;
}

}  // namespace

bool startWorker(const ScanJob& job, const ScanSettings& settings, bool isVerbose,
                 WorkerProcess* worker) {
  int messages[2];
  int log[2];
  if (pipe2(messages, O_CLOEXEC) != 0) return false;
  if (pipe2(log, O_CLOEXEC) != 0) {
    const int error = errno;
    close(messages[0]);
    close(messages[1]);
    errno = error;
    return false;
  }
  std::fflush(nullptr);
  const pid_t parent = getpid();
  const pid_t pid = fork();
  const int error = errno;
  if (pid == 0) {
    prctl(PR_SET_PDEATHSIG, SIGKILL);
    if (getppid() != parent) _exit(STOPPED_EARLY);
    resetSignals();
    connectStandardStreams(log[1]);
    closeOthers({messages[1], job.source.file ? job.source.file->descriptor : -1});
    work(job, settings, isVerbose, messages[1]);
  }
  close(messages[1]);
  close(log[1]);
  *worker = {};
  worker->pid = pid;
  worker->messages = messages[0];
  worker->log = log[0];
  fcntl(worker->messages, F_SETFL, O_NONBLOCK);
  fcntl(worker->log, F_SETFL, O_NONBLOCK);
  if (pid < 0) {
    closeDescriptor(&worker->messages);
    closeDescriptor(&worker->log);
    errno = error;
  }
  return pid > 0;
}

bool readMessages(WorkerProcess* worker) {
  std::string& pending = worker->pendingMessages;
  if (!readSome(worker->messages, &pending)) closeDescriptor(&worker->messages);
  bool isNews = false;
  size_t start = 0;
  for (size_t end = 0; (end = pending.find('\n', start)) != std::string::npos; start = end + 1) {
    isNews = takeMessage(pending.substr(start, end - start), worker) || isNews;
  }
  pending.erase(0, start);
  // None of lumascan's is as long.
  if (pending.size() > LONGEST_MESSAGE) kill(worker->pid, SIGKILL);
  return isNews;
}

void readLog(WorkerProcess* worker, bool isShown) {
  std::string text;
  if (!readSome(worker->log, &text)) closeDescriptor(&worker->log);
  if (isShown) showLog(text);
  worker->logTail += text;
  if (worker->logTail.size() > MOST_LOG) {
    worker->logTail.erase(0, worker->logTail.size() - MOST_LOG);
  }
}

std::string endWorker(WorkerProcess* worker, bool isShown) {
  int status = 0;
  kill(worker->pid, SIGKILL);  // nothing to one that has ended
  while (waitpid(worker->pid, &status, 0) < 0 && errno == EINTR) {
  }
  // No more than pipes hold, should somebody else have them open.
  for (int i = 0; i < MOST_LAST_READS && worker->messages >= 0; ++i) readMessages(worker);
  for (int i = 0; i < MOST_LAST_READS && worker->log >= 0; ++i) readLog(worker, isShown);
  closeDescriptor(&worker->messages);
  closeDescriptor(&worker->log);
  worker->pid = -1;
  return endingOf(status);
}
