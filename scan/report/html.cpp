#include "scan/report/html.h"

#include <array>
#include <cstdint>
#include <memory>
#include <new>

#include "scan/files/json.h"

extern "C" {
#include <libavutil/base64.h>
#include <libavutil/mem.h>
#include <libavutil/sha.h>
}

namespace {

constexpr unsigned char FIRST_PRINTABLE = 0x20;
constexpr unsigned char DELETE_CHARACTER = 0x7f;

// U+2400 + c pictures the control character c, U+2421 the one called delete.
std::string controlPicture(unsigned char c) {
  const unsigned place = c == DELETE_CHARACTER ? 0x21U : c;
  return {'\xe2', '\x90', static_cast<char>(0x80U + place)};
}

// U+202A to U+202E and U+2066 to U+2069 turn text around: a name must not show another ending.
void replaceDirections(std::string* text) {
  for (size_t i = 0; i + 2 < text->size(); ++i) {
    const std::string_view three(text->data() + i, 3);
    const bool isEmbedding = three >= "\xe2\x80\xaa" && three <= "\xe2\x80\xae";
    const bool isIsolate = three >= "\xe2\x81\xa6" && three <= "\xe2\x81\xa9";
    if (isEmbedding || isIsolate) text->replace(i, 3, "\xef\xbf\xbd");
  }
}

}  // namespace

std::string escapeHtml(std::string_view text) {
  // The way through JSON is what replaces bytes that are no UTF-8.
  auto valid = Json::parse(shortJsonText(std::string(text))).get<std::string>();
  replaceDirections(&valid);
  std::string html;
  for (const char c : valid) {
    const auto byte = static_cast<unsigned char>(c);
    if (byte < FIRST_PRINTABLE || byte == DELETE_CHARACTER) {
      html += controlPicture(byte);
    } else if (c == '&') {
      html += "&amp;";
    } else if (c == '<') {
      html += "&lt;";
    } else if (c == '>') {
      html += "&gt;";
    } else if (c == '"') {
      html += "&quot;";
    } else if (c == '\'') {
      html += "&#39;";
    } else {
      html += c;
    }
  }
  return html;
}

std::string scriptJson(const Json& value) {
  std::string escaped;
  for (const char c : shortJsonText(value)) {
    if (c == '<') {
      escaped += "\\u003c";
    } else {
      escaped += c;
    }
  }
  return escaped;
}

std::string base64(std::string_view bytes) {
  std::string text(AV_BASE64_SIZE(bytes.size()), '\0');
  av_base64_encode(text.data(), static_cast<int>(text.size()),
                   reinterpret_cast<const uint8_t*>(bytes.data()), static_cast<int>(bytes.size()));
  text.pop_back();  // the zero byte behind it
  return text;
}

std::string sha256Base64(std::string_view bytes) {
  constexpr int BITS = 256;
  const std::unique_ptr<AVSHA, void (*)(void*)> sha(av_sha_alloc(), av_free);
  if (sha == nullptr) throw std::bad_alloc();
  av_sha_init(sha.get(), BITS);
  av_sha_update(sha.get(), reinterpret_cast<const uint8_t*>(bytes.data()), bytes.size());
  std::array<uint8_t, BITS / 8> digest{};
  av_sha_final(sha.get(), digest.data());
  return base64({reinterpret_cast<const char*>(digest.data()), digest.size()});
}
