// Columns that are longer than a piece, held against vectors.
#include "scan/numbers/column.h"

#include <gtest/gtest.h>
#include <sys/resource.h>

#include <csignal>
#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <numeric>
#include <optional>
#include <random>
#include <system_error>

#include "openFiles.h"
#include "support/runProgram.h"

namespace {

constexpr size_t PIECE_VALUES = Pieces::PIECE / sizeof(double);

Column<double> countingTo(size_t count) {
  std::vector<double> values(count);
  std::iota(values.begin(), values.end(), 0.0);
  return values;
}

template <typename T>
void expectSame(const Column<T>& column, const std::vector<T>& expected) {
  ASSERT_EQ(column.size(), expected.size());
  size_t row = 0;
  for (const T value : column) {
    ASSERT_EQ(value, expected[row]) << row;
    ++row;
  }
}

// Reads and writes at random places, near ones more often, and grows meanwhile.
template <typename T>
void behavesAsAVector(size_t pieces) {
  std::mt19937 random(1);
  Column<T> column;
  std::vector<T> expected;
  const size_t rows = pieces * Pieces::PIECE / sizeof(T) + 5;
  while (expected.size() < rows) {
    const auto value = static_cast<T>(random());
    column.push_back(value);
    expected.push_back(value);
    if (random() % 64 != 0) continue;
    const size_t row = random() % expected.size();
    ASSERT_EQ(column[row], expected[row]) << row;
    column.set(row, value);
    expected[row] = value;
  }
  expectSame(column, expected);
}

// Sets TMPDIR as long as it lives. Columns that are made meanwhile must go before it does.
struct TemporaryFolder {
  std::optional<std::string> before;
  explicit TemporaryFolder(const std::string& folder) {
    if (const char* const value = std::getenv("TMPDIR"); value != nullptr) before = value;
    setenv("TMPDIR", folder.c_str(), 1);
    openPieceFile();
  }
  ~TemporaryFolder() {
    if (before.has_value()) {
      setenv("TMPDIR", before->c_str(), 1);
    } else {
      unsetenv("TMPDIR");
    }
    openPieceFile();
  }
  TemporaryFolder(const TemporaryFolder&) = delete;
  TemporaryFolder& operator=(const TemporaryFolder&) = delete;
};

// Bytes of the file of all columns, which is in a folder and has no name.
uintmax_t bytesIn(const std::string& folder) {
  for (const auto& entry : std::filesystem::directory_iterator("/proc/self/fd")) {
    std::error_code closed;
    const std::string target = std::filesystem::read_symlink(entry.path(), closed);
    if (target.compare(0, folder.size(), folder) == 0)
      return std::filesystem::file_size(entry.path());
  }
  return 0;
}

}  // namespace

TEST(Column, behavesAsAVector_whateverItHolds) {
  behavesAsAVector<double>(3);
  behavesAsAVector<int64_t>(3);
  behavesAsAVector<bool>(2);
}

TEST(Column, isReadForwardsBackwardsAndAcrossPieces) {
  const Column<double> column = countingTo(2 * PIECE_VALUES + 1);
  EXPECT_EQ(column.front(), 0.0);
  EXPECT_EQ(column.back(), 2.0 * PIECE_VALUES);
  for (size_t row = column.size(); row-- > 0;) ASSERT_EQ(column[row], static_cast<double>(row));
  for (size_t row = 1; row < column.size(); ++row) ASSERT_EQ(column[row] - column[row - 1], 1.0);
}

TEST(Column, growsOnAfterItWasReadAtItsStart) {
  Column<double> column = countingTo(PIECE_VALUES);  // its last piece is full
  EXPECT_EQ(column[0], 0.0);
  column.push_back(-1.0);
  EXPECT_EQ(column[PIECE_VALUES - 1], PIECE_VALUES - 1.0);
  EXPECT_EQ(column.front(), 0.0);
  column.push_back(-2.0);
  EXPECT_EQ(column[PIECE_VALUES], -1.0);
  EXPECT_EQ(column.back(), -2.0);
  EXPECT_EQ(column.size(), PIECE_VALUES + 2);
}

