// Files that are opened once, whatever becomes of their names.
#include "scan/files/inputFile.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>
#include <thread>

#include "openFiles.h"
#include "support/runProgram.h"

namespace fs = std::filesystem;

namespace {

std::string textAt(const InputFile& file, int64_t place, size_t size) {
  std::string text(size, '\0');
  const ssize_t count = readAt(file, place, text.data(), size);
  EXPECT_GE(count, 0);
  text.resize(static_cast<size_t>(std::max(ssize_t{0}, count)));
  return text;
}

std::string restOf(const InputFile& file) {
  std::string text;
  char bytes[5];
  for (ssize_t count = 1; count > 0;) {
    count = readNext(file, bytes, sizeof bytes, [](double) { return true; });
    EXPECT_GE(count, 0);
    if (count > 0) text.append(bytes, static_cast<size_t>(count));
  }
  return text;
}

}  // namespace

TEST(InputFile, isReadAnywhere) {
  const TemporaryDirectory directory;
  writeFile(directory.path + "/file", "0123456789");
  const OpenInput file = openInput(directory.path + "/file");
  EXPECT_EQ(file->error, "");
  EXPECT_TRUE(file->isRegular);
  EXPECT_EQ(fileSize(*file), 10);
  EXPECT_EQ(textAt(*file, 3, 4), "3456");
  EXPECT_EQ(textAt(*file, 0, 2), "01");
  EXPECT_EQ(textAt(*file, 8, 100), "89");
  EXPECT_EQ(textAt(*file, 10, 1), "");
  EXPECT_EQ(textAt(*file, 1000, 1), "");
}

TEST(InputFile, staysTheSame_whateverBecomesOfItsName) {
  const TemporaryDirectory directory;
  const std::string path = directory.path + "/file";
  writeFile(path, "first");
  const OpenInput file = openInput(path);
  fs::rename(path, directory.path + "/other");
  writeFile(path, "second");
  EXPECT_EQ(textAt(*file, 0, 100), "first");
  fs::remove(directory.path + "/other");
  EXPECT_EQ(textAt(*file, 0, 100), "first");
}

TEST(InputFile, saysWhyItCannotBeOpened) {
  const TemporaryDirectory directory;
  writeFile(directory.path + "/file", "");
  EXPECT_EQ(openInput(directory.path + "/missing")->error, "No such file or directory");
  EXPECT_EQ(openInput(directory.path + "/file/x")->error, "Not a directory");
  EXPECT_EQ(openInput(directory.path)->error, "Is a directory");
  fs::create_symlink("loop", directory.path + "/loop");
  EXPECT_EQ(openInput(directory.path + "/loop")->error, "Too many levels of symbolic links");
  EXPECT_FALSE(openInput(directory.path)->isRegular);
}

TEST(InputFile, ofAPipeDoesNotWaitForItsWriter_butItsBytesDo) {
  const TemporaryDirectory directory;
  const std::string path = directory.path + "/pipe";
  ASSERT_EQ(mkfifo(path.c_str(), 0600), 0);
  const OpenInput file = openInput(path);
  EXPECT_EQ(file->error, "");
  EXPECT_FALSE(file->isRegular);
  std::thread writer([&] {
    std::this_thread::sleep_for(std::chrono::milliseconds(50));
    const int pipe = open(path.c_str(), O_WRONLY | O_CLOEXEC);
    EXPECT_EQ(write(pipe, "first ", 6), 6);
    std::this_thread::sleep_for(std::chrono::milliseconds(50));
    EXPECT_EQ(write(pipe, "and second", 10), 10);
    close(pipe);
  });
  EXPECT_EQ(restOf(*file), "first and second");
  writer.join();
}

TEST(InputFile, ofASilentPipeIsGivenUp_whenItMayNotBeWaitedForAnyLonger) {
  const TemporaryDirectory directory;
  const std::string path = directory.path + "/pipe";
  ASSERT_EQ(mkfifo(path.c_str(), 0600), 0);
  const OpenInput file = openInput(path);
  std::vector<double> silences;
  const auto mayWait = [&](double silence) {
    silences.push_back(silence);
    return silence < 0.25;
  };
  char byte = 0;
  EXPECT_EQ(readNext(*file, &byte, 1, mayWait), -1);
  EXPECT_EQ(errno, ECANCELED);
  EXPECT_EQ(silences, (std::vector<double>{0.0, 0.1, 0.2, 0.3}));
}

TEST(InputFile, ofADeviceHasNoPlaces) {
  const OpenInput file = openInput("/dev/zero");
  EXPECT_FALSE(file->isRegular);
  char bytes[3] = {1, 1, 1};
  EXPECT_EQ(readNext(*file, bytes, 3, [](double) { return true; }), 3);
  EXPECT_EQ(bytes[2], 0);
}

TEST(InputFile, isClosedWithItsLastOwner) {
  const TemporaryDirectory directory;
  writeFile(directory.path + "/file", "x");
  const size_t before = openFiles();
  {
    OpenInput file = openInput(directory.path + "/file");
    const OpenInput second = file;
    file.reset();
    EXPECT_EQ(openFiles(), before + 1);
    EXPECT_EQ(textAt(*second, 0, 1), "x");
    openInput(directory.path);
    openInput(directory.path + "/missing");
    EXPECT_EQ(openFiles(), before + 1);
  }
  EXPECT_EQ(openFiles(), before);
}
