// File names, which are any bytes, in places that take less.
#ifndef LUMASCAN_NAMES_H
#define LUMASCAN_NAMES_H

#include <string>

// For messages and lines of text: bytes that are no UTF-8, control characters and those that change
// the direction of text become \x and two hexadecimal digits for each byte.
std::string printableName(const std::string& name);

// For addresses: all but letters, digits and "-._~/" become % and two hexadecimal digits.
std::string uriPath(const std::string& path);

// The bytes of what uriPath() has made. A % that is not followed by two hexadecimal digits is
// itself.
std::string pathOfUri(const std::string& uri);

// A field of RFC 4180: in quotes where it must be. Disarmed, what a spreadsheet would take for a
// formula begins with an apostrophe.
std::string csvField(const std::string& text, bool isDisarmed = false);

#endif
