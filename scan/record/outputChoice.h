// Which files a folder of results gets beside result.json.
#ifndef LUMASCAN_OUTPUT_CHOICE_H
#define LUMASCAN_OUTPUT_CHOICE_H

enum class Thumbs { NONE, EVENTS, ALL };

const char* thumbsName(Thumbs thumbs);  // "none", "events", "all"

struct OutputChoice {
  bool hasCsv = true;
  bool hasHtml = true;
  Thumbs thumbs = Thumbs::EVENTS;
};

inline bool operator==(const OutputChoice& a, const OutputChoice& b) {
  return a.hasCsv == b.hasCsv && a.hasHtml == b.hasHtml && a.thumbs == b.thumbs;
}

#endif
