// Output files: whole under their name, or not at all.
#include "scan/files/outputFile.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <cstring>
#include <filesystem>
#include <vector>

#include "openFiles.h"
#include "support/runProgram.h"

namespace {

int filesIn(const TemporaryDirectory& directory) {
  const std::filesystem::directory_iterator files(directory.path);
  return static_cast<int>(std::distance(begin(files), end(files)));
}

// Puts an open descriptor in the place of a stream's own.
void redirect(FILE* stream, int descriptor) {
  ASSERT_GE(descriptor, 0);
  ASSERT_GE(dup2(descriptor, fileno(stream)), 0);
  close(descriptor);
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

TEST(OutputFile, leavesNothing_whenItIsGivenUpWithoutAWord) {
  const TemporaryDirectory directory;
  const size_t before = openFiles();
  {
    OutputFile file;
    ASSERT_TRUE(openOutput(directory.path + "/rows.tsv", &file));
    EXPECT_EQ(filesIn(directory), 1);
  }
  EXPECT_EQ(filesIn(directory), 0);
  EXPECT_EQ(openFiles(), before);
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
    EXPECT_EQ(error, EFBIG);
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
    redirect(out, open("/dev/full", O_WRONLY | O_CLOEXEC));
    std::fputs("new", out);
  };
  EXPECT_EQ(writeOutput(path, write), "cannot write \"" + path + "\": No space left on device");
  EXPECT_EQ(filesIn(directory), 0);
}

TEST(WriteOutput, saysWhyAndLeavesTheOldOne_whenTheDiskDoesNotTakeIt) {
  const TemporaryDirectory directory;
  const std::string path = directory.path + "/page.html";
  writeFile(path, "old");
  // A pipe takes all bytes, but has no disk that they could be brought to.
  int ends[2];
  ASSERT_EQ(pipe2(ends, O_CLOEXEC), 0);
  const auto write = [&](FILE* out) {
    redirect(out, ends[1]);
    std::fputs("new", out);
  };
  EXPECT_EQ(writeOutput(path, write), "cannot write \"" + path + "\": Invalid argument");
  close(ends[0]);
  EXPECT_EQ(readFile(path), "old");
  EXPECT_EQ(filesIn(directory), 1);
}

TEST(WriteOutput, leavesNoFileOpen_whateverComesOfIt) {
  const TemporaryDirectory directory;
  std::filesystem::create_directory(directory.path + "/folder");
  const size_t before = openFiles();
  const auto write = [](FILE* out) { std::fputs("new", out); };
  const auto fill = [](FILE* out) {
    redirect(out, open("/dev/full", O_WRONLY | O_CLOEXEC));
    for (int i = 0; i < 100000; ++i) std::fputc('x', out);  // more than the stream holds back
  };
  EXPECT_EQ(writeOutput(directory.path + "/page.html", write), "");
  EXPECT_NE(writeOutput(directory.path + "/folder", write), "");
  EXPECT_NE(writeOutput(directory.path + "/page.html", fill), "");
  EXPECT_NE(writeOutput(directory.path + "/missing/page.html", write), "");
  OutputFile file;
  ASSERT_TRUE(openOutput(directory.path + "/page.html", &file));
  discardOutput(&file);
  EXPECT_EQ(openFiles(), before);
}

TEST(WriteOutput, saysThatThereWasAnError_whenItsReasonIsOver) {
  const TemporaryDirectory directory;
  const std::string path = directory.path + "/page.html";
  // The disk was full, and is not any more.
  const auto write = [](FILE* out) {
    const int own = dup(fileno(out));
    redirect(out, open("/dev/full", O_WRONLY | O_CLOEXEC));
    std::fputs("new", out);
    EXPECT_NE(std::fflush(out), 0);
    redirect(out, own);
  };
  EXPECT_EQ(writeOutput(path, write), "cannot write \"" + path + "\": Input/output error");
  EXPECT_EQ(filesIn(directory), 0);
}

TEST(OutputFile, takesNoPlaceOfAnother_andFollowsNoLink) {
  const TemporaryDirectory directory;
  const std::string other = directory.path + "/other";
  writeFile(other, "mine");
  // A link in the place of the result gives way; what it leads to stays.
  std::filesystem::create_symlink(other, directory.path + "/rows.tsv");
  EXPECT_EQ(writeOutput(directory.path + "/rows.tsv", [](FILE* out) { std::fputs("new", out); }),
            "");
  EXPECT_EQ(readFile(other), "mine");
  EXPECT_FALSE(std::filesystem::is_symlink(directory.path + "/rows.tsv"));
  EXPECT_EQ(readFile(directory.path + "/rows.tsv"), "new");
}

TEST(OutputFile, staysInItsFolder_whateverBecomesOfTheFoldersName) {
  const TemporaryDirectory directory;
  std::filesystem::create_directories(directory.path + "/first");
  OutputFile file;
  ASSERT_TRUE(openOutput(directory.path + "/first/rows.tsv", &file));
  std::fputs("new", file.stream);
  std::filesystem::rename(directory.path + "/first", directory.path + "/moved");
  std::filesystem::create_directories(directory.path + "/first");
  EXPECT_TRUE(commitOutput(&file));
  EXPECT_EQ(readFile(directory.path + "/moved/rows.tsv"), "new");
  EXPECT_TRUE(std::filesystem::is_empty(directory.path + "/first"));
}

TEST(OutputFile, mayHaveAsLongANameAsThereCanBe) {
  const TemporaryDirectory directory;
  const std::string path = directory.path + "/" + std::string(255, 'x');
  EXPECT_EQ(writeOutput(path, [](FILE* out) { std::fputs("new", out); }), "");
  EXPECT_EQ(readFile(path), "new");
}

TEST(WriteOutput, saysOfWholeDisks_thatNothingElseCanBeWritten) {
  for (const int code : {ENOSPC, EDQUOT, EROFS, EIO}) {
    EXPECT_TRUE(isOfWholeDisk(std::string("cannot write \"a\": ") + std::strerror(code))) << code;
  }
  for (const int code : {EACCES, EISDIR, ENOENT, EFBIG, ENAMETOOLONG, EMFILE}) {
    EXPECT_FALSE(isOfWholeDisk(std::string("cannot write \"a\": ") + std::strerror(code))) << code;
  }
  EXPECT_FALSE(isOfWholeDisk(""));
  EXPECT_FALSE(isOfWholeDisk("cannot write \"No space left on device\": Is a directory"));
}

TEST(RemoveLeftovers, removesWhatADeadProcessHasLeft_andNothingThatIsBeingWritten) {
  const TemporaryDirectory directory;
  const pid_t dead = fork();
  if (dead == 0) {
    OutputFile file;
    _exit(openOutput(directory.path + "/rows.tsv", &file) ? 0 : 1);
  }
  OutputFile living;
  ASSERT_TRUE(openOutput(directory.path + "/rows.tsv", &living));
  int status = -1;
  waitpid(dead, &status, 0);
  ASSERT_EQ(status, 0);
  ASSERT_EQ(filesIn(directory), 2);
  removeLeftovers(directory.path);
  EXPECT_EQ(filesIn(directory), 1);
  EXPECT_TRUE(commitOutput(&living));
}

TEST(RemoveLeftovers, removesNothingElse) {
  const TemporaryDirectory directory;
  const std::vector<std::string> names = {"holiday.part1",  "rows.tsv.part123",
                                          ".rows.tsv.part", "film.part",
                                          ".lumascan-",     "x.lumascan-a-1-2.part"};
  for (const std::string& name : names) {
    writeFile(directory.path + "/" + name, "");
    std::filesystem::last_write_time(
        directory.path + "/" + name,
        std::filesystem::file_time_type::clock::now() - std::chrono::hours(1000));
  }
  const std::string form = ".a.lumascan-there-7-0123456789abcdef.part";
  std::filesystem::create_directory(directory.path + "/" + form);
  removeLeftovers(directory.path);
  for (const std::string& name : names) {
    EXPECT_TRUE(std::filesystem::exists(directory.path + "/" + name)) << name;
  }
  EXPECT_TRUE(std::filesystem::is_directory(directory.path + "/" + form));
}

TEST(RemoveLeftovers, doesNothing_whereThereIsNoFolder) {
  const TemporaryDirectory directory;
  removeLeftovers(directory.path + "/missing");
  EXPECT_EQ(filesIn(directory), 0);
}
