// lumascan: arguments in, exit status out; the process: its standard streams, its signals.
#include <fcntl.h>
#include <unistd.h>

#include <csignal>
#include <exception>

#include "scan/commandLine/exitStatus.h"
#include "scan/commandLine/messages.h"
#include "scan/commands/commands.h"

namespace {

// A file that is opened takes the lowest free descriptor. When the caller has closed a standard
// stream, a result or a worker's pipe could become it, and get what is meant for it. What stands in
// is open in the other direction: reading or writing goes on failing.
void occupyStandardStreams() {
  for (int descriptor = STDIN_FILENO; descriptor <= STDERR_FILENO; ++descriptor) {
    if (fcntl(descriptor, F_GETFD) >= 0) continue;
    const int standIn = open("/dev/null", descriptor == STDIN_FILENO ? O_WRONLY : O_RDONLY);
    if (standIn == descriptor) continue;
    dup2(standIn, descriptor);
    close(standIn);
  }
}

}  // namespace

int main(int argc, char** argv) {
  occupyStandardStreams();
  // A write beyond the limit on the size of files then fails as on a full disk, and is told.
  std::signal(SIGXFSZ, SIG_IGN);
  try {
    Options options;
    const std::optional<int> status = parseOptions(argc, argv, &options);
    if (status.has_value()) return *status;
    switch (options.verb) {
      case Verb::EVENTS:
        return runEvents(options);
      case Verb::REPORT:
        return runReport(options);
      case Verb::PROBE:
        return runProbe(options);
      case Verb::PRUNE:
        return runPrune(options);
      default:
        return runScan(options);
    }
  } catch (const std::exception& error) {
    complain(error.what());
    return OUTPUT_PROBLEM;
  }
}
