// Bytes that were deflated piece by piece, inflated again.
#include "scan/report/deflatedText.h"

#include <gtest/gtest.h>

#include <random>

#include "pageParts.h"

namespace {

// The bytes, given in pieces of this size, as base64.
std::string deflated(const std::string& bytes, size_t piece) {
  return writtenText([&](FILE* out) {
    DeflatedText text(out);
    for (size_t i = 0; i < bytes.size(); i += piece) text.put(bytes.substr(i, piece));
    text.finish();
  });
}

void expectBack(const std::string& bytes) {
  for (const size_t piece : {size_t{1}, size_t{7}, size_t{4096}, size_t{1} << 20}) {
    EXPECT_EQ(inflated(unbase64(deflated(bytes, piece)), bytes.size()), bytes) << piece;
  }
}

std::string randomBytes(size_t count) {
  std::mt19937 random(1);
  std::string bytes;
  while (bytes.size() < count) bytes += static_cast<char>(random());
  return bytes;
}

}  // namespace

TEST(DeflatedText, comesBackWhole) {
  expectBack("");
  expectBack("<");
  expectBack(std::string(100000, 'x') + "<>" + std::string(1, '\0'));
}

TEST(DeflatedText, comesBackWhole_whereNothingCanBeSaved) {
  // One byte more at a time: the stream's length goes through all groups of base64.
  for (size_t count = 1; count < 7; ++count) expectBack(randomBytes(count));
  expectBack(randomBytes(100000));
}

TEST(DeflatedText, isShortAndOneRunOfBase64) {
  const std::string text = deflated(std::string(100000, 'x'), 1000);
  EXPECT_LT(text.size(), 1000U);
  const size_t end =
      text.find_first_not_of("ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/");
  EXPECT_EQ(text.substr(std::min(end, text.size())).find_first_not_of('='), std::string::npos);
  EXPECT_EQ(text.size() % 4, 0U);
}
