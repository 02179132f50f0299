#!/bin/sh
# Every change that is said to be beyond all tests is still one that scripts/mutation.py makes.
set -eu
"$1/scripts/mutation.py" --list > /dev/null
