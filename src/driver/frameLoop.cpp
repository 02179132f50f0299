#include "driver/frameLoop.h"

#include <cerrno>
#include <cstdio>
#include <cstring>

#include "driver/frameAnalysis.h"
#include "driver/reportOutput.h"
#include "driver/videoInput.h"

namespace {

constexpr int SUCCESS = 0;
constexpr int FAILURE = -1;

void printReadError(int32_t frame, size_t bytesRead, const VideoInput& input) {
  std::printf("Some error occurred when reading the %d frame\n", frame);
  std::printf("Byte read = %d, Frame size = %d\n\n", static_cast<int>(bytesRead), input.lumaSize);
}

// Frames from startFrame on, frameCount of them; those past the end of the file are analysed from
// what the buffers hold.
int analyseFrames(const RunOptions& options, int32_t frameCount, const VideoInput& input,
                  FILE* report, FrameImages* images) {
  TemporalResults temporal = {};
  const int64_t first = options.startFrame;
  // The end is a 32-bit sum: past 2^31 - 1 it wraps and no frame is left.
  const int64_t end = static_cast<int32_t>(static_cast<uint32_t>(options.startFrame) +
                                           static_cast<uint32_t>(frameCount));
  for (int64_t k = first; frameCount > 0 && k < end; ++k) {
    const int32_t frame = static_cast<int32_t>(k);
    const size_t bytesRead = readLuma(&input, k, &images->current);
    const int readError = errno;
    if (std::ferror(input.stream)) {
      printReadError(frame, bytesRead, input);
      std::printf("Error code: %d \n", readError);
      std::printf("Error description: %s \n", std::strerror(readError));
      return FAILURE;
    }
    analyseFrame(options.mask, options.fps, k > first, images, &temporal);
    printRows(report, frame, Results, temporal);
    if (std::ferror(input.stream)) {
      printReadError(frame, bytesRead, input);
      return FAILURE;
    }
    swapFrames(images);
  }
  return SUCCESS;
}

int analyseStream(const RunOptions& options, FILE* stream, FILE* report) {
  const VideoInput input = makeVideoInput(stream, options.width, options.height);
  const int32_t frameCount = options.hasFrameCount ? options.frameCount : countFrames(&input);
  std::printf("Video file %s opened successfully!\n\n", options.inputName);
  std::printf("Width = %d, Height = %d, FPS = %2.2f, Number of Frames = %d, Start Frame = %d\n\n",
              options.width, options.height, options.fps, frameCount, options.startFrame);
  printHeaders(report);

  FrameImages images =
      makeFrameImages(static_cast<uint32_t>(options.width), static_cast<uint32_t>(options.height));
  const int status = analyseFrames(options, frameCount, input, report, &images);
  freeFrameImages(&images);
  return status;
}

}  // namespace

int runAnalysis(const RunOptions& options) {
  FILE* stream = std::fopen(options.inputName, "r");
  const int openError = errno;
  // Made before the input is looked at, so that a run that fails leaves an empty report rather than
  // an old one.
  FILE* report = openReport();
  int status = FAILURE;
  if (stream == nullptr) {
    errno = openError;
    std::perror("Error opening file.\n\n");
  } else if (isFrameSizeSupported(options.width, options.height)) {
    status = analyseStream(options, stream, report);
  } else {
    std::printf(
        "Cannot analyse frames of %d x %d: width and height must be at least 1, "
        "and 3 * width * height at most 2147483647\n",
        options.width, options.height);
  }
  if (stream != nullptr) std::fclose(stream);
  if (status == SUCCESS) std::puts("\nFile stream closed\n");
  if (report != nullptr) std::fclose(report);
  return status;
}
