// What is to be made of a video, in a word and in a few sentences.
#ifndef LUMASCAN_VERDICT_H
#define LUMASCAN_VERDICT_H

#include <string>
#include <vector>

#include "scan/events/event.h"

enum class Status { COMPLETE, PARTIAL, FAILED };           // how much was measured
enum class Verdict { INCOMPLETE, FAIL, ATTENTION, PASS };  // the worst first

const char* statusName(Status status);     // "complete", "partial", "failed"
const char* verdictName(Verdict verdict);  // "incomplete", "fail", "attention", "pass"

struct Judgement {
  Verdict verdict = Verdict::INCOMPLETE;
  std::vector<std::string> reasons;  // in words, the weightiest first; none for PASS
};

// status    All but COMPLETE is INCOMPLETE, whatever the events say, and `error` is the first
//           reason.
// duration  of the video, in seconds; NaN: unknown.
// Events of severity FAIL make it fail, those of WARN attention, those of INFO nothing. There is
// one reason for each of their types, those that fail first, then by the number of their frames.
Judgement judge(Status status, const std::string& error, const std::vector<Event>& events,
                double duration);

#endif
