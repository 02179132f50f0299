#!/usr/bin/env bash
# Looks for inputs on which the program does not do what it should, with libFuzzer under the address and
# undefined behaviour sanitizers, one fuzz target after the other. The search goes on behind a finding. Fails
# in the end when one is ours, and not a fault of FFmpeg's libraries (scripts/fuzzFinding.sh).
#
# usage: scripts/fuzz.sh [SECONDS [TARGET]]   fuzzes each target or that one for so long, 1200 s if not stated
#        scripts/fuzz.sh --merge [TARGET]     takes what the runs so far have found over into tests/fuzz/corpus
#
# Nothing but --merge touches tests/fuzz/corpus. In build/fuzz are left: found/TARGET, all new inputs,
# with which the next run goes on; merged/TARGET, the kept corpus and those of them that lead to code
# which it does not reach; findings/TARGET-*, inputs that failed, findings/TARGET.txt, whose fault each of
# the last run was, and logs/TARGET.log.
set -euo pipefail
shopt -s inherit_errexit nullglob
targets=(fuzzCommandLine fuzzFrame fuzzMedia fuzzRun fuzzStored)
seconds=1200
isMerge=
case ${1:-} in
  --merge) isMerge=1 ;;
  *) seconds=${1:-$seconds} ;;
esac
if [[ $# -gt 2 || ! $seconds =~ ^[1-9][0-9]*$ || " ${targets[*]} " != *" ${2:-${targets[0]}} "* ]]; then
  echo 'usage: scripts/fuzz.sh [SECONDS | --merge] [TARGET]' >&2
  exit 2
fi
[[ $# -lt 2 ]] || targets=("$2")
root=$(realpath "$(dirname "$0")/..")
corpus=$root/tests/fuzz/corpus
build=$root/build/fuzz

if [[ $isMerge ]]; then
  for target in "${targets[@]}"; do
    if [[ ! -d $build/merged/$target ]]; then
      echo "fuzz.sh: nothing is merged for $target: run scripts/fuzz.sh first" >&2
      exit 1
    fi
    cp "$build/merged/$target"/* "$corpus/$target"
    files=("$corpus/$target"/*)
    echo "$target: ${#files[@]} inputs, $(cat "${files[@]}" | wc -c) bytes"
  done
  exit
fi

cd "$root"
scripts/setup.sh long
cmake --preset fuzz > /dev/null
cmake --build --preset fuzz --target "${targets[@]}" > /dev/null
memory=
[[ ! -w /dev/shm ]] || memory=/dev/shm
TMPDIR=$(mktemp -d ${memory:+-p "$memory"})
export TMPDIR
export UBSAN_OPTIONS=print_stacktrace=1
trap 'rm -rf "$TMPDIR"' EXIT
cd "$build"
mkdir -p findings logs

# $1: target. Status lines begin with "#" and the number of executions; "cov:" are the edges that were
# gone along, "ft:" features, which also tell how often.
row() {
  awk -v target="$1" -v seconds="$seconds" -v merged="$(find "merged/$1" -type f | wc -l)" '
    $1 ~ /^#[0-9]+$/ { for (i = 2; i < NF; ++i) value[$i] = $(i + 1) }
    $1 == "stat::number_of_executed_units:" { executions += $2 }
    END {
      printf "| `%s` | %d | %d | %d | %d | %d | %d |\n", target, seconds, executions, executions / seconds,
        value["cov:"], value["ft:"], merged
    }' "logs/$1.log"
}

# $1: target. Files may be larger than what the other targets read, and take longer.
limits() {
  case $1 in
    fuzzMedia) printf '%s\n' -max_len=16384 -timeout=20 -rss_limit_mb=3072 ;;
    *) printf '%s\n' -max_len=8192 -timeout=10 -rss_limit_mb=2048 ;;
  esac
}

# $1: target. Looks for inputs until the time is over, and notes what it finds.
fuzz() {
  local target=$1 end=$((SECONDS + seconds)) left part=logs/$1.part
  local limits
  mapfile -t limits < <(limits "$target")
  : > "logs/$target.log"
  : > "findings/$target.txt"
  while left=$((end - SECONDS)) && [[ $left -gt 0 ]]; do
    if ./"$target" -max_total_time="$left" "${limits[@]}" -print_final_stats=1 \
      -artifact_prefix="$PWD/findings/$target-" "found/$target" "$corpus/$target" > "$part" 2>&1; then
      left=0
    fi
    cat "$part" >> "logs/$target.log"
    [[ $left -gt 0 ]] || break
    "$root/scripts/fuzzFinding.sh" "$part" | tee -a "findings/$target.txt"
    rm -rf "${TMPDIR:?}"/*
  done
}

failed=
for target in "${targets[@]}"; do
  mkdir -p "found/$target"
  echo "== $target, $seconds s"
  fuzz "$target"
  ! grep -q '^ours' "findings/$target.txt" || failed+=" $target"
  # Only edges decide what is worth to be kept: counts of how often each was gone along would let the
  # corpus grow without end.
  rm -rf "merged/$target"
  mkdir -p "merged/$target"
  cp "$corpus/$target"/* "merged/$target"
  mapfile -t limits < <(limits "$target")
  ./"$target" -merge=1 -use_counters=0 "${limits[@]}" "merged/$target" "found/$target" \
    > "logs/$target.merge.log" 2>&1
done

echo
echo '| target | seconds | executions | per second | edges | features | merged inputs |'
echo '|---|--:|--:|--:|--:|--:|--:|'
for target in "${targets[@]}"; do row "$target"; done
[[ -z $failed ]] || { echo "fuzz.sh: findings of$failed are in $build/findings" >&2; exit 1; }
