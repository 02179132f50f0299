#!/usr/bin/env bash
# Every build, however it runs, writes the same bytes: on the made clip the golden rows, on further clips
# what the program in BUILD writes. Prints a table of what was looked at; fails when something in it does
# not hold or a build gives a warning.
#
# usage: scripts/everyBuild.sh [--full] [SOURCE BUILD]
#   --full   all compilers, optimisation levels, instruction sets and machines instead of a choice, on one
#            core and on all, at random addresses and at fixed ones; the made clip from every build; many
#            runs at once; the tests of other machines; another C library
#
# Needs an x86-64 machine; others are emulated. What they write is held against what x86-64 writes with
# the sign of every nan taken away: the processor's own NaN has its sign set on x86-64 only.
#
# A compiler or emulator that is missing is a failure. What the machine itself cannot do stands in the
# table as "not done".
set -euo pipefail
shopt -s inherit_errexit
full=
if [[ ${1:-} == --full ]]; then
  full=1
  shift
fi
if [[ $# != 0 && $# != 2 ]]; then
  echo 'usage: scripts/everyBuild.sh [--full] [SOURCE BUILD]' >&2
  exit 2
fi
root=$(realpath "${1:-$(dirname "$0")/..}")
build=$(realpath -m "${2:-$root/build/release}")
golden=$root/tests/golden
if [[ $# == 0 ]]; then
  "$root/scripts/setup.sh" ${full:+long} test
  cmake -S "$root" --preset release > /dev/null
  cmake --build "$build" --target lumaprobe makeClip > /dev/null
fi
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
cd "$work"
ulimit -c 0 # one of the runs is meant to abort

# Arguments of the runs. Clips are read at other sizes than they were made at, too: that makes pictures
# that are anything but natural, and at the smallest sizes leaves indicators without anything to measure.
GOLDEN_RUN='clip.yuv 352 288'
# Narrow frames of many strips, some of which repeat neither sideways nor downwards.
UNDEFINED_RUNS='short.yuv 18 160 0x2000
short.yuv 17 256 0x2000'
RUNS="$GOLDEN_RUN
clip.yuv 700 599 0xffff 29.97
clip.yuv 1025 300 0xffff 9 limit
clip.yuv 2600 300 0xffff 9 limit
clip.yuv 33000 256 0xffff 2 limit
clip.yuv 256 256 0xffff 9 20 10
clip.yuv 255 300 0xffff 9 limit
white.yuv 352 288 0xffff 9 limit
white.yuv 33000 256 0xffff 1 limit
extreme.yuv 352 288 0xffff 9 limit
extreme.yuv 1100 500 0xffff 9 limit
short.yuv 17 33 0xffff 60 limit
short.yuv 47 100
short.yuv 16 48 0xffff 20 limit
short.yuv 17 48 0xffff 20 limit
$UNDEFINED_RUNS
short.yuv 15 16 0xffff 20 limit
short.yuv 8 8 0xffff 20 limit
short.yuv 7 5 0x7f7f 20 limit
short.yuv 3 300 0x7f7f 20 limit
short.yuv 300 3 0x7f7f 20 limit
short.yuv 1 9 0x7f7f 20 limit
short.yuv 9 1 0x7f7f 20 limit
short.yuv 1 1 0x7f7f 20 limit
short.yuv 65 49 0x5555 20 limit
short.yuv 65 49 0x2aaa 20 limit
short.yuv 65 49 0 20 limit
short.yuv 65 49 010000 -nan
short.yuv 65 49 0xffff inf
short.yuv 65 49 0xffff 9 9 -3
empty.yuv 64 64 0xffff 20 20 20
clip.yuv 7 5
clip.yuv 0 288
clip.yuv 99999 99999
missing.yuv 64 64"

makeClips() {
  "$build/makeClip" clip.yuv > /dev/null
  head -c 400000 clip.yuv > short.yuv
  : > empty.yuv
  # Of value 255: rounding leaves the variance of some sizes below 0, and sums pass 2^31 at the largest.
  head -c $((33000 * 256 * 3 / 2)) < <(tr '\0' '\377' < /dev/zero 2> /dev/null) > white.yuv
  # Of values 0 and 255 alone.
  head -c $((352 * 288 * 3 / 2 * 9)) clip.yuv | LC_ALL=C tr '\0-\177\200-\377' '[\0*128][\377*128]' > extreme.yuv
}

# $1: folder to make, then the command that runs the program. Leaves there, for every run, what it wrote
# to the console, to standard error and to the report, and its exit status.
writeAll() {
  local folder=$1 arguments name status
  shift
  mkdir "$folder"
  while read -r arguments; do
    name=$folder/${arguments// /_}
    status=0
    # The outer redirection hides the shell's own line about the run that aborts.
    # shellcheck disable=SC2086  # a line of words
    { "$@" $arguments < /dev/null > "$name.console" 2> "$name.errors" || status=$?; } 2> /dev/null
    echo "$status" > "$name.status"
    if [[ -f metricsResultsCSV.csv ]]; then mv metricsResultsCSV.csv "$name.report"; fi
  done <<< "$RUNS"
  sed -i '/^qemu: uncaught target signal 6 (Aborted) - core dumped$/d' "$folder"/*.errors # not the program's
}

# $1: build, $2: what is to hold, $3: how it runs, $4: whether it does.
tableRow() { printf '| %-18s | %-25s | %-27s | %s |\n' "$@"; }

# $1: build, $2: what is to hold, $3: how it runs, then the command that tells whether, and what is wrong.
failed=
verdict() {
  if "${@:4}" > wrong 2>&1; then
    tableRow "${@:1:3}" yes
  else
    tableRow "${@:1:3}" NO
    head -n 20 wrong
    failed=1
  fi
}

# $1: build, $2: how it runs, $3: folder of what it is to write, then the command.
checkRuns() {
  writeAll got "${@:4}"
  verdict "$1" "$(wc -l <<< "$RUNS") runs, same bytes" "$2" diff -r "$3" got
  rm -r got
}

# $1: build, $2: its program.
AT_EASE='all cores, random addresses' UNFUSED='no fused multiply-add'
checkPlacements() {
  checkRuns "$1" "$AT_EASE" expected "$2"
  checkRuns "$1" 'one core, random addresses' expected "${oneCore[@]}" "$2"
  if [[ $canFix ]]; then
    checkRuns "$1" 'all cores, fixed addresses' expected setarch -R "$2"
    checkRuns "$1" 'one core, fixed addresses' expected "${oneCore[@]}" setarch -R "$2"
  fi
}

# $1: objdump, $2: program. A fused multiply-add changes bits that seldom reach the printed digits: none of
# the runs would show it. The names are those of x86-64 and RISC-V, of 64-bit and 32-bit ARM, and of s390x.
isUnfused() {
  "$1" -d "$2" > listing &&
    ! grep -E '\s(v?fn?m(add|sub)|fml[as]|vfn?m[as]\.|[vw]fn?m[as][ds]b|m[as][de]br?\s)' listing
}

# The command that runs a makeClip.
isSameClip() {
  "$@" got.yuv > got.table && cmp clip.yuv got.yuv && diff "$golden/clip.table.tsv" got.table
}

# Other machines: the preset, and how the tools for it are called.
declare -A TRIPLES=([arm64]=aarch64-linux-gnu [armhf]=arm-linux-gnueabihf [riscv64]=riscv64-linux-gnu
  [s390x]=s390x-linux-gnu)

# $1: preset. Sets the triple and the emulator of its machine; both are empty for this one.
setMachine() {
  triple=${TRIPLES[$1]:-} emulator=()
  [[ ! $triple ]] || emulator=("qemu-${triple%%-*}" -L "/usr/$triple")
}

# $1: build, $2: preset, $3: flags in place of the preset's -O3, $4: targets, then further options of CMake.
# Leaves the build in $folder. Builds that were all made with the same -O would agree as well, so it is
# looked up what the program is made with.
makeBuild() {
  folder=$build/everyBuild/${1// /_}
  local targets
  read -ra targets <<< "$4"
  if ! { cmake -S "$root" --preset "$2" -B "$folder" -DCMAKE_BUILD_TYPE=None -DCMAKE_CXX_FLAGS="$3" \
    -DLUMAPROBE_TESTS=OFF -DLUMAPROBE_WERROR=ON "${@:5}" &&
    [[ $(grep -e " -c $root/src/" "$folder/compile_commands.json" | grep -o -e ' -O[^ ]*' | sort -u) == " ${3%% *}" ]] &&
    cmake --build "$folder" --target "${targets[@]}"; } > log 2>&1; then
    cat log >&2
    echo "everyBuild.sh: could not build $1 with $3" >&2
    exit 1
  fi
}

# $1: build, $2: preset, $3: flags in place of the preset's -O3, then further options of CMake.
checkBuild() {
  local folder triple emulator how=$AT_EASE expected=expected
  setMachine "$2"
  [[ ! $triple ]] || how=emulated expected=expectedElsewhere
  makeBuild "$1" "$2" "$3" 'lumaprobe makeClip' "${@:4}"
  verdict "$1" "$UNFUSED" '' isUnfused "${triple:+$triple-}objdump" "$folder/lumaprobe"
  if [[ $full && ! $triple ]]; then
    checkPlacements "$1" "$folder/lumaprobe"
  else
    checkRuns "$1" "$how" "$expected" "${emulator[@]}" "$folder/lumaprobe"
  fi
  [[ ! $full ]] || verdict "$1" 'the made clip, same bytes' "$how" isSameClip "${emulator[@]}" "$folder/makeClip"
}

# $1: preset of another machine, whose tests are to pass there.
checkTests() {
  local folder triple emulator program
  setMachine "$1"
  # The tests take sizes to fit 64 bits: compilers for 32 warn. A tenth of the twins' frames of random
  # size and a quarter of the others take long enough.
  makeBuild "$1 tests" "$1" '-O2 -DTWIN_ROUNDS=4 -DTWIN_CONTENTS=4' 'unitTests twinTests fuzzCommandLine' \
    -DLUMAPROBE_TESTS=ON -DLUMAPROBE_WERROR=OFF
  # Two tests start their own program once more, which the system cannot do with one for another machine.
  for program in unitTests twinTests; do
    verdict "$1 -O2" "$program pass" emulated "${emulator[@]}" "$folder/$program" --gtest_brief=1 \
      --gtest_filter=-BlackoutDeathTest.*:MinMaxDeathTest.*
  done
  verdict "$1 -O2" 'fuzzCommandLine passes' emulated "${emulator[@]}" "$folder/fuzzCommandLine" \
    "$root/tests/fuzz/corpus/fuzzCommandLine"
}

# $1: level. The program with musl, another C library. There is no C++ library for it: GCC's headers have to do,
# and nothing is linked that belongs to them.
checkMusl() {
  local folder headers version
  version=$(g++ -dumpversion)
  headers="-nostdinc -isystem /usr/include/c++/$version -isystem /usr/include/x86_64-linux-gnu/c++/$version"
  headers+=" -isystem /usr/include/x86_64-linux-musl -isystem $(g++ -print-file-name=include)"
  headers+=" '-D__GLIBC_PREREQ(major,minor)=0'"
  makeBuild "musl $1" portable "$1 $headers -fno-exceptions -fno-rtti" lumaprobe \
    -DCMAKE_CXX_COMPILER=musl-gcc -DCMAKE_EXE_LINKER_FLAGS=-static
  writeAll got "$folder/lumaprobe"
  hideUndefinedSlices got
  verdict "musl $1" "$(wc -l <<< "$RUNS") runs, bytes as meant" "$AT_EASE" diff -r expectedWithMusl got
  rm -r got
}

# $1: folder that writeAll made. Where strips have no ratio, slice rests on how the C library sorts. It is
# the last value but one of a row.
hideUndefinedSlices() {
  local run
  while read -r run; do
    sed -i -E '/^[0-9]/s/\t[^\t]*\t([^\t]*)$/\t(slice)\t\1/' "$1/${run// /_}".{console,report}
  done <<< "$UNDEFINED_RUNS"
}

# The clip in many processes at once, twelve threads each: far more than there are cores.
CROWD=64 AT_ONCE=16
checkCrowd() {
  mkdir crowd
  seq "$CROWD" | xargs -P "$AT_ONCE" -I '{}' sh -c 'mkdir crowd/{} && cd crowd/{} && ln -s ../../clip.yuv &&
    "$0" '"$GOLDEN_RUN"' > console && cmp console "$1/clip.console.txt" &&
    cmp metricsResultsCSV.csv "$1/clip.report.tsv"' "$build/lumaprobe" "$golden"
}

makeClips
# Expected is what the program in BUILD writes, but for the clip, whose golden rows are kept.
writeAll expected "$build/lumaprobe"
cp "$golden/clip.console.txt" "expected/${GOLDEN_RUN// /_}.console"
cp "$golden/clip.report.tsv" "expected/${GOLDEN_RUN// /_}.report"
# A field is padded to five characters at least, the last one too, so that "-nan " becomes "nan  ". A
# nan of the command line keeps its sign: it stands at the start of no field.
cp -r expected expectedElsewhere
sed -i 's/\t-nan /\tnan  /g' expectedElsewhere/*.console expectedElsewhere/*.report
# The clips do lead to what is printed differently when a compiler or a processor interferes.
grep -q $'\t-nan ' expected/*.report
grep -q $'\tinf ' expected/*.report
grep -q 'FPS = -nan,' expectedElsewhere/*.console
# musl reads "-nan" as nan, and sorts in its own way.
cp -r expected expectedWithMusl
sed -i 's/FPS = -nan,/FPS = nan,/' expectedWithMusl/*.console
hideUndefinedSlices expectedWithMusl

tableRow build 'what is to hold' 'how it runs' holds
tableRow --- --- --- ---
oneCore=(taskset -c "$(sed -n 's/^Cpus_allowed_list:\t\([0-9]*\).*/\1/p' /proc/self/status)")
[[ $(nproc) != 1 ]] || tableRow all '' 'all cores' 'not done: there is one core here'
canFix=1
if ! setarch -R true 2> /dev/null; then
  canFix=
  tableRow all '' 'fixed addresses' 'not done: the system refuses them (personality)'
fi
[[ $(< /proc/sys/kernel/randomize_va_space) == 2 ]] ||
  tableRow all '' 'random addresses' 'not done: the system is set to fixed ones'
hasAvx2=1
if ! grep -qw avx2 /proc/cpuinfo; then
  hasAvx2=
  tableRow 'all with AVX2' '' '' 'not done: this processor has none'
fi

verdict 'as given' "$UNFUSED" '' isUnfused objdump "$build/lumaprobe"
checkPlacements 'as given' "$build/lumaprobe"
if [[ $full ]]; then
  checkRuns 'as given' 'memory filled before use' expected env MALLOC_PERTURB_=165 "$build/lumaprobe"
  checkRuns 'as given' 'Nehalem: no AVX2, no FMA' expected qemu-x86_64 -cpu Nehalem "$build/lumaprobe"
  verdict 'as given' "$CROWD x the clip, same bytes" "$AT_ONCE at once" checkCrowd
  for level in -O0 -O1 -O2 -O3; do
    checkBuild "GCC $level AVX2" release "$level"
    checkBuild "GCC $level baseline" portable "$level"
    checkBuild "clang $level baseline" clang "$level"
    [[ ! $hasAvx2 ]] || checkBuild "clang $level AVX2" clang "$level -march=x86-64-v3"
    checkBuild "ARM64 GCC $level" arm64 "$level"
    checkBuild "ARM64 clang $level" arm64 "$level" -DCMAKE_CXX_COMPILER=clang++ \
      -DCMAKE_CXX_COMPILER_TARGET=aarch64-linux-gnu
    checkMusl "$level"
  done
  for machine in armhf riscv64 s390x; do checkBuild "$machine GCC -O3" "$machine" -O3; done
  for machine in arm64 armhf riscv64 s390x; do checkTests "$machine"; done
else
  checkBuild 'GCC -O3 baseline' portable -O3
  checkBuild 'clang -O3 baseline' clang -O3
  checkBuild 'ARM64 GCC -O2' arm64 -O2
fi
[[ ! $failed ]]
