// How lumascan ends. Of several reasons the one with the highest number counts.
#ifndef LUMASCAN_EXIT_STATUS_H
#define LUMASCAN_EXIT_STATUS_H

enum ExitStatus : int {
  DONE = 0,            // findings or none
  FOUND = 1,           // a finding at or above --fail-on
  USAGE = 2,           // a mistake on the command line
  INPUT_PROBLEM = 3,   // some input could not be read, or only in part
  OUTPUT_PROBLEM = 4,  // something could not be written, or the system refused something else
  INTERRUPTED = 130,   // stopped by Ctrl-C; the same command goes on from there
  TERMINATED = 143,    // by SIGTERM
};

#endif
