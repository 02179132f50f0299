// Threads that cannot be made: the program as a whole prints what it prints with all of them.
#include <gtest/gtest.h>

#include <algorithm>
#include <random>

#include "faultyRun.h"

namespace {

constexpr size_t THREADS = 12 * 10;  // of all frames of the noise clip

// `pattern` has one character per thread, an x for each that cannot be made.
void expectSameBytes(const std::string& pattern) {
  SCOPED_TRACE(pattern);
  ASSERT_EQ(pattern.size(), THREADS);
  const TemporaryDirectory directory;
  writeNoiseClip(directory);
  const ProgramRun run =
      analyseWithFaults(directory, noiseArguments, {{"FAULTS_THREADS", pattern}});
  EXPECT_EQ(faultsMade(directory),
            static_cast<size_t>(std::count(pattern.begin(), pattern.end(), 'x')));
  expectUndisturbed(directory, run);
}

}  // namespace

TEST(ThreadFaults, changeNoByte_whenNoThreadCanBeMade) {
  expectSameBytes(std::string(THREADS, 'x'));
}

TEST(ThreadFaults, changeNoByte_whenEverySecondThreadCannotBeMade) {
  std::string even, odd;
  for (size_t k = 0; k < THREADS; k += 2) {
    even += "x-";
    odd += "-x";
  }
  expectSameBytes(even);
  expectSameBytes(odd);
}

TEST(ThreadFaults, changeNoByte_whenNoThreadCanBeMadeFromSomeMomentOn) {
  for (const size_t made : {1u, 11u, 12u, 65u})
    expectSameBytes(std::string(made, '-') + std::string(THREADS - made, 'x'));
}

// Frame 4 has other noise than frame 3, so that values left over from that would show.
TEST(ThreadFaults, changeNoByte_whenOneThreadCannotBeMade) {
  for (const size_t k : {48u, 53u, 59u}) {  // its blockiness, blur and contrast
    std::string pattern(THREADS, '-');
    pattern[k] = 'x';
    expectSameBytes(pattern);
  }
}

TEST(ThreadFaults, changeNoByte_whenThreadsCannotBeMadeAtRandom) {
  std::mt19937 random(1);
  for (int runs = 0; runs < 5; runs++) {
    std::string pattern;
    for (size_t k = 0; k < THREADS; k++) pattern += random() % 2 == 0 ? 'x' : '-';
    expectSameBytes(pattern);
  }
}
