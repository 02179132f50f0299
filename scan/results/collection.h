// All results below one folder.
#ifndef LUMASCAN_COLLECTION_H
#define LUMASCAN_COLLECTION_H

#include <string>
#include <vector>

#include "scan/record/outputChoice.h"

// The folders with a result.json, the given one or any below it, sorted by name.
std::vector<std::string> storedResults(const std::string& folder);

// Writes index.html, summary.csv and events.csv over all results below the folder, those that are
// chosen. Returns an empty text, or what went wrong. A result that cannot be read is left out.
//
// isDisarmed   see csvField()
std::string writeCollection(const std::string& folder, const OutputChoice& choice,
                            bool isDisarmed = false);

#endif
