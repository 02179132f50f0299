// lumascan: arguments in, exit status out.
#include <exception>

#include "scan/commandLine/exitStatus.h"
#include "scan/commandLine/messages.h"
#include "scan/commands/commands.h"

int main(int argc, char** argv) {
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
      default:
        return runScan(options);
    }
  } catch (const std::exception& error) {
    complain(error.what());
    return OUTPUT_PROBLEM;
  }
}
