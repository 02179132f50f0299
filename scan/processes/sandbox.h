// What a process may do that decodes what others have sent: decoders are a million lines of C, and
// a file may be made to make them do anything.
#ifndef LUMASCAN_SANDBOX_H
#define LUMASCAN_SANDBOX_H

#include <cstdint>
#include <string>

#include "scan/record/videoResult.h"

enum class SandboxMode {
  AUTO,     // where it can be had
  REQUIRE,  // or nothing is decoded
  OFF,
};

// From here on this process can read what it has open, and make, change and remove files below one
// folder (empty: none); nothing else of files, processes, networks or the system. It has one thread
// so far. Returns an empty text, or why it is not confined, or not wholly.
std::string confineProcess(const std::string& folder);

// What a sandbox comes to here, tried by a process that ends behind that.
SandboxFacts trySandbox(SandboxMode mode);

// Leaves this process so much memory to write to, in bytes; 0: no limit. Nothing in builds with a
// sanitizer, which takes terabytes of addresses.
void limitMemory(int64_t bytes);

#endif
