#!/bin/sh
# Every header compiles without another one before it.
set -eu
cd "$1"
for header in $(find src tools tests -name '*.h'); do
  g++ -std=c++17 -fsyntax-only -Wall -Wextra -Isrc -Itests -x c++ "$header"
done
