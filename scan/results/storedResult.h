// A folder with the results of one video. result.json is written last and removed first: where it
// stands, all files are of one mind.
#ifndef LUMASCAN_STORED_RESULT_H
#define LUMASCAN_STORED_RESULT_H

#include <functional>
#include <string>

#include "scan/files/outputFile.h"
#include "scan/record/videoResult.h"

// Where the results of a video go: its path from the current folder, or from the root where it is
// not below it, below the folder of all results; or "stdin". A name that would be too long is cut,
// and what the folder of all results has of its own is not given to others.
std::string resultFolder(const std::string& output, const VideoSource& source);

// What a stored result is good for.
enum class Freshness {
  STALE,     // the file, what was asked about it or the program have changed, or it failed,
             // or reading the file did
  JUDGE,     // its values are; judgement and pages are to be made anew
  COMPLETE,  // nothing is to be done
};

Freshness freshnessOf(const std::string& folder, const VideoSource& source,
                      const AnalysisOptions& options, const Thresholds& thresholds,
                      const OutputChoice& choice);

using EventListener = std::function<void(Event)>;

// Reads result.json, or that and frames.csv. Events, of which there may be many, are handed over
// one by one. Return an empty text, or what is wrong.
std::string readRecord(const std::string& folder, ResultRecord* record,
                       const EventListener& onEvent);
std::string readResult(const std::string& folder, VideoResult* result);

// The pictures that are stored.
Thumbnails readThumbnails(const std::string& folder);

// Makes a result's folder below that of all results, or removes what processes that are gone have
// left in it unfinished. A link on the way is refused: what is at its other end is not lumascan's.
// Returns an empty text, or what went wrong.
std::string makeResultFolder(const std::string& output, const std::string& folder);

// Begins rows.tsv in the folder. Returns an empty text, or what went wrong.
std::string beginRows(const std::string& folder, OutputFile* rows);

// Removes a result's files and its folder, and those above it, below `results`, that are empty
// then. What else there is in the folder stays. Returns an empty text, or what went wrong.
std::string removeResult(const std::string& folder, const std::string& results);

// Stores a result; `rows`, when it is not null, becomes rows.tsv. Files that are not among its
// outputs are removed. Calls onStep before each file. Returns an empty text, or what went wrong:
// there is no result.json then.
std::string storeResult(
    const std::string& folder, const VideoResult& result, OutputFile* rows,
    const std::function<void()>& onStep = [] {});

#endif
