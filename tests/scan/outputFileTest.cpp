// Output files: whole under their name, or not at all.
#include "scan/files/outputFile.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/resource.h>
#include <unistd.h>

#include <cerrno>
#include <filesystem>
#include <vector>

#include "support/runProgram.h"

namespace {

int filesIn(const TemporaryDirectory& directory) {
  const std::filesystem::directory_iterator files(directory.path);
  return static_cast<int>(std::distance(begin(files), end(files)));
}

}  // namespace

TEST(OutputFile, appearsWhenItIsCommitted) {
  const TemporaryDirectory directory;
  const std::string path = directory.path + "/rows.tsv";
  writeFile(path, "old");
  OutputFile file;
  ASSERT_TRUE(openOutput(path, &file));
  std::fputs("new", file.stream);
  std::fflush(file.stream);
  EXPECT_EQ(readFile(path), "old");
  EXPECT_EQ(filesIn(directory), 2);
  EXPECT_TRUE(commitOutput(&file));
  EXPECT_EQ(readFile(path), "new");
  EXPECT_EQ(filesIn(directory), 1);
}

TEST(OutputFile, leavesNothing_whenItIsDiscarded) {
  const TemporaryDirectory directory;
  OutputFile file;
  ASSERT_TRUE(openOutput(directory.path + "/rows.tsv", &file));
  std::fputs("new", file.stream);
  discardOutput(&file);
  EXPECT_EQ(filesIn(directory), 0);
}

TEST(OutputFile, takesANameWithoutFolder) {
  const TemporaryDirectory directory;
  std::filesystem::current_path(directory.path);
  OutputFile file;
  ASSERT_TRUE(openOutput("rows.tsv", &file));
  EXPECT_TRUE(commitOutput(&file));
  EXPECT_EQ(filesIn(directory), 1);
  std::filesystem::current_path("/");
}

TEST(OutputFile, cannotBeCreated_whereThereIsNoFolder) {
  const TemporaryDirectory directory;
  OutputFile file;
  EXPECT_FALSE(openOutput(directory.path + "/missing/rows.tsv", &file));
  EXPECT_EQ(errno, ENOENT);
}

TEST(OutputFile, leavesTheOldOne_whenItCannotTakeTheName) {
  const TemporaryDirectory directory;
  std::filesystem::create_directory(directory.path + "/rows.tsv");
  OutputFile file;
  ASSERT_TRUE(openOutput(directory.path + "/rows.tsv", &file));
  EXPECT_FALSE(commitOutput(&file));
  EXPECT_EQ(errno, EISDIR);
  EXPECT_EQ(filesIn(directory), 1);
}

TEST(OutputFile, leavesTheOldOne_whenTheDiskIsFull) {
  // A limit on the size of files fails as a full disk does: at any write, or at the last.
  signal(SIGXFSZ, SIG_IGN);
  rlimit before;
  ASSERT_EQ(getrlimit(RLIMIT_FSIZE, &before), 0);
  for (const size_t bytes : {size_t{2000}, size_t{100000}}) {
    const TemporaryDirectory directory;
    const std::string path = directory.path + "/rows.tsv";
    writeFile(path, "old");
    const rlimit limit = {1000, before.rlim_max};
    ASSERT_EQ(setrlimit(RLIMIT_FSIZE, &limit), 0);
    OutputFile file;
    ASSERT_TRUE(openOutput(path, &file));
    for (size_t i = 0; i < bytes; ++i) std::fputc('x', file.stream);
    const bool isCommitted = commitOutput(&file);
    const int error = errno;
    ASSERT_EQ(setrlimit(RLIMIT_FSIZE, &before), 0);
    EXPECT_FALSE(isCommitted) << bytes;
    EXPECT_EQ(error, bytes == 2000 ? EFBIG : EIO);
    EXPECT_EQ(readFile(path), "old");
    EXPECT_EQ(filesIn(directory), 1);
  }
}

TEST(WriteOutput, makesAWholeFile) {
  const TemporaryDirectory directory;
  const std::string path = directory.path + "/page.html";
  writeFile(path, "an old page");
  EXPECT_EQ(writeOutput(path, [](FILE* out) { std::fputs("new", out); }), "");
  EXPECT_EQ(readFile(path), "new");
  EXPECT_EQ(filesIn(directory), 1);
}

TEST(WriteOutput, saysWhy_whereThereIsNoFolder) {
  const TemporaryDirectory directory;
  bool isWritten = false;
  const std::string path = directory.path + "/missing/a\nb.html";
  EXPECT_EQ(
      writeOutput(path, [&](FILE*) { isWritten = true; }),
      "cannot write \"" + directory.path + "/missing/a\\x0ab.html\": No such file or directory");
  EXPECT_FALSE(isWritten);
}

TEST(WriteOutput, saysWhyAndLeavesNothing_whenAWriteFails) {
  const TemporaryDirectory directory;
  const std::string path = directory.path + "/page.html";
  // The device that is always full, in the place of the file's own descriptor.
  const auto write = [](FILE* out) {
    const int full = open("/dev/full", O_WRONLY | O_CLOEXEC);
    ASSERT_GE(full, 0);
    ASSERT_GE(dup2(full, fileno(out)), 0);
    close(full);
    std::fputs("new", out);
  };
  EXPECT_EQ(writeOutput(path, write), "cannot write \"" + path + "\": No space left on device");
  EXPECT_EQ(filesIn(directory), 0);
}

TEST(RemoveLeftovers, removesWhatHasTheFormOfATemporaryFile) {
  const TemporaryDirectory directory;
  OutputFile file;
  ASSERT_TRUE(openOutput(directory.path + "/rows.tsv", &file));
  std::fclose(file.stream);
  writeFile(directory.path + "/page.part1", "");
  ASSERT_EQ(filesIn(directory), 2);
  removeLeftovers(directory.path);
  EXPECT_EQ(filesIn(directory), 0);
}

TEST(RemoveLeftovers, removesNothingElse) {
  const TemporaryDirectory directory;
  const std::vector<std::string> names = {"rows.tsv", "a.part",   "a.part1b", "a.part1.tsv",
                                          "a.Part1",  "a.part-1", "a.part 1", "apart1",
                                          ".part1",   "a.part1~", "a.partly", "part1"};
  for (const std::string& name : names) writeFile(directory.path + "/" + name, "");
  std::filesystem::create_directory(directory.path + "/folder.part1");
  std::filesystem::create_directory(directory.path + "/folder");
  writeFile(directory.path + "/folder/below.part1", "");
  removeLeftovers(directory.path);
  for (const std::string& name : names) {
    EXPECT_TRUE(std::filesystem::exists(directory.path + "/" + name)) << name;
  }
  EXPECT_TRUE(std::filesystem::exists(directory.path + "/folder.part1"));
  EXPECT_TRUE(std::filesystem::exists(directory.path + "/folder/below.part1"));
}

TEST(RemoveLeftovers, doesNothing_whereThereIsNoFolder) {
  const TemporaryDirectory directory;
  removeLeftovers(directory.path + "/missing");
  EXPECT_EQ(filesIn(directory), 0);
}
