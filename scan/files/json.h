// JSON as lumascan writes it, and as it reads what anything may have changed.
#ifndef LUMASCAN_JSON_H
#define LUMASCAN_JSON_H

#include <cstdint>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "scan/files/jsonFwd.h"

Json numberOrNull(double value);  // what is no number is null
Json textOrNull(const std::string& text);

// Two spaces per level and a line feed at the end. Bytes that are no UTF-8 become U+FFFD.
std::string jsonText(const Json& json);

// On one line, the same.
std::string shortJsonText(const Json& json);

// Discarded where the text is no JSON, or deeper than anything of lumascan's: copying it could take
// all of the stack.
Json parsedJson(const std::string& text);

// Members of an object. What is missing, of another type than expected or in no object at all reads
// as unknown.
const Json& memberOf(const Json& object, const char* key);   // null
std::string textOf(const Json& object, const char* key);     // empty
double numberOf(const Json& object, const char* key);        // NaN
int64_t wholeNumberOf(const Json& object, const char* key);  // 0
bool flagOf(const Json& object, const char* key);            // false
std::vector<std::string> textsOf(const Json& object, const char* key);

#endif
