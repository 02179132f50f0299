// File names in messages, addresses and tables.
#include "scan/files/names.h"

#include <gtest/gtest.h>

#include <cstdio>

TEST(PrintableName, showsControlCharactersInHexadecimalDigits) {
  EXPECT_EQ(printableName("a\nb\tc\x1b[0m\x7f"), "a\\x0ab\\x09c\\x1b[0m\\x7f");
  EXPECT_EQ(printableName(std::string("\0\x1f", 2)), "\\x00\\x1f");
}

TEST(PrintableName, leavesLettersAsTheyAre) {
  std::string ascii;
  for (int byte = 0x20; byte < 0x7f; ++byte) ascii += static_cast<char>(byte);
  EXPECT_EQ(printableName(ascii), ascii);
  EXPECT_EQ(printableName(""), "");
  for (const char* const name :
       {"\xc3\xa4\xc3\xb6", "\xe6\x98\xa0\xe7\x94\xbb.mp4", "\xf0\x9f\x8e\xac", "\xc2\xa0",
        "\xd7\xa9\xd7\x9c", "\xe2\x80\x93"}) {
    EXPECT_EQ(printableName(name), name);
  }
}

TEST(PrintableName, showsBytesThatAreNoText) {
  EXPECT_EQ(printableName("a\xff.mp4"), "a\\xff.mp4");
  EXPECT_EQ(printableName("\x9b"
                          "31m"),
            "\\x9b31m");                      // a control sequence of one byte
  EXPECT_EQ(printableName("\xc3"), "\\xc3");  // cut
  EXPECT_EQ(printableName("\xc3(\xe2\x82"), "\\xc3(\\xe2\\x82");
  EXPECT_EQ(printableName("\xed\xa0\x80"), "\\xed\\xa0\\x80");  // half of a pair
}

TEST(PrintableName, showsWhatControlsTerminals_orTurnsText) {
  EXPECT_EQ(printableName("\xc2\x9b"
                          "31m"),
            "\\xc2\\x9b31m");  // U+009B
  EXPECT_EQ(printableName("\xc2\x80\xc2\x9f"), "\\xc2\\x80\\xc2\\x9f");
  // "gpj.exe" would be read as "exe.jpg".
  EXPECT_EQ(printableName("\xe2\x80\xaegpj.exe"), "\\xe2\\x80\\xaegpj.exe");
  for (const char* const mark : {"\xd8\x9c", "\xe2\x80\x8e", "\xe2\x80\x8f", "\xe2\x80\xa8",
                                 "\xe2\x80\xaa", "\xe2\x81\xa6", "\xe2\x81\xa9"}) {
    EXPECT_EQ(printableName(mark).substr(0, 2), "\\x") << mark;
  }
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

TEST(CsvField, isDisarmed_whereASpreadsheetWouldTakeItForAFormula) {
  EXPECT_EQ(csvField("=1+1", true), "'=1+1");
  EXPECT_EQ(csvField("=a,b", true), "\"'=a,b\"");
  for (const char* const text : {"+1", "-1", "@x", "\tx"}) {
    EXPECT_EQ(csvField(text, true), "'" + std::string(text));
    EXPECT_EQ(csvField(text), text);
  }
  EXPECT_EQ(csvField("\rx", true), "\"'\rx\"");
  for (const char* const text : {"", "a=1", "'", "1", "\xc3\xa4"}) {
    EXPECT_EQ(csvField(text, true), text);
  }
}

TEST(CsvField, staysAsItIs_withoutThese) {
  for (const char* const text : {"", "a b", "a;b", "a\tb", "'a'", "\xc3\xa4"}) {
    EXPECT_EQ(csvField(text), text);
  }
}
