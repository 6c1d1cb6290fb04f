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

# What can't be done on this machine is said in one line, with what could.
skip() {
    say "skipped: $*"
    exit 77
}

# Root can ask the kernel itself, before anything is installed.
need_namespaces() {
    local try=("$tree/script/sandbox" --whole)
    [ "$EUID" != 0 ] || try=(unshare --mount --pid --fork)
    "${try[@]}" true 2>/dev/null ||
        skip "$1 takes namespaces of its own; in a container those take --privileged, or --cap-add SYS_ADMIN"
}

# The comment at a script's top is its help.
show_help() {
    sed -n '2,${/^#/!q;s/^# \{0,1\}//p;}' "$0"
}

tree_version() {
    sed -nE 's/^project\(zentrix VERSION ([0-9.]+).*/\1/p' "$tree/CMakeLists.txt" | grep .
}

# The first bytes of a file in hexadecimal.
head_of() {
    od -An -v -tx1 -N20 -- "$1" | tr -d ' \n'
}

# Whether a program is a 32-bit one: ELF, 32 bits, little-endian; then what is for no machine in particular; then x86.
is_for_x86() {
    local head
    head=$(head_of "$1")
    [[ $head == 7f454c460101* && ${head:36:4} == 0300 ]]
}

# ---- Bare Debian trees.

# shellcheck disable=SC2034
trees=$tree/build/trees

# Where apt gets this machine's own Debian from. What was never fetched has no origin yet, but a
# name.
apt_mirror() {
    local codename wanted=(Component:\ main Created-By:\ Packages)
    codename=$(sed -n 's/^VERSION_CODENAME=//p' /etc/os-release)
    {
        apt-get indextargets --format "\$(REPO_URI)" "${wanted[@]}" 'Origin: Debian' 'Label: Debian'
        apt-get indextargets --format "\$(REPO_URI)" "${wanted[@]}" "Release: $codename"
    } | grep -m 1 -E '^(https?|file):'
}

# need_trees WHAT: sets `mirror`, and what else mmdebstrap needs.
need_trees() {
    [ "$EUID" = 0 ] || skip "mmdebstrap takes root"
    need_namespaces "$1"
    "$tree/script/bootstrap" build release || skip "mmdebstrap can't be had"
    mirror=$(apt_mirror) || skip "apt knows no Debian mirror here: /etc/apt/sources.list can name one"
    use_apt_proxy
}

use_apt_proxy() {
    eval "$(apt-config shell http_proxy Acquire::http::Proxy https_proxy Acquire::https::Proxy)"
    export http_proxy https_proxy
}

# lay_out NAME SUITE MIRROR OPTION...: what is mounted while a tree is laid out stays in mmdebstrap's
# own namespaces and is gone with them, however it ends. A mirror may stand still: old signatures are
# good ones.
lay_out() {
    local name=$1 suite=$2 mirror=$3 log=$trees/$1.log
    shift 3
    [ ! -d "$trees/$name" ] || return 0
    say "laying out build/trees/$name"
    mkdir -p "$trees"
    rm -rf "$trees/$name.new"
    if ! TMPDIR=$trees mmdebstrap --mode=root --format=directory \
        --aptopt='Acquire::Check-Valid-Until "false"' "$@" \
        "$suite" "$trees/$name.new" "$mirror" >"$log" 2>&1; then
        tail -n 3 "$log" >&2
        rm -rf "$trees/$name.new"
        return 1
    fi
    mv "$trees/$name.new" "$trees/$name"
}
