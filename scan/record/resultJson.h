// The record of a result as JSON (docs/results.md): the one place that writes it, and the one that
// reads it.
#ifndef LUMASCAN_RESULT_JSON_H
#define LUMASCAN_RESULT_JSON_H

#include <string>

#include "scan/files/jsonFwd.h"
#include "scan/record/videoResult.h"

Json resultJson(const ResultRecord& record);

// Returns an empty text, or what is wrong: anything may have changed a stored result. What the
// program cannot do without must be as it was written. Of the rest, what is missing or of another
// type than expected reads as unknown.
std::string readRecord(const Json& json, ResultRecord* record);

// What a file says about itself, as results have it.
Json streamJson(const StreamFacts& facts);

#endif
