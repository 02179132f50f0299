// One HTML document that needs and is allowed nothing from outside.
#ifndef LUMASCAN_DOCUMENT_H
#define LUMASCAN_DOCUMENT_H

#include <string>
#include <string_view>
#include <vector>

// Styles and scripts must not hold "</style" or "</script", nor CR.
struct Document {
  std::string title;  // text
  std::string style;
  std::vector<std::string> scripts;  // run in this order, at the end of the body
};

// What stands before the body's HTML and behind it. The document's policy lets exactly these
// scripts and this style run, and images only as data.
std::string documentStart(const Document& document);
std::string documentEnd(const Document& document);

#endif
