// Writes the pages that page.mjs looks at: scanSamplePages OUTDIR. Pictures of events are taken
// from OUTDIR/thumbs/1.jpg and so on, as far as there are any.
#include <cstdio>
#include <fstream>
#include <iostream>
#include <iterator>

#include "../sample.h"
#include "scan/indexPage.h"
#include "scan/resultFacts.h"

namespace {

constexpr char HOSTILE[] = "<img src=x onerror=alert(1)>\n\"'&</script>\xff\xe2\x80\xae.mp4";

std::string contentOf(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(file), {}};
}

void write(const std::string& path, const std::string& content) {
  std::ofstream file(path, std::ios::binary);
  file << content;
  if (!file.flush()) {
    std::cerr << path << " cannot be written\n";
    std::exit(1);
  }
}

void writeCsv(const std::string& path, const FrameTable& frames) {
  FILE* const file = std::fopen(path.c_str(), "we");
  if (file == nullptr) std::exit(1);
  writeFramesCsv(frames, file);
  if (std::fclose(file) != 0) std::exit(1);
}

void addThumbnails(const std::string& folder, ReportInput* input) {
  int number = 0;
  for (const Json& event : memberOf(input->result, "events")) {
    for (const char* const key : {"first_frame", "peak_frame", "last_frame"}) {
      const std::string jpeg = contentOf(folder + "/" + std::to_string(++number) + ".jpg");
      if (!jpeg.empty()) input->thumbnails[wholeNumberOf(event, key)] = jpeg;
    }
  }
}

// out: a folder's name with a slash behind it
void writePages(const std::string& out) {
  ReportInput first = sampleInput("masters/episode one.mp4", 750, 25.0, 1);
  addThumbnails(out + "thumbs", &first);
  ReportInput second = sampleInput("copies/episode one.mxf", 900, 30000.0 / 1001.0, 2);
  second.result["verdict"] = "attention";
  second.result["reasons"] = Json::array({"blur for 2.4 s"});
  second.result["events"].erase(2);
  ReportInput clean = sampleInput("masters/titles.mov", 250, 25.0, 3);
  clean.result["verdict"] = "pass";
  clean.result["reasons"] = Json::array({"No event above information."});
  clean.result["events"] = Json::array();
  ReportInput hostile = sampleInput(HOSTILE, 100, 25.0, 4);
  hostile.result["events"][0]["type"] = HOSTILE;
  hostile.result["reasons"] = Json::array({HOSTILE});
  hostile.result["warnings"] = Json::array({HOSTILE});
  const ReportInput failed = failedInput("masters/broken.mp4");

  write(out + "report.html", renderReport({first}));
  writeCsv(out + "report.csv", first.frames);
  write(out + "compare.html", renderReport({first, second}));
  writeCsv(out + "compare.csv", second.frames);
  write(out + "clean.html", renderReport({clean}));
  write(out + "hostile.html", renderReport({hostile}));
  write(out + "failed.html", renderReport({failed}));
  write(out + "index.html", renderIndex({{clean.result, "masters/titles.mov.lumascan"},
                                         {first.result, "masters/episode%20one.mp4.lumascan"},
                                         {hostile.result, "%3Cimg.lumascan"},
                                         {failed.result, "masters/broken.mp4.lumascan"},
                                         {second.result, "copies/episode%20one.mxf.lumascan"}}));
  const ReportInput big = sampleInput("masters/long.mp4", 250000, 25.0, 5);
  write(out + "big.html", renderReport({big}));
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
