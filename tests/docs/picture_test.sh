#!/usr/bin/env bash
# The README's picture is what script/screenshot draws of the run that the end-to-end tests keep
# as tests/golden/update-rack.txt.
#
#   tests/docs/picture_test.sh [TREE]
set -eu

tree=${1:-$(dirname "$0")/../..}
console=$(mktemp)
trap 'rm -f "$console"' EXIT
# The transcript's first part is the console; the log follows.
sed '/^--- exit status/,$d' "$tree/tests/golden/update-rack.txt" >"$console"
"$tree/script/screenshot" --console "$console" | diff -u "$tree/docs/demo.svg" - ||
    { echo "script/screenshot draws it anew" && false; }
