#!/bin/sh
# No shell script gives shellcheck anything to say.
set -eu
cd "$1"
find scripts tests -name '*.sh' -exec shellcheck .ci/run {} +
