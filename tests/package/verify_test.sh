#!/usr/bin/env bash
# What script/verify takes and refuses. In script/sandbox, where keys and their agent are gone with it.
#
#   tests/package/verify_test.sh
set -eu

tree=$(cd "$(dirname "$0")/../.." && pwd)
work=$(mktemp -d)
cd "$work"
failures=0
export GNUPGHOME=$work/gnupg
mkdir -m 700 gnupg elsewhere

complain() {
    echo "FAILED: $*" >&2
    failures=$((failures + 1))
}

# expect STATUS MESSAGE ARGUMENT...: an answer of one line on standard output, or reasons on standard
# error with MESSAGE among them.
expect() {
    local expected=$1 message=$2 status=0
    shift 2
    PATH=${path-$PATH} "$tree/script/verify" "$@" >out 2>err || status=$?
    if [ $status != "$expected" ]; then
        complain "exit status $status for $*: $(cat out err)"
    elif [ $status = 0 ] && { [ -s err ] || [ "$(wc -l <out)" != 1 ]; }; then
        complain "not one line for $*: $(cat out err)"
    elif [ $status != 0 ] && [ -s out ]; then
        complain "an answer for $*: $(cat out)"
    elif ! grep -qF -- "$message" out err; then
        complain "no \"$message\" for $*, but: $(cat out err)"
    fi
}

# key NAME OPTION...
key() {
    local name=$1
    shift
    gpg --batch -q --passphrase '' "$@" --quick-generate-key "$name" ed25519 sign "${expires:-never}" \
        2>>gpg.log
    gpg --batch -q --export "$name" >"$name.gpg"
}

fingerprint() {
    gpg --batch --list-keys --with-colons "$1" 2>>gpg.log | sed -n '/^fpr:/{s/^fpr:*//;s/:.*//;p;q}'
}

# sign KEY FILE OPTION...
sign() {
    local key=$1 file=$2
    shift 2
    gpg --batch -q --yes --local-user "$key" --armor --detach-sign "$@" --output "$file.asc" "$file" \
        2>>gpg.log
}

# A whole package p/ of its own directory; what is then done to it comes on standard input, before or
# after its sums are signed.
fresh() {
    rm -rf p p.tar.gz*
    mkdir -p p/tools
    echo firmware >p/3C01bc.bin
    echo program >p/zentrix
    echo report >p/tools/zentrix-report
    chmod -R go-w p
    (cd p && sha256sum 3C01bc.bin tools/zentrix-report zentrix >SHA256SUMS)
    sign good p/SHA256SUMS
}

# archive TAR_OPTION...
archive() {
    tar -czf p.tar.gz --owner=0 --group=0 "$@" p
    sign good p.tar.gz
}

umask 022
key good --faked-system-time '20240101T000000!'
key other
key young --faked-system-time '20400101T000000!'
expires=2024-06-01 key expired --faked-system-time '20240101T000000!'
cat good.gpg other.gpg >both.gpg
gpg --batch -q --export --armor good >armored.gpg

# ---- Whole ones.

fresh
archive
good=$(fingerprint good)
for package in p p/ ./p "$work/p" p.tar.gz; do
    expect 0 "whole, signed on $(date -u +%F) by $good" "$package" good.gpg
    expect 0 "who made it is not known" --unsigned "$package"
done
expect 0 whole p both.gpg
mkdir -- '-x y
'
cp -r p './-x y
/-p q'
cp p.tar.gz p.tar.gz.asc good.gpg './-x y
'
expect 0 whole -- '-x y
/-p q' '-x y
/good.gpg'
expect 0 whole -- '-x y
/p.tar.gz' good.gpg

# ---- Signatures: what is signed, by whom, of the directory and of the archive.

