#!/usr/bin/env bash
# What script/package refuses, that it leaves nothing behind then, and that what it makes is whole,
# always the same, and runs by its README alone.
#
#   tests/package/package_test.sh BUILD_DIR
set -eu

build=$(cd "$1" && pwd)
# shellcheck source=tests/package/lib.sh
. "$(dirname "$0")/lib.sh"
prepare "$build"
export SOURCE_DATE_EPOCH=1700000000
zentrix=$(tree_version)

# refused MESSAGE ARGUMENT...
refused() {
    local message=$1 before
    before=$(ls -A out)
    shift
    if package "$@"; then
        complain "taken: $*"
    elif ! grep -qF -- "$message" said; then
        complain "no \"$message\" for: $*, but: $(cat said)"
    elif [ "$(ls -A out)" != "$before" ]; then
        complain "left behind for $*: $(ls -A out)"
    fi
    rm -rf out/p out/p.tar.gz
}

# ---- Refusals.

digits=$(printf '4%.0s' {1..40})
for wrong in '' 7.12.4.3a 7.12b.4.3 7.12b.4.3a.1; do
    refused "\"$wrong\" is no version" --build-version "$wrong"
done
for wrong in '7.12b.4.3a;id' '7.12b.4.3a ' $'7.12b.4.3a\n' "7.12b.\$(id).3a" '7.12b.4_1.3a'; do
    refused "letters, digits and dots only: $wrong" --build-version "$wrong"
done
refused "48 characters at most" --build-version "7.12b.${digits}.3a"

printf '#!/bin/sh\n' >not-executable
echo text >no-program && chmod +x no-program
refused "no such file: nowhere" --flash-tool nowhere
refused "no such file: images" --flash-tool images
refused "lacks the permission: not-executable" --flash-tool not-executable
refused "neither a program nor a script: no-program" --flash-tool no-program

for wrong in 3CFFbc.bin 3c01bc.bin 3C01BC.bin 3C01efi.bin 3C01.bin 3C01bc 3C01bc.bin.orig README \
    .hidden; do
    mkdir wrong
    echo firmware | tee wrong/3C01bc.bin >"wrong/$wrong"
    refused "\"$wrong\" isn't named by" --images wrong
    rm -r wrong
done
mkdir -p none empty directory/3C01bc.bin
: >empty/3C01bc.bin
refused "no images in none" --images none
refused "no such directory of images: tool" --images tool
refused "an empty image: empty/3C01bc.bin" --images empty
refused "not a file: directory/3C01bc.bin" --images directory

# What is for 64 bits, then for another processor, then right but not this version's.
mkdir wide
cp "$build/package_check" wide
arguments=("${arguments[@]:1}")
printf '\177ELF\2\1\1\0\0\0\0\0\0\0\0\0\3\0\3\0' >wide/zentrix
refused "not a 32-bit x86 program: wide/zentrix" --build wide
printf '\177ELF\1\1\1\0\0\0\0\0\0\0\0\0\3\0\50\0' >wide/zentrix
refused "not a 32-bit x86 program: wide/zentrix" --build wide
printf '\177ELF\1\1\1\0\0\0\0\0\0\0\0\0\3\0\3\0' >wide/zentrix
refused "build it anew" --build wide
echo "$zentrix" >>wide/zentrix
package --build wide --out wide/p || complain "32 bits: $(cat said)"
arguments+=(--any-width)
refused "no none/zentrix: script/release makes it" --build none

virtual=(--flash-tool '' --images '' --build-version '' --virtual)
refused "no fleet is called \"nowhere\"" "${virtual[@]}" nowhere
refused "--virtual brings its own" --virtual
refused "letters, digits, dots, dashes and underscores only: a b" --out "out/a b"
SOURCE_DATE_EPOCH=soon refused "SOURCE_DATE_EPOCH is no number of seconds: soon"
refused "no such directory: $work/nowhere" --out nowhere/p
mkdir out/p
refused "already there: $work/out/p"
: >out/p.tar.gz
refused "already there: $work/out/p.tar.gz"

# ---- Packages.

