#include "scan/files/names.h"

namespace {

std::string hexadecimal(unsigned char byte, const char* digits) {
  return {digits[byte >> 4], digits[byte & 15]};
}

bool isPlainInUri(char c) {
  return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '-' ||
         c == '.' || c == '_' || c == '~' || c == '/';
}

}  // namespace

std::string printableName(const std::string& name) {
  constexpr unsigned char FIRST_PRINTABLE = 0x20;
  constexpr unsigned char DELETE = 0x7f;
  std::string text;
  for (const char c : name) {
    const auto byte = static_cast<unsigned char>(c);
    const bool isControl = byte < FIRST_PRINTABLE || byte == DELETE;
    text += isControl ? "\\x" + hexadecimal(byte, "0123456789abcdef") : std::string(1, c);
  }
  return text;
}

std::string uriPath(const std::string& path) {
  std::string text;
  for (const char c : path) {
    const auto byte = static_cast<unsigned char>(c);
    text += isPlainInUri(c) ? std::string(1, c) : '%' + hexadecimal(byte, "0123456789ABCDEF");
  }
  return text;
}

std::string csvField(const std::string& text) {
  if (text.find_first_of(",\"\r\n") == std::string::npos) return text;
  std::string quoted = "\"";
  for (const char c : text) quoted += c == '"' ? "\"\"" : std::string(1, c);
  return quoted + '"';
}
