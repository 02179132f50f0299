// Arguments in, exit status out.
#include <fcntl.h>
#include <unistd.h>

#include "driver/commandLine.h"
#include "driver/frameAnalysis.h"
#include "driver/frameLoop.h"

namespace {

// A file that is opened takes the lowest free descriptor. When the caller has closed standard
// output or error, the report could become it, and get what is meant for it among its rows. What
// stands in is open for reading alone: writing goes on failing.
void occupyStandardOutputs() {
  for (int descriptor = STDOUT_FILENO; descriptor <= STDERR_FILENO; ++descriptor) {
    if (fcntl(descriptor, F_GETFD) >= 0) continue;
    const int standIn = open("/dev/null", O_RDONLY);
    if (standIn == descriptor) continue;
    dup2(standIn, descriptor);
    close(standIn);
  }
}

}  // namespace

int main(int argc, char** argv) {
  RunOptions options;
  if (!parseCommandLine(argc, argv, &options)) {
    printUsage(argv[0]);
    return -1;
  }
  occupyStandardOutputs();
  useSmallStacks();
  return runAnalysis(options);
}
