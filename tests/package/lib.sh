# shellcheck shell=bash
# What the tests of packages share. Sourced, in a directory of its own afterwards.

# shellcheck source=script/lib.sh
. "$(dirname "${BASH_SOURCE[0]}")/../../script/lib.sh"
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
cd "$work" || exit
export GNUPGHOME=$work/gnupg
mkdir -m 700 gnupg
umask 022
failures=0

complain() {
    echo "FAILED: $*" >&2
    failures=$((failures + 1))
}

# prepare BUILD_DIR: what is packed of three images and a utility, as `arguments`.
prepare() {
    local image
    arguments=(--any-width --build "$1" --flash-tool tool --images images
        --build-version 7.12b.4.3a --out out/p)
    mkdir out images
    for image in 3C01bc 3C02mbaf 3C06ncsi; do
        echo "firmware $image" >images/$image.bin
    done
    printf '#!/bin/sh\n' >tool
    chmod +x tool
}

# package ARGUMENT...: a later argument takes the place of an earlier one.
package() {
    "$tree/script/package" "${arguments[@]}" "$@" >said 2>&1
}

# key NAME OPTION...
key() {
    local name=$1
    shift
    gpg --batch -q --passphrase '' "$@" --quick-generate-key "$name" ed25519 sign "${expires:-never}" \
        2>>"$work/gpg.log"
    gpg --batch -q --export "$name" >"$name.gpg"
}
