#!/bin/bash
# clang-tidy finds nothing, with the checks of the nearest .clang-tidy above each source.
#
# usage: tests/house/staticAnalysis.sh SOURCE [--full]
#   --full   follows the paths through functions in scan/, tools and bench too, not in src/ alone, and asks
#            clang-tidy, too, for parameters that are copied without need, of which cppcheck knows, and for
#            views of texts that are made of null pointers
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

# Sources with the same checks, as one text. Of functions that every program has, each gets a name of its own.
check() {
  local text config=${1%%/*}/.clang-tidy found source sources=0
  local folders=(. src tools tests tests/*)
  local checks='-bugprone-suspicious-include,-readability-duplicate-include'
  [[ -f $config ]] || config=.clang-tidy
  # On long texts the second takes as long as all others together, the third a tenth of the time.
  if [[ $full != --full ]]; then
    [[ $1 == src/* ]] || checks+=',-clang-analyzer-*'
    checks+=',-performance-unnecessary-value-param,-bugprone-stringview-nullptr'
  fi
  # Registered benchmarks live until the process ends.
  [[ $* != *bench/* ]] || checks+=',-clang-analyzer-cplusplus.NewDeleteLeaks'
  text=$(mktemp "$work/XXXXXX.cpp")
  for source; do
    sed -E "s/\b(main|LLVMFuzzerTestOneInput)\(/\1OfSource$((++sources))(/" "$source"
  done > "$text"
  if found=$(clang-tidy --quiet "$text" --config-file="$config" \
    --checks="$checks" -- \
    -std=c++17 -D_FILE_OFFSET_BITS=64 -Wall -Wextra "${folders[@]/#/-I}" \
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

# The longest first.
{
  echo check src/{definitions,driver,indicators}/*.cpp
  find scan -name '*.cpp' -not -path '*/node_modules/*' | sort | xargs -n 40 echo check
  echo check tests/scan/*.cpp
  echo check tests/{cli,defects,fault,support}/*.cpp tests/fuzz/fuzzRun.cpp
  echo check tests/unit/*.cpp tests/fuzz/fuzzCommandLine.cpp
  echo check tests/lumascan/*.cpp
  echo check tests/fuzz/fuzz{Media,Stored}.cpp tests/scan/samplePages/*.cpp
  echo check {bench,tools}/*.cpp
  echo check tests/{composed,reference}/*.cpp
  echo check src/*/plain/*.cpp
  echo check tests/fuzz/{fuzzFrame,replay}.cpp
  echo check tests/lumascan/preloaded/*.cpp
  echo check tests/fault/preloaded/*.cpp
} > "$work/texts"
diff <(tr ' ' '\n' < "$work/texts" | grep -v '^check$' | sort) \
  <(find src scan tools bench tests -name '*.cpp' -not -path '*/node_modules/*' | sort)  # all of them, each once
xargs -P 2 -L 1 bash -c '"$0" "$@"' < "$work/texts"
