#!/usr/bin/env bash
# Signed packages, and what script/package and script/verify leave behind when they are killed or the
# disk is full: never a package that isn't whole and can be verified, nor a yes to one. In
# script/sandbox, where keys and disks are gone with it.
#
#   tests/package/faults_test.sh BUILD_DIR [EVERY]
#
# script/package is killed before each of its commands, or only every EVERYth.
set -eu

# shellcheck source=tests/package/lib.sh
. "$(dirname "$0")/lib.sh"
every=${2-1}
export SOURCE_DATE_EPOCH=1710000000
key good --faked-system-time '20240101T000000!'
key young --faked-system-time '20250101T000000!'
prepare build
arguments+=(--sign good)
mkdir build
cp "$1/package_check" build
tree_version >build/zentrix

# ---- Signed by a key of gpg's, twice the same.

package || complain "not signed: $(cat said)"
for package in out/p out/p.tar.gz; do
    "$tree/script/verify" $package good.gpg | grep -q 'signed on 2024-03-09 by' || complain "another date: $package"
done
grep -q '"verify p\.tar\.gz zentrix\.gpg"' out/p/README || complain "its README names no script/verify"
# The first line of its README that is a command; those after it run zentrix.
line=$(sed -n '/^    # /{s///p;q}' out/p/README)
said=$(cd out/p && sh -euc "${line:?}" 2>&1) || said+=" (a failure)"
[ ! "$said" ] || complain "the README's sums: $said"
mv out whole
mkdir out
(umask 077 && package) || complain "not signed again: $(cat said)"
diff -r whole out || complain "not signed twice the same"
rm -r out/p out/p.tar.gz
! package || complain "written over a signature"
rm out/p.tar.gz.asc
# A key that was made a moment ago, where nothing sets another time.
(
    unset SOURCE_DATE_EPOCH
    key new
    package --sign new && "$tree/script/verify" out/p.tar.gz new.gpg
) >answer || complain "not signed by a new key: $(cat said)"
rm -r out/p*
for key in nobody young; do
    ! package --sign $key || complain "signed by $key"
    grep -q "gpg can't sign by $key" said || complain "no reason: $(cat said)"
    [ -z "$(ls -A out)" ] || complain "left behind for $key: $(ls -A out)"
done

# ---- Killed, or out of disk.

# judge CASE: what lies in out/ now, under whatever name. What can be verified is as it would be.
judge() {
    local found
    while IFS= read -r -d '' found; do
        case $found in
            *.tar.gz)
                ! "$tree/script/verify" --unsigned "$found" >/dev/null 2>&1 || cmp "$found" whole/p.tar.gz
                ;;
            *)
                ! "$tree/script/verify" --unsigned "$found" >/dev/null 2>&1 ||
                    diff -r -x SHA256SUMS.asc "$found" whole/p
                ! "$tree/script/verify" "$found" good.gpg >/dev/null 2>&1 || diff -r "$found" whole/p
                ;;
        esac || complain "$1: $found can be verified, but isn't whole"
    done < <(find out -path '*/fleet' -prune -o \( -name '*.tar.gz' -o -type d \) -print0)
    for found in out/*; do
        diff -r "$found" "whole/${found#out/}" || complain "$1: $found isn't whole"
    done
    [ ! -e out/p.tar.gz.asc ] || diff -r whole/p out/p || complain "$1: a signature, but not all the rest"
}

clean() {
    rm -rf out/* out/.package.*
}

shopt -s nullglob
# shellcheck disable=SC2016 # it is to expand over there
echo '[[ $0 != */script/package ]] || { set -T; commands=0; trap '\''((++commands != at)) || kill -$signal $$'\'' DEBUG; }' >kill.sh
# Once with signals that it can clean up after, then with the one that it can't.
for signal in TERM INT KILL; do
    step=$every
    [ $signal = KILL ] || step=$((every * 5))
    for ((at = 1; ; at += step)); do
        ! BASH_ENV=$work/kill.sh at=$at signal=$signal package 2>/dev/null || break
        judge "$signal before command $at"
        left=$(cd out && echo .package.* *)
        [[ $signal == KILL || $left == '' || $left == 'p p.tar.gz p.tar.gz.asc' ]] ||
            complain "$signal before command $at left $left"
        clean
    done
    [ $at -gt 100 ] || complain "not killed at $at: $(cat said)"
    judge "not killed"
    clean
done

full=0
for ((room = 4; ; room += 4)); do
    mount -n -t tmpfs -o size=${room}k tmpfs out
    status=0
    package || status=$?
    judge "$room KiB"
    if [ $status != 0 ] && [ "$(ls -A out)" ]; then
        complain "left behind in $room KiB: $(ls -A out)"
    fi
    # At once, though a program that script/verify read from may not have ended yet.
    umount -n -l out
    [ $status != 0 ] || break
    full=$((full + 1))
done
[ $full -gt 10 ] || complain "a full disk was met $full times"

# What script/verify asks ends before it answers, or half-way: then the answer isn't yes.
mkdir bin
for tool in awk cmp cp cut diff find gpgv gzip od sha256sum sort tail tar tr; do
    for bytes in 0 60; do
        printf '#!/bin/bash\n%q "$@" | head -c %d\nkill -KILL $$\n' "$(type -P $tool)" $bytes >bin/$tool
        chmod +x bin/$tool
        for package in whole/p.tar.gz $([ $tool = gzip ] || echo whole/p); do
            status=0
            PATH=$work/bin:$PATH "$tree/script/verify" "$package" good.gpg >answer 2>/dev/null || status=$?
            if [ $status = 0 ] || [ -s answer ]; then
                complain "yes to $package, though $tool was killed after $bytes bytes"
            fi
        done
        rm bin/$tool
    done
done

[ $failures = 0 ]
