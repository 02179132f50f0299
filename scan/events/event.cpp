#include "scan/events/event.h"

const char* severityName(Severity severity) {
  switch (severity) {
    case Severity::INFO:
      return "info";
    case Severity::WARN:
      return "warn";
    case Severity::FAIL:
      return "fail";
  }
  return "";
}
