#include "scan/report/pagePieces.h"

#include <algorithm>

#include "scan/numbers/decimals.h"
#include "scan/report/html.h"
#include "scan/report/resultFacts.h"

std::string colourClass(size_t place) {
  constexpr int COLOURS = 8;
  return "i" + std::to_string(place % COLOURS);
}

std::string nameHtml(const Source& source) {
  std::string name = nameOf(source.input->record);
  if (name.empty()) name = "input " + std::to_string(source.place + 1);
  return "<bdi class=\"name\">" + escapeHtml(name) + "</bdi>";
}

std::string keyHtml(const Source& source) {
  return "<span class=\"key " + colourClass(source.place) + "\"></span>" + nameHtml(source);
}

std::string percentOf(double time, const TimeSpan& span) {
  char text[32];
  const double part = (time - span.start) / (span.end - span.start);
  std::snprintf(text, sizeof text, "%.4f%%", 100.0 * std::clamp(part, 0.0, 1.0));
  return text;
}

std::string numberCell(double value, const std::string& text) {
  return "<td class=\"n\" data-v=\"" + shortestText(value) + "\">" + text + "</td>";
}
