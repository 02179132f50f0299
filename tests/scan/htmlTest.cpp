// Escapes, and encodings against known answers.
#include "scan/report/html.h"

#include <gtest/gtest.h>

#include "pageParts.h"
#include "scan/files/json.h"

TEST(EscapeHtml, leavesNothingThatHtmlReads) {
  EXPECT_EQ(escapeHtml("<a href=\"x\" id='y'>&amp;"),
            "&lt;a href=&quot;x&quot; id=&#39;y&#39;&gt;&amp;amp;");
  EXPECT_EQ(escapeHtml(""), "");
  EXPECT_EQ(escapeHtml("gr\xc3\xbc\xc3\x9f \xf0\x9f\x8e\xac"),
            "gr\xc3\xbc\xc3\x9f \xf0\x9f\x8e\xac");
}

TEST(EscapeHtml, picturesControlCharacters) {
  // U+240A, U+2400, U+241B, U+2421.
  EXPECT_EQ(escapeHtml("a\nb"), "a\xe2\x90\x8a\x62");
  EXPECT_EQ(escapeHtml(std::string_view("\0\x1b\x7f", 3)), "\xe2\x90\x80\xe2\x90\x9b\xe2\x90\xa1");
}

TEST(EscapeHtml, replacesBytesThatAreNoUtf8) {
  EXPECT_EQ(escapeHtml("a\xff\x62"), "a\xef\xbf\xbd\x62");
  EXPECT_EQ(escapeHtml("a\xc3"), "a\xef\xbf\xbd");      // cut off
  EXPECT_FALSE(contains(escapeHtml("\xc0\xbc"), "<"));  // "<" in more bytes than it takes
}

TEST(EscapeHtml, replacesWhatTurnsTheDirectionOfReading) {
  for (const char* const turn : {"\xe2\x80\xaa", "\xe2\x80\xae", "\xe2\x81\xa6", "\xe2\x81\xa9"}) {
    EXPECT_EQ(escapeHtml(std::string("a") + turn + "b"), "a\xef\xbf\xbd\x62");
  }
  // Their neighbours are dashes and spaces.
  for (const char* const other : {"\xe2\x80\xa9", "\xe2\x80\xaf", "\xe2\x81\xa5", "\xe2\x81\xaa"}) {
    EXPECT_EQ(escapeHtml(other), other);
  }
}

TEST(ScriptJson, holdsNoBeginningOfATag) {
  const Json value = {{"</script>", "<!--"}, {"n", 1.5}};
  const std::string text = scriptJson(value);
  EXPECT_FALSE(contains(text, "<"));
  EXPECT_EQ(Json::parse(text), value);
  EXPECT_EQ(scriptJson("a\xff"), "\"a\xef\xbf\xbd\"");
}

TEST(Base64, ofKnownTexts) {
  // RFC 4648, 10.
  EXPECT_EQ(base64(""), "");
  EXPECT_EQ(base64("f"), "Zg==");
  EXPECT_EQ(base64("fo"), "Zm8=");
  EXPECT_EQ(base64("foo"), "Zm9v");
  EXPECT_EQ(base64("foob"), "Zm9vYg==");
  EXPECT_EQ(base64("fooba"), "Zm9vYmE=");
  EXPECT_EQ(base64("foobar"), "Zm9vYmFy");
  EXPECT_EQ(base64("\xff\xff\xbe"), "//++");
}

TEST(Sha256, ofKnownTexts) {
  // FIPS 180-2, B.1: ba7816bf 8f01cfea 414140de 5dae2223 b00361a3 96177a9c b410ff61 f20015ad.
  EXPECT_EQ(sha256Base64("abc"), "ungWv48Bz+pBQUDeXa4iI7ADYaOWF3qctBD/YfIAFa0=");
  EXPECT_EQ(sha256Base64(""), "47DEQpj8HBSa+/TImW+5JCeuQeRkm5NMpJWZG3hSuFU=");
}
