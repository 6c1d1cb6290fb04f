#!/usr/bin/env bash
# Holds the manual page against the program, both ways: options, synopsis, exit statuses, the texts
# that report a failure, device IDs and images; and the virtual adapters' page against their components. What each exit status asks for must be the same in the README
# of a package, and what tells of a failed flash must lead to -f. mandoc judges the page's form.
#
#   tests/docs/manual_test.sh [TREE]
set -eu

tree=${1:-$(dirname "$0")/../..}
page=$tree/docs/zentrix.8
failed=

# What tells a text about a failure from all others.
about_failures='[Ee]rror|[Ww]arning|!!!|[Ff]ail|[Cc]annot|[Uu]nable|[Mm]issing|[Ii]nvalid'
about_failures+='|REBOOT REQUIRED|Duplicated MAC|Skipping'
# What tells that an adapter was stamped and not flashed. "Update failed" is on the console.
failed_flash='Error updating|Update failed|File not found|[Ff]irmware corrupted|Skipping command'
# What an exit status can ask for, and when.
steps='-f\>|run again|reboot needed|REBOOT REQUIRED|Error updating|\./lnxfwvt2|driver'

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

synopsis_options() {
    sed -n '/^\.Sh SYNOPSIS/,/^\.Sh DESC/s/^\.\(Op \)\{0,1\}Fl //p' "$page" |
        sed 's/\\&//; s/ | \(Fl \)\{0,1\}/\n/g; s/ Fl / -/g' | sed 's/^/-/'
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

# What images are made for: components that can be found and flashed, and what FCODE asks for instead.
program_images() {
    sed -n '/ components\[\] = {/,/^};/p' "$tree/src/inventory/component_table.h" |
        grep -v 'neverFlashed\|, {}' | sed -nE 's/^ *\{&[^"]*"([a-z0-9]+)".*nullptr, "([a-z0-9]+)".*/\1 \2/p; t; s/^ *\{&[^"]*"([a-z0-9]+)".*/\1/p' |
        tr ' ' '\n'
}

page_images() {
    sed -n '/^\.It Ar ID Ns/,/^Only those/s/^\.Pa //p' "$page" | tr -d ',' | tr -s ' ' '\n'
}

emulator_kinds() {
    sed -n '/ componentKinds\[\] = {/,/^};/p' "$tree/emulator/component.cpp" |
        sed -nE 's/^ *\{"([^"]*)", "([^"]*)", "([^"]*)", .*/\1: \2, \3/p'
}

# shellcheck disable=SC2016 # the page's own quotes
readme_kinds() {
    sed -n '/^| Component | Name /,/^$/p' "$tree/emulator/README.md" |
        sed -nE 's/^\| `([^`]*)` \| ([^|]*) \| ([^|]*) \|.*/\1: \2, \3/p'
}

# The items of a section of the page as plain text, one a line. Titles in a row share one text.
page_items() {
    awk -v section=".Sh $1" '
        /^\.Sh / { inside = $0 == section }
        !inside { next }
        /^\.It / && !titled { print item; item = "" }
        { titled = /^\.It / }
        { sub(/^\.It (Li )?/, ""); sub(/^\.Fl /, "-"); sub(/^\.[A-Z][a-z] /, "") }
        { item = item $0 " " }
        END { print item }' "$page"
}

# The same of the exit statuses in the README of a package for servers.
server_items() {
    sed -n '/^EXIT STATUS/,/^LOG/s/^  //p' "$tree/package/README.server" |
        awk '/^[0-9]/ { print item; item = "" } { item = item $0 " " } END { print item }' | tr -s " "
}

# The steps of each sentence that asks for one, behind its exit status.
steps_of_items() {
    local status text sentence
    while read -r status text; do
        while read -r sentence; do
            echo "$status: $(grep -oE -- "$steps" <<<"$sentence" | sort -u | paste -sd +)"
        done <<<"${text//. /$'\n'}"
    done | grep -v ': $'
}

page_steps() {
    page_items "EXIT STATUS" | grep '^[0-9]' | steps_of_items
}

server_steps() {
    server_items | steps_of_items
}

# compare ONE OTHER KIND: a side that is empty means that this test no longer finds what it compares.
compare() {
    local one other
    one=$("$1_$3" | sort -u)
    other=$("$2_$3" | sort -u)
    if [ -z "$one" ] || [ -z "$other" ]; then
        echo "$3: none found in the $1 or none in the $2"
        failed=yes
    elif ! diff --label "$3 of the $1" --label "$3 of the $2" -U 0 \
        <(echo "$one") <(echo "$other"); then
        failed=yes
    fi
}

# The next step of whatever tells of a failed flash.
leads_to_force() {
    local explained
    explained=$(page_items DIAGNOSTICS | grep 'Next :' | grep -E -- "$failed_flash") || true
    if [ -z "$explained" ] || grep -vE -- 'Next :.*[ `]-f\>' <<<"$explained"; then
        echo "the page explains no failed flash, or the above without -f as the next step"
        failed=yes
    fi
}

compare program page texts
compare program page options
compare program page statuses
compare program page devices
compare program page images
compare emulator readme kinds
compare program synopsis options
compare page server steps
leads_to_force
mandoc -T lint -W warning "$page" || failed=yes
[ -z "$failed" ]
