// Arguments in, exit status out.
#include "driver/commandLine.h"
#include "driver/frameAnalysis.h"
#include "driver/frameLoop.h"

int main(int argc, char** argv) {
  RunOptions options;
  if (!parseCommandLine(argc, argv, &options)) {
    printUsage(argv[0]);
    return -1;
  }
  useSmallStacks();
  return runAnalysis(options);
}
