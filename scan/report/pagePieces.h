// Small pieces of HTML that several parts of the page are made of.
#ifndef LUMASCAN_PAGE_PIECES_H
#define LUMASCAN_PAGE_PIECES_H

#include <string>

#include "scan/report/pageContent.h"

constexpr char DASH[] = "\xe2\x80\x93";  // for what is unknown

// The class of an input's lines: i0 to i7, and from the start again.
std::string colourClass(size_t place);

// The input's name; the same behind the colour of its lines, where there is more than one.
std::string nameHtml(const Source& source);
std::string keyHtml(const Source& source);

// A time's place within the span, for an attribute: "12.5000%".
std::string percentOf(double time, const TimeSpan& span);

// A table's cell of the text, to be sorted by the value.
std::string numberCell(double value, const std::string& text);

#endif
