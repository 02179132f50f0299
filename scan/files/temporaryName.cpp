#include "scan/files/temporaryName.h"

#include <fmt/core.h>
#include <sys/random.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <charconv>
#include <csignal>
#include <cstdint>
#include <fstream>
#include <string_view>

namespace {

constexpr std::string_view MARK = ".lumascan-";
constexpr std::string_view ENDING = ".part";
constexpr size_t NUMBER_DIGITS = 16;  // hexadecimal

// This machine's name, without what does not belong into the name of a file.
std::string machine() {
  char name[64] = {};
  gethostname(name, sizeof name - 1);
  std::string text = name;
  for (char& c : text) {
    const bool isPlain = (c >= '0' && c <= '9') || (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z');
    if (!isPlain) c = '_';
  }
  return text;
}

bool endsWith(std::string_view text, std::string_view ending) {
  return text.size() >= ending.size() && text.substr(text.size() - ending.size()) == ending;
}

// Takes what stands behind the last "-" off; empty where there is none.
std::string_view takeLast(std::string_view* text) {
  const size_t hyphen = text->rfind('-');
  if (hyphen == std::string_view::npos) return {};
  const std::string_view last = text->substr(hyphen + 1);
  text->remove_suffix(text->size() - hyphen);
  return last;
}

// Whether a process of this machine is there, and more than a zombie, which writes no more.
bool isRunning(pid_t process) {
  std::ifstream file("/proc/" + std::to_string(process) + "/stat");
  std::string text;
  if (!std::getline(file, text)) return kill(process, 0) == 0 || errno != ESRCH;
  const size_t name = text.rfind(')');  // its state follows
  return name == std::string::npos || name + 2 >= text.size() ||
         (text[name + 2] != 'Z' && text[name + 2] != 'X');
}

bool isNumber(std::string_view text) {
  return text.size() == NUMBER_DIGITS &&
         text.find_first_not_of("0123456789abcdef") == std::string_view::npos;
}

}  // namespace

std::string temporaryName(const std::string& name) {
  constexpr size_t MOST = 100;  // bytes of the name, so that the whole is none too long
  uint64_t number = 0;
  if (getrandom(&number, sizeof number, 0) < 0) number = 0;  // the file is not made over another
  return fmt::format(".{}{}{}-{}-{:016x}{}", name.substr(0, MOST), MARK, machine(), getpid(),
                     number, ENDING);
}

bool isLeftover(const std::string& name, std::time_t touched, std::time_t now) {
  constexpr std::time_t DAY = 24 * 3600;
  if (name[0] != '.' || !endsWith(name, ENDING)) return false;
  std::string_view rest = std::string_view(name).substr(0, name.size() - ENDING.size());
  if (!isNumber(takeLast(&rest))) return false;
  const std::string_view digits = takeLast(&rest);
  pid_t process = 0;
  const auto [end, error] = std::from_chars(digits.data(), digits.data() + digits.size(), process);
  if (error != std::errc() || end != digits.data() + digits.size() || process <= 0) return false;
  const size_t mark = rest.rfind(MARK);
  if (mark == std::string_view::npos) return false;
  const bool isHere = rest.substr(mark + MARK.size()) == machine();
  const bool isDead = isHere && !isRunning(process);
  return isDead || now - touched >= DAY;
}
