// Places in a video as a person writes them.
#ifndef LUMASCAN_POSITION_H
#define LUMASCAN_POSITION_H

#include <cstdint>
#include <string>

struct Position {
  std::string text;      // as it was written; empty: no position
  bool isFrame = false;  // counted in frames alone
  double seconds = 0.0;  // from the start of the file
  int64_t frames = 0;    // further frames
};

// "f:300" is a frame, counted from 0. Times are seconds ("12.5"), MM:SS or HH:MM:SS, both with or
// without decimals, or a timecode HH:MM:SS:FF or HH:MM:SS;FF, whose last part counts frames. False
// for any other text.
bool parsePosition(const std::string& text, Position* position);

// What is wrong with a position at a rate of `fps` frames per second, in words: a second has no
// frames beyond those. Empty: nothing.
std::string mistakeAtRate(const Position& position, double fps);

// Whether a frame is at the position or behind it. `time` is in seconds, `fps` in frames per
// second; a frame whose time is unknown (NaN) is placed by its number.
bool isAtOrBehind(int64_t frame, double time, double fps, const Position& position);

#endif
