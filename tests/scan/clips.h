// Video files made by the ffmpeg program, and what that program decodes from them.
#ifndef LUMASCAN_TESTS_CLIPS_H
#define LUMASCAN_TESTS_CLIPS_H

#include <string>
#include <vector>

#include "support/runProgram.h"

using Arguments = std::vector<std::string>;

// A second of FFmpeg's moving test picture, 25 frames of 128 x 80.
extern const char* const testPicture;

// Runs the program in the folder; the test fails when it does.
void ffmpeg(const TemporaryDirectory& directory, const Arguments& arguments);

// Encodes a source of the program's own as `encoding` says.
void makeClip(const TemporaryDirectory& directory, const std::string& name,
              const Arguments& encoding, const std::string& source = testPicture);

// A second of H.264 without its first three packets: 22 frames, of which the first seven refer to
// what is missing.
void makeClipWithoutItsStart(const TemporaryDirectory& directory, const std::string& name);

// Decodes all frames, damaged ones too, into raw YUV 4:2:0 of 8 bits.
void decodeByProgram(const TemporaryDirectory& directory, const std::string& name,
                     const std::string& decoded);

// The luma of all frames of a clip of w x h, one after the other, as the program decodes it.
std::string lumaByProgram(const TemporaryDirectory& directory, const std::string& name, size_t w,
                          size_t h);

#endif
