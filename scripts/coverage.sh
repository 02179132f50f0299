#!/usr/bin/env bash
# Counts which lines and branches of src/ the tests run, prints both per file and in total, and fails
# when less than 98 % of the lines are run.
#
# usage: scripts/coverage.sh
#
# Branches that are only taken by exceptions are left out. What a process did that ended by abort is not
# counted: counters are written at exit. The details are left in build/coverage/report.html.
set -euo pipefail
[[ $# == 0 ]] || { echo 'usage: scripts/coverage.sh' >&2; exit 2; }
cd "$(dirname "$0")/.."
LEAST_LINES=98 # percent

scripts/setup.sh long
cmake --preset coverage > /dev/null
cmake --build --preset coverage
# Counters add up from run to run, and those of sources that were built anew do not fit.
find build/coverage -name '*.gcda' -delete
# One test runs the program as a user who may not write counters, which then says so among its messages.
ctest --preset coverage --no-tests=error -j "$(nproc)" --progress -E whenTheUserMayHaveNoThreads

count() { gcovr --root . --filter src/ --exclude-throw-branches "$@" build/coverage; }
count --json build/coverage/counts.json
report() { gcovr --root . --exclude-throw-branches --add-tracefile build/coverage/counts.json "$@"; }
report --branches
report --html-details build/coverage/report.html
report --print-summary --fail-under-line "$LEAST_LINES"