TEST(Column, mayBeEmpty) {
  const Column<double> column;
  EXPECT_TRUE(column.empty());
  EXPECT_TRUE(column.begin() == column.end());
  EXPECT_TRUE(column == Column<double>{});
  EXPECT_FALSE(column == Column<double>{0.0});
}

TEST(Column, isCopiedWhole) {
  Column<double> column = countingTo(2 * PIECE_VALUES);
  const Column<double> copy = column;
  column.set(3, -1.0);
  EXPECT_EQ(copy[3], 3.0);
  EXPECT_FALSE(copy == column);
  column.set(3, 3.0);
  EXPECT_TRUE(copy == column);
}

TEST(Column, isMovedWithItsFile) {
  Column<double> column = countingTo(2 * PIECE_VALUES);
  Column<double> other = {7.0};
  other = std::move(column);
  EXPECT_TRUE(other == countingTo(2 * PIECE_VALUES));
  const Column<double> last(std::move(other));
  EXPECT_TRUE(last == countingTo(2 * PIECE_VALUES));
}

TEST(Column, leavesNothingInTheFolderOfItsFile) {
  const TemporaryDirectory directory;
  const TemporaryFolder folder(directory.path);
  const Column<double> column = countingTo(3 * PIECE_VALUES);
  EXPECT_EQ(column[1], 1.0);
  EXPECT_TRUE(std::filesystem::is_empty(directory.path));
}

TEST(Column, givesItsPlaceInTheFileToOthers_howeverItIsGivenUp) {
  const TemporaryDirectory directory;
  const TemporaryFolder folder(directory.path);
  for (int i = 0; i < 3; ++i) {
    Column<double> column = countingTo(3 * PIECE_VALUES);  // of which the last piece is in memory
    Column<double> other = countingTo(3 * PIECE_VALUES);
    EXPECT_EQ(bytesIn(directory.path), (i == 0 ? 4 : 7) * Pieces::PIECE);
    // While it is copied the last piece goes to the file, too; what the copy takes the place of
    // goes when it is made.
    other = column;
    EXPECT_EQ(bytesIn(directory.path), 7 * Pieces::PIECE);
    column = std::move(other);
    const Column<double> last(std::move(column));
    EXPECT_EQ(bytesIn(directory.path), 7 * Pieces::PIECE);
    EXPECT_TRUE(last == countingTo(3 * PIECE_VALUES));
  }
}

TEST(Column, sharesOneFileWithAllOthers) {
  const size_t before = openFiles();
  const TemporaryDirectory directory;
  const TemporaryFolder folder(directory.path);
  EXPECT_EQ(openFiles(), before + 1);
  const Column<double> column = countingTo(2 * PIECE_VALUES);
  const Column<double> other = countingTo(2 * PIECE_VALUES);
  EXPECT_EQ(openFiles(), before + 1);
}

TEST(Column, needsNoFile_whenItIsShort) {
  const TemporaryFolder folder("/nowhere");
  EXPECT_EQ(countingTo(PIECE_VALUES).back(), PIECE_VALUES - 1.0);
  EXPECT_THROW(countingTo(PIECE_VALUES + 1), std::system_error);
}

TEST(Column, saysSoWhenItsFileCannotGrow) {
  const TemporaryDirectory directory;
  const TemporaryFolder folder(directory.path);
  rlimit before = {};
  getrlimit(RLIMIT_FSIZE, &before);
  const auto handler = std::signal(SIGXFSZ, SIG_IGN);
  const rlimit small = {Pieces::PIECE + 1000, before.rlim_max};  // a piece and some of the next
  setrlimit(RLIMIT_FSIZE, &small);
  try {
    countingTo(2 * PIECE_VALUES + 1);
    ADD_FAILURE() << "no exception";
  } catch (const std::system_error& error) {
    EXPECT_EQ(error.code().value(), EFBIG);
    EXPECT_EQ(error.what(), "cannot keep values in a temporary file in \"" + directory.path +
                                "\": File too large");
  }
  setrlimit(RLIMIT_FSIZE, &before);
  std::signal(SIGXFSZ, handler);
}
