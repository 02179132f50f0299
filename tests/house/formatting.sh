#!/bin/sh
# Sources look as .clang-format says.
set -eu
cd "$1"
find src scan tools bench tests \( -name '*.h' -o -name '*.cpp' \) -print0 |
  xargs -0 clang-format --dry-run -Werror
