#include "pageParts.h"

#include <gtest/gtest.h>
#include <zlib.h>

#include <cstdlib>

std::string writtenText(const std::function<void(FILE*)>& write) {
  char* bytes = nullptr;
  size_t size = 0;
  FILE* const stream = open_memstream(&bytes, &size);
  write(stream);
  std::fclose(stream);
  std::string text(bytes, size);
  std::free(bytes);
  return text;
}

std::vector<std::string> allBetween(const std::string& text, const std::string& begin,
                                    const std::string& end) {
  std::vector<std::string> parts;
  size_t place = text.find(begin);
  while (place != std::string::npos) {
    const size_t first = place + begin.size();
    const size_t last = text.find(end, first);
    if (last == std::string::npos) break;
    parts.push_back(text.substr(first, last - first));
    place = text.find(begin, last);
  }
  return parts;
}

std::string between(const std::string& text, const std::string& begin, const std::string& end) {
  const std::vector<std::string> parts = allBetween(text, begin, end);
  EXPECT_FALSE(parts.empty()) << "nothing between " << begin << " and " << end;
  return parts.empty() ? "" : parts.front();
}

bool contains(const std::string& text, const std::string& part) {
  return text.find(part) != std::string::npos;
}

std::string unbase64(const std::string& text) {
  const std::string digits = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
  std::string bytes;
  unsigned bits = 0;
  int known = 0;
  for (const char c : text) {
    if (c == '=') break;
    bits = (bits << 6 | static_cast<unsigned>(digits.find(c))) & 0xffffU;
    known += 6;
    if (known < 8) continue;
    known -= 8;
    bytes += static_cast<char>(bits >> known & 0xffU);
  }
  return bytes;
}

std::string inflated(const std::string& stream, size_t size) {
  std::string bytes(size + 1, '\0');  // one more, to see that there is no more
  uLongf length = bytes.size();
  EXPECT_EQ(uncompress(reinterpret_cast<Bytef*>(bytes.data()), &length,
                       reinterpret_cast<const Bytef*>(stream.data()), stream.size()),
            Z_OK);
  EXPECT_EQ(length, size);
  bytes.resize(length);
  return bytes;
}
