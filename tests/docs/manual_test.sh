#!/usr/bin/env bash
# Holds the manual page and the README against the program, both ways.
#
#   tests/docs/manual_test.sh [TREE]
#
# Compared are the options and the exit statuses, and of the page also the texts that report a
# failure and the device IDs: what the program has and a document doesn't is as wrong as the
# reverse. The page's own form is judged by mandoc where it is installed.
set -eu

tree=${1:-$(dirname "$0")/../..}
page=$tree/docs/zentrix.8
failed=

# What tells a text about a failure from all others.
about_failures='[Ee]rror|[Ww]arning|!!!|[Ff]ail|[Cc]annot|[Uu]nable|[Mm]issing|[Ii]nvalid'
about_failures+='|REBOOT REQUIRED|Duplicated MAC|Skipping'

# Every string literal of the program that is about a failure, as a reader sees it: without line
# feeds and outer blanks, and with "<>" where something is put in.
program_texts() {
    find "$tree/src" -name '*.cpp' -exec sed 's,^ *//.*,,' {} + |
        grep -oE '"([^"\\]|\\.)*"' | grep -E "$about_failures" |
        sed -E 's/^"(.*)"$/\1/; s/\\[nt]/ /g; s/\\"/"/g; s/%[sdu]/<>/g; s/^ +| +$//g'
}

# The items of the page's list, up to where other programs' texts begin.
page_texts() {
    sed -n '/^\.Sh DIAGNOSTICS/,/^\.Ss Texts of other/s/^\.It Li //p' "$page" |
        sed -E 's/^"(.*)"$/\1/; s/""/"/g; s/<[^>]*>/<>/g'
}

program_options() {
    sed -nE 's/^ *\{"(-[^"]*)", (nullptr|"([^"]*)"), .*/\1 \3/p' "$tree/src/run/command_line.cpp" |
        sed 's/ $//'
}

page_options() {
    sed -n '/^\.Sh OPTIONS/,/^\.Sh ENV/s/^\.It Fl /-/p' "$page" | sed 's/ Fl / -/; s/\\&//'
}

program_statuses() {
    sed -nE 's/^ *exit[A-Za-z]+ = ([0-9]+),.*/\1/p' "$tree/src/update/exit_status.h"
}

page_statuses() {
    sed -n '/^\.Sh EXIT STATUS/,/^\.Sh EX/s/^\.It //p' "$page"
}

program_devices() {
    sed -n '/ SUPDID\[\]/,/;/p' "$tree/src/inventory/supported_device.cpp" |
        grep -oE '\{"[0-9A-F]{4}"' | tr -d '{"'
}

page_devices() {
    sed -n '/^Supported are/,/\.$/p' "$page" | grep -oE '[0-9A-F]{4}'
}

# shellcheck disable=SC2016 # those are Markdown's quotes
readme_options() {
    sed -nE 's/^\| `(-[^`]*)` \|.*/\1/p' "$tree/README.md"
}

readme_statuses() {
    sed -nE 's/^\| ([0-9]+) \|.*/\1/p' "$tree/README.md"
}

# compare DOCUMENT KIND: a side that is empty means that this test no longer finds what it compares.
compare() {
    local program document
    program=$("program_$2" | sort -u)
    document=$("$1_$2" | sort -u)
    if [ -z "$program" ] || [ -z "$document" ]; then
        echo "$2: none found in the program or none in the $1"
        failed=yes
    elif ! diff --label "$2 of the program" --label "$2 of the $1" -U 0 \
        <(echo "$program") <(echo "$document"); then
        failed=yes
    fi
}

compare page texts
compare page options
compare page statuses
compare page devices
compare readme options
compare readme statuses
! command -v mandoc >/dev/null || mandoc -T lint -W warning "$page" || failed=yes
[ -z "$failed" ]
