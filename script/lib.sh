# shellcheck shell=bash
# What the scripts share. Sourced, never run: . "$(dirname "$0")/lib.sh"
# Sets `tree`, the absolute path of the source tree.

# shellcheck disable=SC2034 # for the scripts that source this
tree=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd -P)

# A script's own words go to standard error; standard output belongs to what it runs.
say() {
    printf '%s: %s\n' "${0##*/}" "$*" >&2
}

die() {
    say "$@"
    exit 1
}

# The comment at a script's top is its help.
show_help() {
    sed -n '2,${/^#/!q;s/^# \{0,1\}//p;}' "$0"
}
