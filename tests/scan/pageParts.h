// What a written page consists of, taken apart again.
#ifndef LUMASCAN_TESTS_PAGE_PARTS_H
#define LUMASCAN_TESTS_PAGE_PARTS_H

#include <cstdio>
#include <functional>
#include <string>
#include <vector>

// All that is written into a stream.
std::string writtenText(const std::function<void(FILE*)>& write);

// All that stands between the two texts, from each place where the first one is found. Overlaps are
// not looked for.
std::vector<std::string> allBetween(const std::string& text, const std::string& begin,
                                    const std::string& end);

// The first of them; fails the test when there is none.
std::string between(const std::string& text, const std::string& begin, const std::string& end);

bool contains(const std::string& text, const std::string& part);

// The bytes of base64, decoded here bit by bit; the bytes of a zlib stream.
std::string unbase64(const std::string& text);
std::string inflated(const std::string& stream, size_t size);

#endif
