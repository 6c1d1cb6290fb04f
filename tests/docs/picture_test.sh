#!/usr/bin/env bash
# The README's picture is what script/screenshot draws of a run on the rack.
#
#   tests/docs/picture_test.sh TREE BUILD_DIR
set -eu

work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
"$1/script/fleet" rack "$2" "$work/package"
"$1/script/sandbox" --rw "$work/package:/package" --ro "$2:/build" --chdir /package \
    env LD_LIBRARY_PATH=/package ./zentrix >"$work/console"
"$1/script/screenshot" --console "$work/console" | diff -u "$1/docs/demo.svg" - ||
    { echo "script/screenshot draws it anew" && false; }
