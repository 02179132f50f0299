// What a result.json says, in forms that pages show. Whatever is missing or of another type than
// expected reads as unknown.
#ifndef LUMASCAN_RESULT_FACTS_H
#define LUMASCAN_RESULT_FACTS_H

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

#include "scan/events/event.h"
#include "scan/events/verdict.h"
#include "scan/files/json.h"

const Json& memberOf(const Json& object, const char* key);   // null: there is none
std::string textOf(const Json& object, const char* key);     // empty: none
double numberOf(const Json& object, const char* key);        // NaN: none
int64_t wholeNumberOf(const Json& object, const char* key);  // 0: none
bool flagOf(const Json& object, const char* key);            // false: none
std::vector<std::string> textsOf(const Json& object, const char* key);

Verdict verdictOf(const Json& result);      // INCOMPLETE too when the result says none
const char* verdictTitle(Verdict verdict);  // for readers: "Incomplete", ...

// "info", "warn" or "fail", and "info" for all else.
const char* severityOf(const Json& event);

Event eventOf(const Json& json);

// The path as it was given, and its last part.
std::string pathOf(const Json& result);
std::string nameOf(const Json& result);

double frameRateOf(const Json& result);  // that of the analysis, else the file's; NaN
double durationOf(const Json& result);   // seconds: what was analysed, else what the file says; NaN

// The indicator that shows an event of this type, or INDICATORS.
size_t indicatorOfEvent(std::string_view type);

// Whether it says something in some frames only, by its nature: flickering, once in eight.
bool isSparse(size_t indicator);

// An event type or the like for readers: "block_loss" is "block loss".
std::string words(std::string_view key);

// A number with four significant digits; an en dash for NaN.
std::string roughText(double value);

struct Fact {
  const char* title;
  std::string text;  // not HTML
};

// All facts of the file and its analysis that are known, in the order of the page.
std::vector<Fact> factsOf(const Json& result);

#endif
