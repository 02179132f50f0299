// The user's language settings, which change no digit.
#include <gtest/gtest.h>
#include <stdlib.h>

#include "faultyRun.h"

// With a locale made for it, so that the machine need not have any.
TEST(Locale, leavesTheDecimalPoint_whenItWritesACommaElsewhere) {
  const TemporaryDirectory locales;
  ASSERT_EQ(
      runProgram("/usr/bin/localedef",
                 {"--no-archive", "-i", "de_DE", "-f", "UTF-8", locales.path + "/de_DE.UTF-8"},
                 locales.path)
          .status,
      0)
      << "is the package locales installed?";
  const auto speakGerman = [&] {
    setenv("LOCPATH", locales.path.c_str(), 1);
    for (const char* name : {"LC_ALL", "LC_NUMERIC", "LANG"}) setenv(name, "de_DE.UTF-8", 1);
  };
  // The settings do reach programs that heed them.
  ASSERT_EQ(
      runProgram("/usr/bin/printf", {"%.2f", "1"}, locales.path, "/dev/null", speakGerman).out,
      "1,00");

  const TemporaryDirectory directory;
  writeFlatClip(directory, {10, 13});
  const std::vector<Row> rows = {flatRow(0, 10), flatRow(1, 13, "3.00000")};
  // The frame rate is read with a point, too.
  const ProgramRun run =
      analyse(directory, {"clip.yuv", "32", "32", "0x7fff", "12.5"}, "/dev/null", speakGerman);
  expectRun(run, 0,
            startMessages("clip.yuv", 32, 32, "12.50", 2, 0) + consoleHeader + consoleRows(rows) +
                closing,
            "");
  EXPECT_EQ(readReport(directory), reportHeader + reportRows(rows));
}
