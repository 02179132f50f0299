#!/bin/bash
# clang-tidy finds nothing, with the checks of the nearest .clang-tidy above each source.
#
# Most of the time goes into the headers of libraries, once more for every source. So the sources of a
# folder of scan or tests are looked at as one. If that finds something, which may be no more than a name
# that two of them use, each half is looked at, down to the single sources, whose findings count. Not so
# the analyser, which follows code from function to function: it takes each source alone.
set -euo pipefail
cd "$1"
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
export work

# $1: source, then options.
check() {
  clang-tidy --quiet "$@" -- -std=c++17 -D_FILE_OFFSET_BITS=64 -Wall -Wextra -I. -Isrc -Itools -Itests -Itests/cli \
    -DLUMAPROBE_BINARY='""' -DLUMASCAN_BINARY='""' -DMAKE_CLIP_BINARY='""' -DFAILING_CALLS_LIBRARY='""' 2> /dev/null
}

analyse() { check "$1" '--checks=-*,clang-analyzer-*,-clang-analyzer-security.insecureAPI.DeprecatedOrUnsafeBufferHandling'; }

# Sources of one folder.
checkTogether() {
  if [[ $# == 1 ]]; then
    check "$1"
    return
  fi
  local all config=.clang-tidy half=$(($# / 2)) status=0
  [[ $1 != tests/* ]] || config=tests/.clang-tidy
  all=$(mktemp "$work/XXXXXX.cpp")
  printf '#include "%s"\n' "$@" > "$all"
  if check "$all" --config-file="$config" --checks='-clang-analyzer-*,-bugprone-suspicious-include' > /dev/null; then return; fi
  checkTogether "${@:1:half}" || status=1
  checkTogether "${@:half+1}" || status=1
  return "$status"
}
export -f check analyse checkTogether

if grep -rnE '#include ["<].*\.(c|cc|cpp|cxx)[">]' --include='*.cpp' --include='*.h' src scan/*/*.* tools bench tests; then
  echo 'a source must not include another one'
  exit 1
fi

{
  find scan tests -name '*.cpp' -not -path '*/node_modules/*' -not -path 'tests/fuzz/*' -printf '%h %p\n' | sort |
    awk '$1 != folder { printf "%scheckTogether", folder ? "\n" : ""; folder = $1 } { printf " %s", $2 } END { print "" }'
  find tests/fuzz src tools bench -name '*.cpp' -printf 'check %p\n'
  find scan -name '*.cpp' -not -path '*/node_modules/*' -printf 'analyse %p\n'
} | xargs -P 2 -L 1 bash -c '"$0" "$@"'
