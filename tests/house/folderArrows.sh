#!/bin/sh
# Includes point one way. A folder names only itself and what stands before it here:
#   src    definitions, indicators, driver
#   scan   all of src, then files, numbers, measures, video, analysis, events, record, report, results,
#          processes, commandLine, commands
set -eu
status=0

# $1: what an include has before the folder's name, $2: the first folder, then the others in their order.
check() {
  prefix=$1
  folder=$2
  shift 2
  behind=$(echo "$*" | tr ' ' '|')
  if grep -rnE "#include \"$prefix($behind)/" "$folder"; then
    echo "$folder must not include $*"
    status=1
  fi
  # The last one includes what stands before it: the pattern is that of includes.
  if [ $# -gt 1 ]; then check "$prefix" "$@"; else grep -rqE "#include \"${prefix}[A-Za-z]+/" "$1"; fi
}
cd "$1/src"
check '' definitions indicators driver
if grep -rn '#include "scan/' .; then
  echo "src must not include scan"
  status=1
fi
cd "$1/scan"
check 'scan/' files numbers measures video analysis events record report results processes commandLine commands

# The schedule of one frame knows neither files nor printing.
cd "$1/src"
if grep -nE '<cstdio>|<iostream>|videoInput|reportOutput|commandLine' driver/frameAnalysis.*; then
  echo "frameAnalysis must know neither files nor printing"
  status=1
fi
exit $status
