// One video from its file to a table of its frames.
#ifndef LUMASCAN_MEASUREMENT_H
#define LUMASCAN_MEASUREMENT_H

#include <cstdio>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "scan/analysis/videoAnalysis.h"
#include "scan/files/fingerprint.h"
#include "scan/video/streamFacts.h"

enum class Stage { OPENING, SKIPPING, DECODING, STATISTICS, EVENTS, PICTURES, WRITING };

const char* stageName(Stage stage);  // "opening" and so on

struct Measurement {
  // Of the file before it is read: a change while it is read is found the next time.
  std::optional<Fingerprint> fingerprint;
  std::string openError;  // why it cannot be opened; empty: all below is known
  std::optional<StreamFacts> stream;
  std::vector<std::string> warnings;
  double frameRate = 0.0;  // the stream's average
  AnalysisOutcome outcome = {};
  FrameTable frames;
};

// Told again and again what is being done, how much of the file is done, 0 to 1, and how many
// frames are analysed: behind each frame, and each time that more of the file is read than before.
// Where frames are decoded ahead it is called by two threads.
using ProgressListener = std::function<void(Stage stage, double position, int64_t frames)>;

// Of the source's file, which is opened where it is not. None of a pipe and of what cannot be read.
std::optional<Fingerprint> fingerprintOf(const VideoSource& source);

// Opens and analyses a video.
//
// decoderThreads   0: as many as the machine has
// rows             gets the report that lumaprobe would write; null: nobody does
Measurement measureVideo(const VideoSource& source, const AnalysisOptions& options,
                         int decoderThreads, FILE* rows, const ProgressListener& onProgress);

#endif
