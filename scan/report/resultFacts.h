// What the record of a result says, in forms that pages show.
#ifndef LUMASCAN_RESULT_FACTS_H
#define LUMASCAN_RESULT_FACTS_H

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

#include "scan/record/videoResult.h"

const char* verdictTitle(Verdict verdict);  // "Incomplete", "Fail", "Attention", "Pass"

// The last part of the path.
std::string nameOf(const ResultRecord& record);

double frameRateOf(const ResultRecord& record);  // that of the analysis, else the file's; NaN
// Seconds: what was analysed, else what the file says; NaN.
double durationOf(const ResultRecord& record);

// Whether an indicator says something in some frames only, by its nature: flickering, once in
// eight.
bool isSparse(size_t indicator);

// An event type or the like for readers: "block_loss" is "block loss".
std::string words(std::string_view key);

// A number with four significant digits; an en dash for NaN.
std::string roughText(double value);

struct Fact {
  const char* title;
  std::string text;  // not HTML
};

// All facts of the file and its analysis that are known, in the order of the page.
std::vector<Fact> factsOf(const ResultRecord& record);

#endif
