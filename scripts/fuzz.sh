#!/usr/bin/env bash
# Looks for inputs on which the program does not do what it should, with libFuzzer under the address and
# undefined behaviour sanitizers, one fuzz target after the other. Fails when there is a finding.
#
# usage: scripts/fuzz.sh [SECONDS]   fuzzes each target for so long, 1200 s if not stated
#        scripts/fuzz.sh --merge     takes what the runs so far have found over into tests/fuzz/corpus
#
# Nothing but --merge touches tests/fuzz/corpus. In build/fuzz are left: found/TARGET, all new inputs,
# with which the next run goes on; merged/TARGET, the kept corpus and those of them that lead to code
# which it does not reach; findings/TARGET-*, inputs that failed, and logs/TARGET.log.
set -euo pipefail
shopt -s inherit_errexit nullglob
seconds=1200
isMerge=
case ${1:-} in
  --merge) isMerge=1 ;;
  *) seconds=${1:-$seconds} ;;
esac
if [[ $# -gt 1 || ! $seconds =~ ^[1-9][0-9]*$ ]]; then
  echo 'usage: scripts/fuzz.sh [SECONDS | --merge]' >&2
  exit 2
fi
root=$(realpath "$(dirname "$0")/..")
corpus=$root/tests/fuzz/corpus
build=$root/build/fuzz
targets=(fuzzCommandLine fuzzFrame fuzzRun fuzzStored)

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
trap 'rm -rf "$TMPDIR"' EXIT
cd "$build"
mkdir -p findings logs

# $1: target. Status lines begin with "#" and the number of executions; "cov:" are the edges that were
# gone along, "ft:" features, which also tell how often.
row() {
  awk -v target="$1" -v seconds="$seconds" -v merged="$(find "merged/$1" -type f | wc -l)" '
    $1 ~ /^#[0-9]+$/ { for (i = 2; i < NF; ++i) value[$i] = $(i + 1) }
    $1 == "stat::number_of_executed_units:" { executions = $2 }
    $1 == "stat::average_exec_per_sec:" { rate = $2 }
    END {
      printf "| `%s` | %d | %d | %d | %d | %d | %d |\n", target, seconds, executions, rate, value["cov:"],
        value["ft:"], merged
    }' "logs/$1.log"
}

failed=
for target in "${targets[@]}"; do
  mkdir -p "found/$target"
  echo "== $target, $seconds s"
  ./"$target" -max_total_time="$seconds" -timeout=10 -rss_limit_mb=2048 -max_len=8192 -print_final_stats=1 \
    -artifact_prefix="$PWD/findings/$target-" "found/$target" "$corpus/$target" > "logs/$target.log" 2>&1 || {
    failed+=" $target"
    grep -vE '^#[0-9]+|^(stat|INFO|NEW_FUNC)' "logs/$target.log" | tail -n 40 >&2
  }
  # Only edges decide what is worth to be kept: counts of how often each was gone along would let the
  # corpus grow without end.
  rm -rf "merged/$target"
  mkdir -p "merged/$target"
  cp "$corpus/$target"/* "merged/$target"
  ./"$target" -merge=1 -use_counters=0 -timeout=10 -rss_limit_mb=2048 "merged/$target" "found/$target" \
    > "logs/$target.merge.log" 2>&1
done

echo
echo '| target | seconds | executions | per second | edges | features | merged inputs |'
echo '|---|--:|--:|--:|--:|--:|--:|'
for target in "${targets[@]}"; do row "$target"; done
[[ -z $failed ]] || { echo "fuzz.sh: findings of$failed are in $build/findings" >&2; exit 1; }
