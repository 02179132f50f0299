// What pages are made of: text and bytes in forms that are safe inside HTML.
#ifndef LUMASCAN_HTML_H
#define LUMASCAN_HTML_H

#include <string>
#include <string_view>

#include "scan/files/jsonFwd.h"

// Text for element content and quoted attributes. Bytes that are no UTF-8 and characters that
// change the direction of reading become U+FFFD, control characters (line ends too) their visible
// pictures, so that a name stays one line and shows its own order.
std::string escapeHtml(std::string_view text);

// JSON for the inside of a script element: no "<" in it, bytes that are no UTF-8 as U+FFFD.
std::string scriptJson(const Json& value);

// RFC 4648, with padding, on one line. Of less than 500 MB.
std::string base64(std::string_view bytes);

// SHA-256 in base64, as a content security policy names what it lets run.
std::string sha256Base64(std::string_view bytes);

#endif
