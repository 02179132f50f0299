#!/bin/bash
# clang-tidy finds nothing, with the checks of the nearest .clang-tidy above each source.
#
# usage: tests/house/staticAnalysis.sh SOURCE [--full]
#   --full   follows the paths through functions in scan/, tools and bench too, not in src/ alone, and asks
#            clang-tidy, too, for parameters that are copied without need, of which cppcheck knows
#
# Nearly all of its time goes into the headers of libraries, again for every text it is given. So many
# sources are joined into one text; the analyser of paths looks at every function in it, which it would not
# do if the text included them. Names in unnamed namespaces must therefore differ from source to source.
set -euo pipefail
cd "$1"
full=${2:-}
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
export full work

# A source must not include another one, nor a header twice, which is not to be seen in the joined text.
if grep -rnE '#include ["<].*\.(c|cc|cpp|cxx)[">]' --include='*.cpp' --include='*.h' src scan/*/*.* tools bench tests; then
  echo 'a source must not include another one'
  exit 1
fi
find src scan/*/*.cpp tools bench tests -name '*.cpp' -print0 |
  xargs -0 awk '/^#include/ && seen[FILENAME $0]++ { print FILENAME ": included twice: " $0; found = 1 } END { exit found }'

# Sources of one folder, or of several with the same checks, as one text.
check() {
  local text config=${1%%/*}/.clang-tidy found
  local checks='-bugprone-suspicious-include,-readability-duplicate-include'
  [[ -f $config ]] || config=.clang-tidy
  # The second takes as long as all others together on long texts.
  if [[ $full != --full ]]; then
    [[ $1 == src/* ]] || checks+=',-clang-analyzer-*'
    checks+=',-performance-unnecessary-value-param'
  fi
  # Registered benchmarks live until the process ends.
  [[ $1 != bench/* ]] || checks+=',-clang-analyzer-cplusplus.NewDeleteLeaks'
  text=$(mktemp "$work/XXXXXX.cpp")
  cat "$@" > "$text"
  if found=$(clang-tidy --quiet "$text" --config-file="$config" \
    --checks="$checks" -- \
    -std=c++17 -D_FILE_OFFSET_BITS=64 -Wall -Wextra -I. -Isrc -Itools -Itests -Itests/cli -I"${1%/*}" \
    -DLUMAPROBE_BINARY='""' -DLUMASCAN_BINARY='""' -DMAKE_CLIP_BINARY='""' -DFAILING_CALLS_LIBRARY='""' \
    -DDISK_CALLS_LIBRARY='""' -DHOSTILE_DECODER='""' -DKEPT_CLIPS='""' 2>&1); then
    return
  fi
  # Lines of the text, as those of its sources.
  awk -v text="$text" '
    FILENAME != "-" { source[++lines] = FILENAME ":" FNR; next }
    index($0, text ":") == 1 { split(substr($0, length(text) + 2), rest, ":")
      print source[rest[1]] substr($0, length(text) + 2 + length(rest[1])); next }
    { print }' "$@" - <<< "$found"
  return 1
}
export -f check

{
  find scan -name '*.cpp' -not -path '*/node_modules/*' | sort | xargs -n 30 echo check
  find src tests -name '*.cpp' -not -path 'tests/fuzz/*' -printf '%h %p\n' | sort |
    awk '$1 != folder { printf "%scheck", folder ? "\n" : ""; folder = $1 } { printf " %s", $2 } END { print "" }'
  find tests/fuzz tools bench -name '*.cpp' -printf 'check %p\n'
} | xargs -P 2 -L 1 bash -c '"$0" "$@"'
