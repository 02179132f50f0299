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

Severity severityNamed(const std::string& name) {
  if (name == "fail") return Severity::FAIL;
  return name == "warn" ? Severity::WARN : Severity::INFO;
}
