// Writes the pages that page.mjs looks at: scanSamplePages OUTDIR. Pictures of events are taken
// from OUTDIR/thumbs/1.jpg and so on, as far as there are any.
#include <cstdio>
#include <fstream>
#include <iostream>
#include <iterator>
#include <stdexcept>

#include "scan/events/eventList.h"
#include "scan/files/outputFile.h"
#include "scan/report/indexPage.h"
#include "scan/sample.h"

namespace {

constexpr char HOSTILE[] = "<img src=x onerror=alert(1)>\n\"'&</script>\xff\xe2\x80\xae.mp4";

std::string contentOf(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(file), {}};
}

void write(const std::string& path, const std::function<void(FILE*)>& content) {
  const std::string error = writeOutput(path, content);
  if (!error.empty()) throw std::runtime_error(error);
}

void writePage(const std::string& path, const std::vector<const VideoResult*>& inputs) {
  write(path, [&](FILE* out) { writeReport(inputs, out); });
}

void writeCsv(const std::string& path, const FrameTable& frames) {
  write(path, [&](FILE* out) { writeFramesCsv(frames, out); });
}

IndexEntry entryOf(const VideoResult& input, const std::string& folderUri) {
  return {input.record, folderUri, summaryOf(input.events)};
}

void addThumbnails(const std::string& folder, VideoResult* input) {
  int number = 0;
  for (const Event& event : input->events) {
    for (const int64_t frame : {event.firstFrame, event.peakFrame, event.lastFrame}) {
      const std::string jpeg = contentOf(folder + "/" + std::to_string(++number) + ".jpg");
      if (!jpeg.empty()) input->thumbnails[frame] = jpeg;
    }
  }
}

// Leaves the values of blur away.
void clearBlur(size_t firstRow, size_t endRow, VideoResult* input) {
  Column<double>& blur = input->frames.values.at(indicatorNamed("blur"));
  for (size_t row = firstRow; row < endRow; ++row) blur.set(row, UNKNOWN);
}

// out: a folder's name with a slash behind it
void writePages(const std::string& out) {
  VideoResult first = sampleInput("masters/episode one.mp4", 750, 25.0, 1);
  addThumbnails(out + "thumbs", &first);
  VideoResult second = sampleInput("copies/episode one.mxf", 900, 30000.0 / 1001.0, 2);
  second.record.judgement = {Verdict::ATTENTION, {"blur for 2.4 s"}};
  second.events.erase(second.events.begin() + 2);
  VideoResult clean = sampleInput("masters/titles.mov", 250, 25.0, 3);
  clean.record.judgement = {Verdict::PASS, {"No event above information."}};
  clean.events.clear();
  VideoResult hostile = sampleInput(HOSTILE, 100, 25.0, 4);
  hostile.events[0].type = HOSTILE;
  hostile.record.judgement.reasons = {HOSTILE};
  hostile.record.warnings = {HOSTILE};
  const VideoResult failed = failedInput("masters/broken.mp4");

  writePage(out + "report.html", {&first});
  writeCsv(out + "report.csv", first.frames);
  writePage(out + "compare.html", {&first, &second});
  writeCsv(out + "compare.csv", second.frames);
  writePage(out + "clean.html", {&clean});
  writePage(out + "hostile.html", {&hostile});
  writePage(out + "failed.html", {&failed});
  const std::vector<IndexEntry> index = {entryOf(clean, "masters/titles.mov.lumascan"),
                                         entryOf(first, "masters/episode%20one.mp4.lumascan"),
                                         entryOf(hostile, "%3Cimg.lumascan"),
                                         entryOf(failed, "masters/broken.mp4.lumascan"),
                                         entryOf(second, "copies/episode%20one.mxf.lumascan")};
  write(out + "index.html", [&](FILE* file) { writeIndex(index, file); });
  // Behind the first hour: from 3675 s on for 16 s, from 3670 s on for 24 s.
  VideoResult tape = sampleRange("tapes/tape 7.mov", 400, 25.0, 6, 91875);
  clearBlur(250, 300, &tape);
  const VideoResult copy = sampleRange("tapes/TAPE 8.MXF", 720, 30.0, 7, 110100);
  writePage(out + "ranges.html", {&tape, &copy});
  writeCsv(out + "tape7.csv", tape.frames);
  writeCsv(out + "tape8.csv", copy.frames);
  VideoResult big = sampleInput("masters/long.mp4", 250000, 25.0, 5);
  clearBlur(100000, 120000, &big);
  writePage(out + "big.html", {&big});
  writeCsv(out + "big.csv", big.frames);
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 2) {
    std::cerr << "usage: scanSamplePages OUTDIR\n";
    return 2;
  }
  try {
    writePages(std::string(argv[1]) + "/");
  } catch (const std::exception& error) {
    std::cerr << error.what() << "\n";
    return 1;
  }
  return 0;
}
