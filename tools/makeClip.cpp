// Writes a raw 4:2:0 clip with known defects at known frames, and a table of them.
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "defects.h"
#include "scene.h"

namespace {

constexpr int MIN_SIDE = 256;  // block loss needs a whole region of 256x256
constexpr int MAX_SIDE = 8192;

// An even side between the limits, or 0.
int parseSide(const char* text) {
  char* end;
  const long side = std::strtol(text, &end, 10);
  const bool isValid = *end == '\0' && side >= MIN_SIDE && side <= MAX_SIDE && side % 2 == 0;
  return isValid ? static_cast<int>(side) : 0;
}

Frame makeFrame(int time, int w, int h) {
  Frame frame = renderScene(time, w, h);
  for (const Defect& defect : defects()) {
    if (defect.first <= time && time <= defect.last) defect.apply(frame, time, defect.first);
  }
  return frame;
}

bool writeBytes(std::FILE* file, const std::vector<uint8_t>& bytes) {
  return std::fwrite(bytes.data(), 1, bytes.size(), file) == bytes.size();
}

// The clip is in black and white: both chroma planes are neutral.
bool writeFrames(std::FILE* file, int w, int h) {
  const std::vector<uint8_t> chroma(static_cast<size_t>(w * h / 2), 128);
  for (int time = 0; time < FRAMES; ++time) {
    if (!writeBytes(file, makeFrame(time, w, h).luma) || !writeBytes(file, chroma)) return false;
  }
  return true;
}

bool writeClip(const char* path, int w, int h) {
  std::FILE* file = std::fopen(path, "wb");
  if (file == nullptr) return false;
  const bool isWritten = writeFrames(file, w, h) && std::fflush(file) == 0;
  const int error = errno;
  const bool isClosed = std::fclose(file) == 0;
  if (!isWritten) errno = error;  // the first failure is the one to tell
  return isWritten && isClosed;
}

bool printRow(const char* name, int first, int last, const char* indicator) {
  return std::printf("%s\t%d\t%d\t%s\n", name, first, last, indicator) > 0;
}

bool printTable() {
  bool isPrinted = std::puts("name\tfirst\tlast\tindicator") >= 0;
  int next = 0;
  for (const Defect& defect : defects()) {
    isPrinted = isPrinted && printRow("clean", next, defect.first - 1, "-") &&
                printRow(defect.name, defect.first, defect.last, defect.indicator);
    next = defect.last + 1;
  }
  return isPrinted && printRow("clean", next, FRAMES - 1, "-") && std::fflush(stdout) == 0;
}

int reportFailure(const char* what) {
  std::fprintf(stderr, "makeClip: cannot write %s: %s\n", what, std::strerror(errno));
  return 1;
}

}  // namespace

int main(int argc, char** argv) {
  const int w = argc == 4 ? parseSide(argv[2]) : 352;
  const int h = argc == 4 ? parseSide(argv[3]) : 288;
  if ((argc != 2 && argc != 4) || w == 0 || h == 0) {
    std::fprintf(stderr, "Usage: makeClip OUTPUT.yuv [WIDTH HEIGHT] (even numbers from %d to %d)\n",
                 MIN_SIDE, MAX_SIDE);
    return 2;
  }
  if (!writeClip(argv[1], w, h)) return reportFailure(argv[1]);
  if (!printTable()) return reportFailure("the table");
  return 0;
}
