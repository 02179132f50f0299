#include "scan/report/document.h"

#include "scan/report/html.h"

std::string documentStart(const Document& document) {
  std::string policy = "default-src 'none'; script-src";
  for (const std::string& script : document.scripts) {
    policy += " 'sha256-" + sha256Base64(script) + "'";
  }
  if (document.scripts.empty()) policy += " 'none'";
  policy += "; style-src 'sha256-" + sha256Base64(document.style) +
            "'; img-src data:; base-uri 'none'; form-action 'none'";

  // The icon is empty, so that nobody asks a server for one.
  return "<!doctype html>\n<html lang=\"en\">\n<head>\n<meta charset=\"utf-8\">\n"
         "<meta http-equiv=\"Content-Security-Policy\" content=\"" +
         policy +
         "\">\n<meta name=\"viewport\" content=\"width=device-width, initial-scale=1\">\n"
         "<meta name=\"color-scheme\" content=\"light dark\">\n"
         "<link rel=\"icon\" href=\"data:,\">\n<title>" +
         escapeHtml(document.title) + "</title>\n<style>" + document.style +
         "</style>\n</head>\n<body>\n";
}

std::string documentEnd(const Document& document) {
  std::string html;
  for (const std::string& script : document.scripts) html += "<script>" + script + "</script>\n";
  return html + "</body>\n</html>\n";
}
