// Included ahead of every source of lumascan when changes are built into it: which of them is made.
#ifndef LUMAPROBE_MUTANTS_SWITCHED_H
#define LUMAPROBE_MUTANTS_SWITCHED_H

#include <fcntl.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>

namespace mutants {

inline int numberMade() {
  const char* const text = std::getenv("MUTANT");
  return text == nullptr ? -1 : std::atoi(text);
}

// Of the change made in this process, counted from 1; before it is set, none is made.
inline const int made = numberMade();
// The file that gets the number of every change that is come by, once per process.
inline const char* const record = std::getenv("MUTANT_RECORD");
inline bool isRecorded[100000];

inline void noteComeBy(int number) {
  if (isRecorded[number]) return;
  isRecorded[number] = true;
  const int file = ::open(record, O_WRONLY | O_APPEND | O_CREAT | O_CLOEXEC, 0666);
  if (file < 0) return;
  char line[16];
  const int length = std::snprintf(line, sizeof line, "%d\n", number);
  if (::write(file, line, static_cast<size_t>(length)) < 0) isRecorded[number] = false;
  ::close(file);
}

inline bool isMade(int number) {
  if (record != nullptr) noteComeBy(number);
  return number == made;
}

}  // namespace mutants

#endif
