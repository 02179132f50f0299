#include "scan/files/names.h"

extern "C" {
#include <libavutil/avstring.h>
}

#include <charconv>
#include <cstdint>
#include <string_view>

namespace {

std::string hexadecimal(unsigned char byte, const char* digits) {
  return {digits[byte >> 4], digits[byte & 15]};
}

// Control characters of ASCII and of ISO 6429, and those that change the direction of what follows:
// with these a name can look like another one.
bool controlsTerminal(int32_t character) {
  const auto isFrom = [&](int32_t first, int32_t last) {
    return character >= first && character <= last;
  };
  return character < 0x20 || isFrom(0x7f, 0x9f) || character == 0x061c || isFrom(0x200e, 0x200f) ||
         isFrom(0x2028, 0x202e) || isFrom(0x2066, 0x2069);
}

bool isPlainInUri(char c) {
  return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '-' ||
         c == '.' || c == '_' || c == '~' || c == '/';
}

}  // namespace

std::string printableName(const std::string& name) {
  std::string text;
  const auto* place = reinterpret_cast<const uint8_t*>(name.data());
  const uint8_t* const end = place + name.size();
  while (place < end) {
    const uint8_t* const start = place;
    int32_t character = 0;
    const bool isText = av_utf8_decode(&character, &place, end, 0) >= 0;
    if (isText && !controlsTerminal(character)) {
      text.append(start, place);
      continue;
    }
    place = isText ? place : start + 1;
    for (const uint8_t* byte = start; byte < place; ++byte) {
      text += "\\x" + hexadecimal(*byte, "0123456789abcdef");
    }
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

std::string csvField(const std::string& text, bool isDisarmed) {
  constexpr std::string_view FORMULA = "=+-@\t\r\n";
  const bool isFormula = !text.empty() && FORMULA.find(text[0]) != std::string_view::npos;
  std::string cell = (isDisarmed && isFormula ? "'" : "") + text;
  if (cell.find_first_of(",\"\r\n") == std::string::npos) return cell;
  std::string quoted = "\"";
  for (const char c : cell) quoted += c == '"' ? "\"\"" : std::string(1, c);
  return quoted + '"';
}
