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
  std::string body;                  // HTML
  std::vector<std::string> scripts;  // run in this order, at the end of the body
};

// The document's policy lets exactly these scripts and this style run, and images only as data.
std::string renderDocument(const Document& document);

#endif
