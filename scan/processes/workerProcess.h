// Jobs in processes of their own: the state of the indicators is the process's, and a decoder that
// crashes, hangs or takes all memory takes nothing else along.
#ifndef LUMASCAN_WORKER_PROCESS_H
#define LUMASCAN_WORKER_PROCESS_H

#include <sys/types.h>

#include <optional>
#include <string>

#include "scan/processes/workerMessage.h"

// As lists of processes show it, from when all is set that it begins with.
constexpr char WORKER_NAME[] = "lumascan worker";

struct WorkerProcess {
  pid_t pid = -1;
  int messages = -1;  // descriptors to read from; -1: closed
  int log = -1;
  std::string pendingMessages;  // without their end so far
  std::string logTail;          // the last lines that the worker and its decoder have said
  Heartbeat heartbeat;          // the last one
  std::optional<JobEnd> end;    // what it came to; none: it has not said that
};

// Starts a job; isVerbose: its decoder says more than errors. The process ends when its parent
// does. False, with errno set, when that fails.
bool startWorker(const ScanJob& job, const ScanSettings& settings, bool isVerbose,
                 WorkerProcess* worker);

// Takes in what the worker has sent. True when it has said something.
bool readMessages(WorkerProcess* worker);
void readLog(WorkerProcess* worker, bool isShown);

// Collects the process, which has ended or is killed now, and what it has sent last. Returns an
// empty text when it ended by itself, or what became of it.
std::string endWorker(WorkerProcess* worker, bool isShown);

#endif