expect 1 "signed by another key, none of the keyring's: SHA256SUMS.asc" p other.gpg
expect 1 "signed by another key, none of the keyring's: p.tar.gz.asc" p.tar.gz other.gpg
# A line is KEY OPTION... and what is said of the signature that it makes.
while IFS='|' read -r by message; do
    # shellcheck disable=SC2086 # options
    sign ${by%% *} p/SHA256SUMS ${by#"${by%% *}"}
    expect 1 "$message: SHA256SUMS.asc" p "${by%% *}.gpg"
done <<'END'
expired --faked-system-time 20240201T000000!|signed by a key that has expired
young --faked-system-time 20400201T000000!|by its method or its date
good --textmode|not a signature of a file
good --default-sig-expire 1 --faked-system-time 20240201T000000!|the signature has expired
END
fresh
sign other p/SHA256SUMS
sed 's/^:---/---/' "gnupg/openpgp-revocs.d/$(fingerprint other).rev" >revocation
gpg --batch -q --homedir elsewhere --import other.gpg revocation
gpg --batch -q --homedir elsewhere --export >revoked.gpg
expect 1 "signed by a key that was revoked: SHA256SUMS.asc" p revoked.gpg
sign other p/SHA256SUMS && cat p/SHA256SUMS.asc >second
sign good p/SHA256SUMS && cat second >>p/SHA256SUMS.asc
gpg --batch -q --dearmor <p/SHA256SUMS.asc >one && gpg --batch -q --dearmor <second >>one
cp one p/SHA256SUMS.asc
expect 1 "more than one signature" p both.gpg
# A message that holds the signed text, whatever stands in the file beside it.
gpg --batch -q --yes --local-user good --armor --sign --output p/SHA256SUMS.asc p/SHA256SUMS
expect 1 "no signature in SHA256SUMS.asc" p good.gpg
echo text >p/SHA256SUMS.asc
expect 1 "no signature in SHA256SUMS.asc" p good.gpg
rm p/SHA256SUMS.asc
expect 1 "there is no SHA256SUMS.asc" p good.gpg
expect 0 whole --unsigned p
archive
expect 1 "there is no SHA256SUMS.asc" p.tar.gz good.gpg
printf x >>p.tar.gz
expect 1 "changed since it was signed: p.tar.gz" p.tar.gz good.gpg
rm p.tar.gz.asc
expect 1 "there is no p.tar.gz.asc" p.tar.gz good.gpg
head -c 150 p.tar.gz >cut.tar.gz
expect 1 "damaged" --unsigned cut.tar.gz

# ---- Contents, of a directory and of an archive that bears a good signature nevertheless. A line is
# what is done in the package, and what is said.

while IFS='|' read -r change message; do
    fresh
    (cd p && eval "$change")
    expect 1 "$message" p good.gpg
    expect 1 "$message" --unsigned p
    archive
    expect 1 "$message" p.tar.gz good.gpg
    expect 1 "$message" --unsigned p.tar.gz
done <<'END'
echo more >>zentrix|changed: zentrix
rm zentrix|missing: zentrix
rm tools/*|missing: tools/zentrix-report
rm SHA256SUMS|missing: SHA256SUMS
: >SHA256SUMS; sign good SHA256SUMS|nothing in SHA256SUMS
sed -i 's,zentrix$,../zentrix,' SHA256SUMS; sign good SHA256SUMS|not a line that a package's SHA256SUMS has
sed -i 's,zentrix$,@,' SHA256SUMS; mv zentrix @; sign good SHA256SUMS|added: @
cat SHA256SUMS >s; cat s >>SHA256SUMS; rm s; sign good SHA256SUMS|twice in SHA256SUMS: 3C01bc.bin
rm zentrix; mkdir zentrix; chmod 755 zentrix|missing: zentrix
: >libc.so|added: libc.so
: >@|added: @
: >'*'|added: \*
: >.hidden|added: .hidden
: >'zentrix '|added: zentrix\
: >$'zentrix\n'|added:
: >$'a\n0  zentrix'|added:
: >-c|added: -c
: >tools/more|added: tools/more
mkdir -m 755 empty|a directory was added: empty
mkdir -m 755 .d; : >.d/x|added: .d/x
mkfifo pipe|a link, or neither a file nor a directory: pipe
mv zentrix ../z; ln -s ../z zentrix|a link, or neither a file nor a directory: zentrix
mv tools ../t; ln -s ../t tools|a link, or neither a file nor a directory: tools
chmod g+w zentrix|others may write it: zentrix
chmod o+w zentrix|others may write it: zentrix
chmod o+w tools|others may write it: tools
chmod g+w .|others may write it: p
END
fresh
chown 12 p/zentrix
expect 1 "it belongs to another user: zentrix" p good.gpg
archive --owner=12
expect 1 "it belongs to another user: zentrix" p.tar.gz good.gpg
fresh
ln p/zentrix p/hard && archive && rm p/hard
expect 1 "a link" p.tar.gz good.gpg

# What tar would unpack elsewhere, or in the place of something else.
fresh
tar -cf twice.tar p
tar -rf twice.tar p/zentrix
gzip twice.tar
expect 1 "twice in the archive: zentrix" --unsigned twice.tar.gz
: >outside
tar -czf outside.tar.gz p outside
expect 1 "added outside of p: outside" --unsigned outside.tar.gz
tar -czPf absolute.tar.gz p "$work/outside"
expect 1 "added outside of p: $work/outside" --unsigned absolute.tar.gz
tar -czPf above.tar.gz p p/../outside
expect 1 "added: ../outside" --unsigned above.tar.gz

# ---- What can't be told.

archive
chmod o+w good.gpg
expect 2 "so the keyring proves nothing: $work/good.gpg" p good.gpg
chmod o-w good.gpg
chmod g+w p.tar.gz
expect 1 "others may write it" p.tar.gz good.gpg
chmod g-w p.tar.gz
expect 2 "gpg --dearmor" p armored.gpg
expect 2 "no keyring can be read" p nowhere.gpg
expect 2 "no such file or directory: nowhere" nowhere good.gpg
expect 2 "see --help" p
expect 2 "see --help" --unsigned p good.gpg
expect 2 "see --help" '' good.gpg
mkdir bin
for name in bash tar gzip sha256sum stat cat; do ln -s "$(type -P $name)" bin; done
path=$work/bin expect 2 "there is no gpgv here" p good.gpg
path=$work/bin expect 0 whole --unsigned p
! "$tree/script/verify" p good.gpg >/dev/full 2>/dev/null || complain "an answer that nobody got is a yes"

[ $failures = 0 ]
