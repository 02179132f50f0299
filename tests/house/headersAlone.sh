#!/bin/sh
# Every header compiles without another one before it: the first include of the source of its name, which the
# build compiles by itself, or alone here.
set -eu
cd "$1"
find src scan tools tests -name '*.h' | while read -r header; do
  source=${header%.h}.cpp
  case $source in
    tests/*) ;;  # compiled some at a time
    *) if grep -m 1 -s '^#include' "$source" | grep -qF "\"${header#src/}\""; then continue; fi ;;
  esac
  g++ -std=c++17 -D_FILE_OFFSET_BITS=64 -fsyntax-only -Wall -Wextra -I. -Isrc -Itests -x c++ "$header"
done
