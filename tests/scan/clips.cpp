#include "clips.h"

#include <gtest/gtest.h>

const char* const testPicture = "testsrc2=size=128x80:rate=25:duration=1";

void ffmpeg(const TemporaryDirectory& directory, const Arguments& arguments) {
  Arguments all = {"-nostdin", "-v", "error", "-y"};
  all.insert(all.end(), arguments.begin(), arguments.end());
  const ProgramRun run = runProgram("/usr/bin/ffmpeg", all, directory.path);
  ASSERT_EQ(run.status, 0) << run.err;
}

void makeClip(const TemporaryDirectory& directory, const std::string& name,
              const Arguments& encoding, const std::string& source) {
  Arguments all = {"-f", "lavfi", "-i", source};
  all.insert(all.end(), encoding.begin(), encoding.end());
  all.push_back(name);
  ffmpeg(directory, all);
}

void makeClipWithoutItsStart(const TemporaryDirectory& directory, const std::string& name) {
  makeClip(directory, "whole.ts",
           {"-c:v", "libx264", "-g", "10", "-bf", "0", "-pix_fmt", "yuv420p"});
  ffmpeg(directory, {"-i", "whole.ts", "-c", "copy", "-bsf:v", "noise=drop=lt(n\\,3)", name});
}

void decodeByProgram(const TemporaryDirectory& directory, const std::string& name,
                     const std::string& decoded) {
  ffmpeg(directory, {"-flags", "output_corrupt", "-noautorotate", "-i", name, "-map", "0:v:0",
                     "-fps_mode", "passthrough", "-pix_fmt", "yuv420p", "-f", "rawvideo", decoded});
}

std::string lumaByProgram(const TemporaryDirectory& directory, const std::string& name, size_t w,
                          size_t h) {
  decodeByProgram(directory, name, "decoded.yuv");
  const std::string all = readFile(directory.path + "/decoded.yuv");
  const size_t frame = w * h + 2 * ((w + 1) / 2) * ((h + 1) / 2);
  std::string luma;
  for (size_t start = 0; start + frame <= all.size(); start += frame) {
    luma += all.substr(start, w * h);
  }
  return luma;
}
