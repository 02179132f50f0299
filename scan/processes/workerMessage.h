// What a worker process tells its parent: lines, each of them a JSON object.
#ifndef LUMASCAN_WORKER_MESSAGE_H
#define LUMASCAN_WORKER_MESSAGE_H

#include <optional>
#include <string>
#include <variant>

#include "scan/processes/scanJob.h"

// It gets on.
struct Heartbeat {
  std::string stage;      // as stageName() has it
  double position = 0.0;  // in its file, 0 to 1
  int64_t frames = 0;     // analysed
};

using WorkerMessage = std::variant<Heartbeat, JobEnd>;

// The line, with its line feed.
std::string messageLine(const WorkerMessage& message);

// Nothing where the line is none that messageLine() has made: whoever has taken a worker over may
// write anything.
std::optional<WorkerMessage> readMessage(const std::string& line);

#endif
