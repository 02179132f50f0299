// Which events there are, and from which values of which indicator on.
#ifndef LUMASCAN_THRESHOLDS_H
#define LUMASCAN_THRESHOLDS_H

#include <array>
#include <cstddef>
#include <limits>
#include <string>
#include <string_view>

#include "scan/events/event.h"
#include "scan/files/jsonFwd.h"

constexpr size_t EVENT_TYPES = 22;

// How an event is found.
enum class EventKind {
  STRETCH,        // of frames whose value lies at the threshold or beyond it
  SCENE_CUT,      // one frame that stands out from its neighbours
  DECODE_ERROR,   // a stretch of frames that the decoder marked as damaged
  STREAM_ERROR,   // a stretch of frames about which messages of damage were said
  BEGINNING,      // the frames before the first key frame of a stream that begins in between
  TRUNCATION,     // the last frame
  SIZE_CHANGE,    // the last frame
  TIMESTAMP_GAP,  // the frame behind a gap
  MISSING,        // the frame behind others that are missing, or the last one before such
};

enum class Direction {
  ABOVE,  // high values are worse
  BELOW,  // low ones
};

// What a STRETCH is found in; signals.h says more.
enum class Signal {
  INDICATOR,  // the rule's own
  DARKNESS,
  BARS_ABOVE_AND_BELOW,
  BARS_AT_THE_SIDES,
};

// What cannot be changed about a type of event.
struct EventRule {
  const char* type;       // in files
  const char* title;      // in the reasons of a verdict
  const char* indicator;  // name in INDICATOR_TABLE of what shows such an event; null: none does
  EventKind kind;
  Direction direction;
  Signal signal = Signal::INDICATOR;
};

// What can. What a type has no use for is NaN, and the user cannot set it.
struct Threshold {
  static constexpr double NONE = std::numeric_limits<double>::quiet_NaN();

  // STRETCH, SCENE_CUT: the indicator's value. TIMESTAMP_GAP: the shortest step in seconds.
  double enter = NONE;
  double leave = NONE;  // STRETCH: the value at which it still goes on; enter or on its better side
  // STRETCH: how long the value is at `enter` or beyond before it is an event.
  double minSeconds = NONE;
  Severity severity = Severity::INFO;
  bool isEnabled = false;
  // Some STRETCH types begin only where the value also lies so many median absolute deviations of
  // the whole file beyond the file's median, and at least `least` beyond it; 0: anywhere.
  double mad = NONE;
  double least = NONE;
  // At least so many times the median: of the neighbours for SCENE_CUT, of all steps for
  // TIMESTAMP_GAP, of the whole file for those STRETCH types above whose indicator has a level of
  // its own in every file.
  double ratio = NONE;
  // STRETCH types with one of these: what lies here or beyond needs not be held against the file.
  double alone = NONE;
  // Some STRETCH types are held against the worst value of the last so many seconds, since what
  // they look for shows in some frames only; 0: against that of the frame.
  double holdSeconds = NONE;
  // SCENE_CUT: the share of its value that no frame within three to either side reaches; 0: any
  // may.
  double lone = NONE;
};

// In the same order, which is the order of files, too.
using Thresholds = std::array<Threshold, EVENT_TYPES>;
extern const std::array<EventRule, EVENT_TYPES> EVENT_RULES;
extern const Thresholds DEFAULT_THRESHOLDS;

// Place in the tables, or EVENT_TYPES when there is no such type.
size_t eventTypeNamed(std::string_view type);

// Place in INDICATOR_TABLE of what shows an event of this type, or INDICATORS.
size_t indicatorOfEvent(std::string_view type);

// Changes what a JSON file of the form {"blur": {"enter": 9, "leave": 8, "min_s": 1, "mad": 6,
// "least": 2, "severity": "fail", "enabled": true}, "scene_cut": {"ratio": 4}, "block_loss":
// {"alone": 400, "hold_s": 0.3}} names, and leaves the rest. Returns an empty text, or what is
// wrong; nothing is changed then.
std::string readThresholds(const std::string& path, Thresholds* thresholds);

// An object of such objects, with every type and all that can be set of it.
Json thresholdsJson(const Thresholds& thresholds);

// Such an object again. What it does not say is NaN, INFO and disabled.
Thresholds thresholdsOf(const Json& json);

#endif