listed="3C01bc.bin 3C02mbaf.bin 3C06ncsi.bin BuildVersion.txt README SHA256SUMS lnxfwvt2"
listed+=" zentrix zentrix.8"
# Only a 32-bit one goes to servers.
! is_for_x86 "$build/zentrix-report" || listed=${listed/ zentrix / tools zentrix }
longest=7.12b.${digits:1}.3a
package --build-version "$longest" || complain "${#longest} characters: $(cat said)"
[ "$(cat out/p/BuildVersion.txt)" = "$longest" ] || complain "another BuildVersion.txt"
[ "$(cd out/p && echo *)" = "$listed" ] || complain "in the package: $(ls out/p)"
"$tree/script/verify" --unsigned out/p >said || complain "not whole"

modes=$(cd out/p && stat -c '%a %n' zentrix lnxfwvt2 README 3C01bc.bin . | tr '\n' ' ')
[ "$modes" = "755 zentrix 755 lnxfwvt2 644 README 644 3C01bc.bin 700 . " ] ||
    complain "modes: $modes"
[ "$(stat -c %Y out/p out/p/* | sort -u)" = $SOURCE_DATE_EPOCH ] || complain "another date"
tar tzf out/p.tar.gz | LC_ALL=C sort -c || complain "not in order"

# The same content, of another time and with other permissions.
mkdir -m g+s again
cp -r images again/images
find again -type f -exec chmod 600 {} + -exec touch -d 2001-01-01 {} +
! grep -q 'signed: \|@' out/p/README || complain "unfinished: $(cat out/p/README)"
for mask in 000 077; do
    rm -rf again/p again/p.tar.gz
    (umask $mask && package --build-version "$longest" --images again/images --out again/p) ||
        complain "again: $(cat said)"
    cmp out/p.tar.gz again/p.tar.gz || complain "not the same twice, with umask $mask"
    diff <(ls -ln --time-style=+%s out/p) <(ls -ln --time-style=+%s again/p) ||
        complain "other files twice, with umask $mask"
    (umask $mask && "$tree/script/verify" --unsigned again/p >said) || complain "not whole: $(cat said)"
done
tar xzf again/p.tar.gz -C again --one-top-level=unpacked
diff -r out/p again/unpacked/p || complain "the archive isn't the directory"

# says COMMIT: what the README of a package out of the copied tree says.
says() {
    rm -rf named named.tar.gz
    copied/script/package "${arguments[@]}" --out named >said 2>&1 || complain "copied: $(cat said)"
    grep -qx "zentrix $zentrix, packed from $1" named/README ||
        complain "not packed from $1, but: $(grep zentrix named/README | head -n 1)"
}
mkdir copied
cp -r "$tree"/{CMakeLists.txt,script,package,docs} copied
says "an unknown commit"
if command -v git >/dev/null; then
    git init -q copied
    says "an unknown commit"
    git -C copied add -A
    git -C copied -c user.name=t -c user.email=t@t commit -qm one
    commit=$(git -C copied rev-parse --short=12 HEAD)
    says "commit $commit"
    echo "# changed" >>copied/CMakeLists.txt
    says "commit $commit with uncommitted changes"
fi

# A rehearsal package does what its README says, by the commands that it names.
package "${virtual[@]}" one --out out/rehearsal || complain "virtual: $(cat said)"
# /build is shown for the libraries of its programs, where a stand-in holds no others.
"$tree/script/sandbox" --ro "$work/out/rehearsal.tar.gz:/rehearsal.tar.gz" --ro "$build:/build" -- sh -euc '
    mkdir /root/empty
    cd /root/empty
    tar xzf /rehearsal.tar.gz
    cd rehearsal
    sed -n "s/^    # //p" README >/tmp/commands
    sh -eu /tmp/commands' >rehearsed 2>&1 || complain "rehearsal: exit status $?: $(cat rehearsed)"
[ "$(grep -c '^02000000000[12] .*7\.12\.20' rehearsed)" = 2 ] ||
    complain "nothing flashed: $(cat rehearsed)"

[ $failures = 0 ]
