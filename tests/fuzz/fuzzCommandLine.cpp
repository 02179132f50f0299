// Any command line against what its positions and number formats are meant to be.
//
// In the input every zero byte ends an argument; the last one may go without. The first is the
// program's name.
#include <charconv>
#include <cmath>
#include <cstring>
#include <limits>
#include <memory>
#include <string>
#include <vector>

#include "driver/commandLine.h"
#include "require.h"

namespace {

std::vector<std::string> splitAtZeros(const uint8_t* data, size_t size) {
  std::vector<std::string> texts;
  bool isEnded = true;
  for (size_t i = 0; i < size; ++i) {
    if (isEnded) texts.emplace_back();
    isEnded = data[i] == 0;
    if (!isEnded) texts.back() += static_cast<char>(data[i]);
  }
  return texts;
}

// ---- numbers, digit by digit --------------------------------------------------------------------

// A text behind its white space and its sign.
struct Unsigned {
  bool isNegative;
  std::string rest;
};

Unsigned withoutSign(const std::string& text) {
  const size_t start = text.find_first_not_of(" \t\n\v\f\r");
  if (start == std::string::npos) return {false, ""};
  const bool hasSign = text[start] == '+' || text[start] == '-';
  return {text[start] == '-', text.substr(start + (hasSign ? 1 : 0))};
}

// The value of a digit, or 99.
uint64_t digitValue(char c) {
  const char* const digits = "0123456789abcdef";
  const char small = c >= 'A' && c <= 'F' ? static_cast<char>(c + ('a' - 'A')) : c;
  const char* const place = small == 0 ? nullptr : std::strchr(digits, small);
  return place == nullptr ? 99 : static_cast<uint64_t>(place - digits);
}

// Whether the text goes on with "0x" and something that makes a number of it.
bool isHexadecimal(const std::string& text, bool allowsPoint) {
  if (text.size() < 3 || text[0] != '0' || (text[1] | 0x20) != 'x') return false;
  if (digitValue(text[2]) < 16) return true;
  return allowsPoint && text[2] == '.' && text.size() > 3 && digitValue(text[3]) < 16;
}

// Number of the leading digits, `limit` when it is greater.
struct Magnitude {
  uint64_t value;
  bool isAbove;  // the limit
};

Magnitude magnitude(const std::string& digits, uint64_t base, uint64_t limit) {
  uint64_t value = 0;
  for (const char c : digits) {
    const uint64_t digit = digitValue(c);
    if (digit >= base) break;
    if (value > (limit - digit) / base) return {limit, true};
    value = value * base + digit;
  }
  return {value, false};
}

// A signed 64-bit decimal number that stops at its bounds, of which the low 32 bits count.
int32_t decimal(const std::string& text) {
  const Unsigned number = withoutSign(text);
  const uint64_t bound = (uint64_t{1} << 63) - (number.isNegative ? 0 : 1);
  const uint64_t value = magnitude(number.rest, 10, bound).value;
  return static_cast<int32_t>(static_cast<uint32_t>(number.isNegative ? 0 - value : value));
}

// An unsigned 64-bit number in hexadecimal, octal or decimal, of which the low 32 bits count. One
// that is too large becomes the largest, whatever its sign.
IndicatorMask mask(const std::string& text) {
  const Unsigned number = withoutSign(text);
  const bool isHex = isHexadecimal(number.rest, false);
  const bool isOctal = !isHex && !number.rest.empty() && number.rest[0] == '0';
  const uint64_t base = isHex ? 16 : isOctal ? 8 : 10;
  const Magnitude read = magnitude(isHex ? number.rest.substr(2) : number.rest, base, UINT64_MAX);
  const bool isNegated = number.isNegative && !read.isAbove;
  return static_cast<uint32_t>(isNegated ? 0 - read.value : read.value);
}

bool areSameBits(double a, double b) {
  return std::memcmp(&a, &b, sizeof a) == 0;
}

// Whether `value` is what the text says; of a number beyond the doubles, which side it is beyond.
bool isFrameRate(double value, const std::string& text) {
  const Unsigned number = withoutSign(text);
  const bool isHex = isHexadecimal(number.rest, true);
  const std::string digits = isHex ? number.rest.substr(2) : number.rest;
  const auto format = isHex ? std::chars_format::hex : std::chars_format::general;
  // from_chars takes a sign of its own, of which there is none left to take.
  if (!digits.empty() && digits[0] == '-') return areSameBits(value, 0.0);

  double expected = 0.0;
  const auto read = std::from_chars(digits.data(), digits.data() + digits.size(), expected, format);
  if (read.ec == std::errc::invalid_argument) return areSameBits(value, 0.0);
  if (std::signbit(value) != number.isNegative) return false;
  if (read.ec == std::errc::result_out_of_range) {
    return std::isinf(value) || std::fabs(value) < std::numeric_limits<double>::min();
  }
  return areSameBits(std::fabs(value), expected) || (std::isnan(value) && std::isnan(expected));
}

// ---- positions ----------------------------------------------------------------------------------

void requireMeaning(const RunOptions& options, const std::vector<const char*>& argv) {
  const size_t last = argv.size() - 1;  // number of arguments behind the program's name
  require(options.inputName == argv[1], "the first argument names the input");
  require(options.width == decimal(argv[2]), "the second is the width");
  require(options.height == decimal(argv[3]), "the third is the height");
  require(options.mask == (last < 4 ? 0xffff : mask(argv[4])), "the fourth is the mask, or all");
  require(last < 5 ? options.fps == 25.0 : isFrameRate(options.fps, argv[5]),
          "the fifth is the frame rate, or 25");
  require(options.hasFrameCount == (last >= 6), "a sixth limits the number of frames");
  require(options.frameCount == (last < 6 ? 0 : decimal(argv[5])), "to that in the fifth");
  require(options.startFrame == (last < 7 ? 0 : decimal(argv[6])),
          "a seventh makes the sixth the start");
}

std::vector<unsigned char> bytesOf(const RunOptions& options) {
  std::vector<unsigned char> bytes(sizeof options);
  std::memcpy(bytes.data(), &options, sizeof options);
  return bytes;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  // Every argument ends where its memory does, so that a sanitizer sees every read behind it.
  std::vector<std::unique_ptr<char[]>> copies;
  std::vector<const char*> argv;
  for (const std::string& text : splitAtZeros(data, size)) {
    copies.push_back(std::make_unique<char[]>(text.size() + 1));
    std::memcpy(copies.back().get(), text.c_str(), text.size() + 1);
    argv.push_back(copies.back().get());
  }

  RunOptions options = {"untouched", -1, -2, 3, -4.0, true, -5, -6};
  const std::vector<unsigned char> untouched = bytesOf(options);
  const bool isComplete = parseCommandLine(static_cast<int>(argv.size()), argv.data(), &options);
  require(isComplete == (argv.size() > 3), "three arguments are enough, and fewer are not");
  if (isComplete) {
    requireMeaning(options, argv);
  } else {
    require(bytesOf(options) == untouched, "options are left alone when arguments are missing");
  }
  return 0;
}
