#!/usr/bin/env bash
# Says whose fault a finding of fuzzing is, by what a fuzz target printed when it ended.
#
# usage: scripts/fuzzFinding.sh LOG
#
# The first line is "ours" or "FFmpeg's" and what it was. The innermost of the functions that led to it
# decides, those of the C and C++ libraries and of the sanitizers left out: one in another library is
# FFmpeg's own, or of one that it uses. What cannot be told is ours, and so is memory that nobody frees:
# who allocated it need not be who was to free it. The lines behind it are these
# functions, the innermost first. Where FFmpeg fails because of what it was given, or takes long because
# it is called again and again, that is for a person to see there.
set -euo pipefail
[[ $# == 1 && -r $1 ]] || { echo 'usage: scripts/fuzzFinding.sh LOG' >&2; exit 2; }
awk '
  # What a frame is of: "" for those left out.
  function ownerOf(name, place) {
    if (name ~ /^(__interceptor|__asan|__sanitizer|__ubsan|__lsan|fuzzer::|operator (new|delete)|main$|_start$)/)
      return ""
    if (place ~ /^\(<unknown module>/) return ""
    if (place ~ /^\//) return "ours"
    if (place !~ /^\(/) return ""  # the C library, by its own sources
    sub(/^\(/, "", place)
    sub(/\+0x.*/, "", place)
    sub(/.*\//, "", place)
    if (place ~ /^(lib(c|m|pthread|dl|rt|stdc\+\+|gcc_s|asan|ubsan)[.-]|ld-)/) return ""
    return place ~ /^lib/ ? place : "ours"
  }
  /ERROR: |runtime error: |^does not hold: / && !kind { kind = $0; sub(/^==[0-9]+== ?/, "", kind) }
  /Test unit written to / { unit = $NF; sub(/.*\//, "", unit) }
  # Of several stacks the first: where it was, not where something was allocated.
  /^ *#0 / { ++stacks }
  /^ *#[0-9]+ / && stacks == 1 {
    name = place = $0
    sub(/^ *#[0-9]+ 0x[0-9a-f]+ */, "", name)
    sub(/ \(BuildId: .*/, "", name)
    place = name
    if (name ~ /^in /) {
      # Names of functions hold blanks and brackets, places neither.
      sub(/^in /, "", name)
      place = name
      sub(/.* /, "", place)
      name = substr(name, 1, length(name) - length(place) - 1)
    } else {
      name = ""
    }
    owner = ownerOf(name, place)
    if (owner == "") next
    if (whose == "") whose = owner == "ours" ? "ours" : "FFmpeg\047s"
    if (lines < 12) trace = trace "  " (name == "" ? "?" : substr(name, 1, 80)) " " place "\n"
    ++lines
  }
  END {
    if (kind ~ /LeakSanitizer/) whose = "ours"
    printf "%s: %s (%s)\n%s", whose == "" ? "ours" : whose, kind == "" ? "it ended" : kind, unit, trace
  }' "$1"
