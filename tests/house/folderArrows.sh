#!/bin/sh
# Includes point one way: scan -> driver -> indicators -> definitions. A folder names only itself and
# what stands after it.
set -eu
cd "$1/src"
status=0

# $1: folder, $2: folders it must not include.
forbid() {
  if grep -rnE "#include \"($2)/" "$1"; then
    echo "$1 must not include $2"
    status=1
  fi
}
forbid definitions 'indicators|driver|scan'
forbid indicators 'driver|scan'
forbid driver 'scan'

# The schedule of one frame knows neither files nor printing.
if grep -nE '<cstdio>|<iostream>|videoInput|reportOutput|commandLine' driver/frameAnalysis.*; then
  echo "frameAnalysis must know neither files nor printing"
  status=1
fi
# The checks above are only as good as their patterns: every folder does include something.
grep -rqE '#include "definitions/' indicators
grep -rqE '#include "indicators/' driver
exit $status
