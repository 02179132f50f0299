#!/bin/sh
# cppcheck finds nothing but what cppcheckSuppressions.txt names with a reason.
set -eu
cd "$1"
cppcheck --quiet --error-exitcode=1 --std=c++17 --platform=unix64 --library=posix,gnu,googletest \
  --enable=warning,performance,portability,style,information \
  --suppressions-list=tests/house/cppcheckSuppressions.txt -I. -Isrc -Itools -Itests src scan tools bench tests
