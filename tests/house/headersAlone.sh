#!/bin/sh
# Every header compiles without another one before it.
set -eu
cd "$1"
find src scan tools tests -name '*.h' | while read -r header; do
  g++ -std=c++17 -D_FILE_OFFSET_BITS=64 -fsyntax-only -Wall -Wextra -I. -Isrc -Itests -x c++ "$header"
done
