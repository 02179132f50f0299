#!/bin/sh
# GCC vectorises every loop that carries the comment "// vectorised", on its "for" line or on the line
# above; in a function marked MULTIVERSIONED it does so at least twice, once for each version.
set -eu
cd "$1"
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

# One line "file:line versions" for every marked loop, and 0 versions for a mark that has none. A
# function ends at a brace in the first column.
find src scan/measures -name '*.cpp' -o -name '*.h' | sort | xargs awk '
  FNR == 1 { versions = 1; above = 0 }
  /^[^#\/]*MULTIVERSIONED/ { versions = 2 }
  /^}/ || /^[^ #\/].*[;}]$/ { versions = 1 }
  {
    isMark = /\/\/ vectorised/
    isLoop = /(^|[^A-Za-z0-9_])for \(/
    if (isLoop && (isMark || above)) print FILENAME ":" FNR, versions
    else if (above) print FILENAME ":" FNR - 1, 0
    above = isMark && !isLoop
  }' > "$work/marks"
if ! [ -s "$work/marks" ]; then
  echo 'no loop is marked "// vectorised"'
  exit 1
fi

# The files to compile; a marked header is compiled with whichever of them includes it. Epilogues are
# left scalar, so that they are not taken for another version.
sources=$(sed -n 's/\.cpp:.*/.cpp/p' "$work/marks" | sort -u)
! grep -q '\.h:' "$work/marks" || sources=$(find src scan/measures -name '*.cpp')
for source in $sources; do
  if ! g++ -std=c++17 -O3 -ffp-contract=off -fno-math-errno -I. -Isrc -D_FILE_OFFSET_BITS=64 \
    --param vect-epilogues-nomask=0 -fopt-info-vec-optimized -c -o /dev/null "$source" \
    2> "$work/messages"; then
    cat "$work/messages"
    exit 1
  fi
  sed -n 's/^\(\.\/\)*\([^:]*:[0-9]*\):.*: loop vectorized .*/\2/p' "$work/messages" >> "$work/vectorised"
done

awk '
  NR == FNR { ++times[$1]; next }
  $2 == 0 { print $1 ": no loop below the mark"; failed = 1; next }
  times[$1] < $2 { print $1 ": vectorised " times[$1] + 0 " times, not " $2; failed = 1 }
  END { exit failed }' "$work/vectorised" "$work/marks"
