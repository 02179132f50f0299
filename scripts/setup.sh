#!/usr/bin/env bash
# Installs what this machine lacks, with apt-get and npm, and says what that is. Does nothing when all is there.
#
# usage: scripts/setup.sh GROUP...
#   build   compile the analyser
#   scan    compile lumascan as well (includes the first)
#   video   decode video files
#   bench   measure it (includes build and video)
#   test    build and run all tests (includes all above)
#   long    run the long tiers: every build, fuzzing, coverage, calibration (includes all others)
set -euo pipefail

build='g++ cmake ninja-build'
scan="$build pkg-config libavformat-dev libavcodec-dev libavutil-dev libswscale-dev"
scan+=' libcli11-dev libfmt-dev nlohmann-json3-dev zlib1g-dev'
video='ffmpeg'
bench="$build $video libbenchmark-dev valgrind"
test="$bench $scan libgtest-dev clang libclang-rt-14-dev clang-format clang-tidy cppcheck shellcheck locales"
test+=' g++-aarch64-linux-gnu qemu-user python3 python3-jsonschema chromium strace'
test+=' python3-imageio python3-mecavideo planetblupi-common gem-doc'  # for their video clips
# shellcheck disable=SC2034  # read by its name
long="$test gcovr opencv-doc mate-backgrounds googletest musl-tools"
# shellcheck disable=SC2034
long+=' g++-arm-linux-gnueabihf g++-riscv64-linux-gnu g++-s390x-linux-gnu'
# For the calibration's photographs and films (scripts/calibration/sources.py): some 500 MB together.
long+=' python3-numpy fonts-dejavu-core visp-images-data palapeli-data libjs-jquery-slides libjs-jquery-backstretch'
long+=' labelme-examples psychtoolbox-3-common python-nbsphinx-doc python3-hug-doc lebiniou-data fillets-ng-data'
long+=' libjxl-testdata hollywood golang-github-disintegration-imaging-dev gnome-mahjongg gnome-tetravex lightsoff'
long+=' five-or-more openboard-common'

wanted=
for group in "$@"; do
  case $group in
    build | scan | video | bench | test | long) wanted+=" ${!group}" ;;
    *)
      echo "setup.sh: unknown group \"$group\": build, scan, video, bench, test and long are known" >&2
      exit 2
      ;;
  esac
done

missing=
for package in $wanted; do
  status=$(dpkg-query -W -f '${Status}' "$package" 2>/dev/null || true)
  [[ $status == 'install ok installed' || $missing == *" $package"* ]] || missing+=" $package"
done
# What draws the plots of lumascan's pages, and what tries them in a browser, come from npm, which may be there
# without Debian's package of it.
page=$(dirname "$0")/../scan/page
wants_page=
[[ " $wanted " != *' zlib1g-dev '* ]] || wants_page=yes
[[ -z $wants_page ]] || command -v npm > /dev/null || missing+=' nodejs npm'

log=$(mktemp)
trap 'rm -f "$log"' EXIT

# $1: what is installed, the rest: the command.
install() {
  local what=$1
  shift
  echo "setup.sh: installing $what"
  "$@" > "$log" 2>&1 && return
  tail -n 20 "$log" >&2
  echo "setup.sh: could not install $what" >&2
  exit 1
}

if [[ -n $missing ]]; then
  as_root=
  [[ $(id -u) == 0 ]] || as_root=sudo
  # shellcheck disable=SC2086,SC2016  # words of a list; the inner shell's own
  install "${missing# }" $as_root env DEBIAN_FRONTEND=noninteractive sh -c \
    'apt-get update && apt-get install -y --no-install-recommends "$@"' sh $missing
fi
if [[ -n $wants_page && $page/node_modules/.package-lock.json -ot $page/package-lock.json ]]; then
  install "the page's packages" npm ci --prefix "$page" --ignore-scripts --no-audit --no-fund
fi
