#!/bin/sh
# The pages work in a browser.
set -eu
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
mkdir "$work/thumbs"
ffmpeg -v error -f lavfi -i testsrc2=size=160x90:rate=1 -frames:v 24 -q:v 6 "$work/thumbs/%d.jpg"
"$2/scanSamplePages" "$work"
node "$1/tests/scan/page.mjs" "$1" "$work"
