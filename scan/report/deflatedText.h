// Many bytes in few characters, for a page: deflated, then in base64.
#ifndef LUMASCAN_DEFLATED_TEXT_H
#define LUMASCAN_DEFLATED_TEXT_H

#define ZLIB_CONST  // its input is not changed
#include <zlib.h>

#include <cstdio>
#include <string>
#include <string_view>

// Writes as it is given bytes, so that these may be more than memory holds. Together they are one
// zlib stream (RFC 1950), which browsers call "deflate"; its base64 is on one line. Throws
// std::bad_alloc without memory.
class DeflatedText {
 public:
  explicit DeflatedText(FILE* out);
  ~DeflatedText();
  DeflatedText(const DeflatedText&) = delete;
  DeflatedText& operator=(const DeflatedText&) = delete;

  void put(std::string_view bytes);
  void finish();  // once, at the end

 private:
  void deflateAll(std::string_view bytes, int flush);

  FILE* out_;
  z_stream stream_ = {};
  std::string pending_;  // deflated bytes that are no whole group of base64 yet
};

#endif
