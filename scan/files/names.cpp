#include "scan/files/names.h"

#include <charconv>

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

std::string pathOfUri(const std::string& uri) {
  std::string path;
  for (size_t i = 0; i < uri.size(); ++i) {
    unsigned char byte = 0;
    const char* const digits = uri.data() + i + 1;
    const bool isEncoded = uri[i] == '%' && i + 2 < uri.size() &&
                           std::from_chars(digits, digits + 2, byte, 16).ptr == digits + 2;
    path += isEncoded ? static_cast<char>(byte) : uri[i];
    if (isEncoded) i += 2;
  }
  return path;
}

std::string csvField(const std::string& text) {
  if (text.find_first_of(",\"\r\n") == std::string::npos) return text;
  std::string quoted = "\"";
  for (const char c : text) quoted += c == '"' ? "\"\"" : std::string(1, c);
  return quoted + '"';
}
