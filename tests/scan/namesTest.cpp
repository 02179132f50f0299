// File names in messages, addresses and tables.
#include "scan/files/names.h"

#include <gtest/gtest.h>

#include <cstdio>

TEST(PrintableName, showsControlCharactersInHexadecimalDigits) {
  EXPECT_EQ(printableName("a\nb\tc\x1b[0m\x7f"), "a\\x0ab\\x09c\\x1b[0m\\x7f");
  EXPECT_EQ(printableName(std::string("\0\x1f", 2)), "\\x00\\x1f");
}

TEST(PrintableName, leavesAllOtherBytesAsTheyAre) {
  std::string others;
  for (int byte = 0x20; byte < 0x100; ++byte) {
    if (byte != 0x7f) others += static_cast<char>(byte);
  }
  EXPECT_EQ(printableName(others), others);
  EXPECT_EQ(printableName(""), "");
}

TEST(UriPath, encodesAllBytesButLettersDigitsAndFiveSigns) {
  const std::string plain = "abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789-._~/";
  for (int byte = 0; byte < 0x100; ++byte) {
    const std::string one(1, static_cast<char>(byte));
    char encoded[8];
    std::snprintf(encoded, sizeof encoded, "%%%02X", static_cast<unsigned>(byte));
    const bool isPlain = plain.find(one) != std::string::npos;
    EXPECT_EQ(uriPath(one), isPlain ? one : encoded) << byte;
  }
}

TEST(UriPath, encodesEveryByteOfALetterThatHasSeveral) {
  EXPECT_EQ(uriPath("a b/\xc3\xa4%.mp4"), "a%20b/%C3%A4%25.mp4");
  EXPECT_EQ(uriPath(""), "");
}

TEST(PathOfUri, hasTheBytesThatWereEncoded) {
  std::string all;
  for (int byte = 0; byte < 0x100; ++byte) all += static_cast<char>(byte);
  EXPECT_EQ(pathOfUri(uriPath(all)), all);
  EXPECT_EQ(pathOfUri("a%20b/%c3%A4%25.mp4"), "a b/\xc3\xa4%.mp4");
  for (const char* const text : {"", "%", "a%4", "%4g", "%+1", "% 1", "%-1"}) {
    EXPECT_EQ(pathOfUri(text), text);
  }
}

TEST(CsvField, isQuoted_whenItHasACommaAQuoteOrTheEndOfALine) {
  EXPECT_EQ(csvField("a,b"), "\"a,b\"");
  EXPECT_EQ(csvField("a \"b\""), "\"a \"\"b\"\"\"");
  EXPECT_EQ(csvField("a\nb"), "\"a\nb\"");
  EXPECT_EQ(csvField("a\rb"), "\"a\rb\"");
}

TEST(CsvField, staysAsItIs_withoutThese) {
  for (const char* const text : {"", "a b", "a;b", "a\tb", "'a'", "\xc3\xa4"}) {
    EXPECT_EQ(csvField(text), text);
  }
}
