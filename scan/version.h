// The program's version.
#ifndef LUMASCAN_VERSION_H
#define LUMASCAN_VERSION_H

// Part of every result: those of another version are not up to date.
constexpr char LUMASCAN_VERSION[] = "1.0.0";

#endif
