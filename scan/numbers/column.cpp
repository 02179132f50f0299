#include "scan/numbers/column.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <string>
#include <system_error>

namespace {

std::string folder() {
  const char* const named = std::getenv("TMPDIR");
  return named != nullptr && *named != '\0' ? named : "/var/tmp";
}

[[noreturn]] void fail(int error) {
  throw std::system_error(error, std::generic_category(),
                          "cannot keep values in a temporary file in \"" + folder() + "\"");
}

// The file of this process, and which places in it, of a piece each, are in use.
struct PieceFile {
  int descriptor = -1;
  int error = 0;  // why there is none
  size_t places = 0;
  std::vector<size_t> freePlaces;  // of these
};

PieceFile pieceFile;

// Without a word about a failure.
void makeFile() {
  std::string path = folder() + "/lumascanXXXXXX";
  pieceFile.descriptor = mkostemp(path.data(), O_CLOEXEC);
  pieceFile.error = pieceFile.descriptor < 0 ? errno : 0;
  if (pieceFile.descriptor >= 0) unlink(path.c_str());
}

int descriptor() {
  if (pieceFile.descriptor < 0 && pieceFile.error == 0) makeFile();
  if (pieceFile.descriptor < 0) fail(pieceFile.error);
  return pieceFile.descriptor;
}

size_t takePlace() {
  if (pieceFile.freePlaces.empty()) {
    pieceFile.freePlaces.reserve(pieceFile.places + 1);  // giving it back shall not need memory
    return pieceFile.places++;
  }
  const size_t place = pieceFile.freePlaces.back();
  pieceFile.freePlaces.pop_back();
  return place;
}

// Moves a piece in as many steps as it takes. step(done): bytes that one step has moved; 0: no
// more.
template <typename Step>
void moveAll(const Step& step) {
  for (size_t done = 0; done < Pieces::PIECE;) {
    const ssize_t count = step(done);
    if (count < 0 && errno == EINTR) continue;
    if (count <= 0) fail(count < 0 ? errno : EIO);
    done += static_cast<size_t>(count);
  }
}

}  // namespace

void openPieceFile() {
  pieceFile = {};
  makeFile();
}

Pieces::~Pieces() {
  pieceFile.freePlaces.insert(pieceFile.freePlaces.end(), places_.begin(), places_.end());
}

void Pieces::write(size_t number, const void* piece) {
  const int to = descriptor();
  while (places_.size() <= number) places_.push_back(takePlace());
  moveAll([&](size_t done) {
    return pwrite(to, static_cast<const char*>(piece) + done, PIECE - done,
                  static_cast<off_t>(places_[number] * PIECE + done));
  });
}

void Pieces::read(size_t number, void* piece) const {
  moveAll([&](size_t done) {
    return pread(pieceFile.descriptor, static_cast<char*>(piece) + done, PIECE - done,
                 static_cast<off_t>(places_[number] * PIECE + done));
  });
}
