// File names, which are any bytes, in places that take less.
#ifndef LUMASCAN_NAMES_H
#define LUMASCAN_NAMES_H

#include <string>

// For messages and lines of text: control characters become \x and two hexadecimal digits.
std::string printableName(const std::string& name);

// For addresses: all but letters, digits and "-._~/" become % and two hexadecimal digits.
std::string uriPath(const std::string& path);

// The bytes of what uriPath() has made. A % that is not followed by two hexadecimal digits is
// itself.
std::string pathOfUri(const std::string& uri);

// A field of RFC 4180: in quotes where it must be.
std::string csvField(const std::string& text);

#endif
