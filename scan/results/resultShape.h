// Whether a result.json, which anything may have changed, is one that lumascan can work with.
#ifndef LUMASCAN_RESULT_SHAPE_H
#define LUMASCAN_RESULT_SHAPE_H

#include <string>

#include "scan/files/json.h"

// Returns an empty text, or what is wrong with the object. What may be missing, or be of any kind,
// is not looked at: it is to be read with memberOf() and the like (scan/report/resultFacts.h).
std::string shapeMistake(const Json& result);

#endif
