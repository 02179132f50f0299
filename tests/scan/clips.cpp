#include "clips.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <algorithm>
#include <filesystem>
#include <functional>

namespace fs = std::filesystem;

namespace {

constexpr char PROGRAM[] = "/usr/bin/ffmpeg";

// Where a clip that is made from nothing but these arguments is kept for all tests of all builds:
// starting the program takes longer than most tests.
fs::path keptPlace(const Arguments& arguments, const std::string& name) {
  std::string all = std::to_string(fs::last_write_time(PROGRAM).time_since_epoch().count());
  for (const std::string& argument : arguments) all += '\n' + argument;
  const std::string key = std::to_string(std::hash<std::string>()(all));
  return fs::path(KEPT_CLIPS) / (key + fs::path(name).extension().string());
}

// Whether the arguments name a file of the test.
bool readsAFile(const TemporaryDirectory& directory, const Arguments& arguments) {
  return std::any_of(arguments.begin(), arguments.end(), [&](const std::string& argument) {
    std::error_code ignored;
    return fs::exists(fs::path(directory.path) / argument, ignored);
  });
}

}  // namespace

const char* const testPicture = "testsrc2=size=128x80:rate=25:duration=1";

void ffmpeg(const TemporaryDirectory& directory, const Arguments& arguments) {
  Arguments all = {"-nostdin", "-v", "error", "-y"};
  all.insert(all.end(), arguments.begin(), arguments.end());
  const ProgramRun run = runProgram(PROGRAM, all, directory.path);
  ASSERT_EQ(run.status, 0) << run.err;
}

void makeClip(const TemporaryDirectory& directory, const std::string& name,
              const Arguments& encoding, const std::string& source) {
  Arguments all = {"-f", "lavfi", "-i", source};
  all.insert(all.end(), encoding.begin(), encoding.end());
  const bool isKept = !readsAFile(directory, all);
  all.push_back(name);
  const fs::path kept = keptPlace(all, name);
  const fs::path made = fs::path(directory.path) / name;
  if (isKept && fs::exists(kept)) {
    fs::copy_file(kept, made, fs::copy_options::overwrite_existing);
    return;
  }
  ffmpeg(directory, all);
  if (!isKept || testing::Test::HasFatalFailure() || !fs::is_regular_file(made)) return;
  // Other tests that make the same one at this moment never see a part of it.
  fs::create_directories(KEPT_CLIPS);
  const fs::path part = kept.string() + '.' + std::to_string(getpid());
  fs::copy_file(made, part, fs::copy_options::overwrite_existing);
  fs::rename(part, kept);
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
