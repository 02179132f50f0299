#include "scan/report/deflatedText.h"

#include <new>

#include "scan/files/outputFile.h"
#include "scan/report/html.h"

DeflatedText::DeflatedText(FILE* out) : out_(out) {
  if (deflateInit(&stream_, Z_DEFAULT_COMPRESSION) != Z_OK) throw std::bad_alloc();
}

DeflatedText::~DeflatedText() {
  deflateEnd(&stream_);
}

void DeflatedText::put(std::string_view bytes) {
  deflateAll(bytes, Z_NO_FLUSH);
}

void DeflatedText::finish() {
  deflateAll({}, Z_FINISH);
  writeText(base64(pending_), out_);
}

void DeflatedText::deflateAll(std::string_view bytes, int flush) {
  constexpr size_t GROUP = 3;  // bytes that become four characters
  unsigned char room[4096];
  stream_.next_in = reinterpret_cast<const Bytef*>(bytes.data());
  stream_.avail_in = static_cast<uInt>(bytes.size());
  do {
    stream_.next_out = room;
    stream_.avail_out = sizeof room;
    deflate(&stream_, flush);
    pending_.append(reinterpret_cast<const char*>(room), sizeof room - stream_.avail_out);
    const size_t whole = pending_.size() - pending_.size() % GROUP;
    writeText(base64(std::string_view(pending_).substr(0, whole)), out_);
    pending_.erase(0, whole);
  } while (stream_.avail_out == 0);
}
