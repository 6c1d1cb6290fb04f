#!/usr/bin/env bash
# What script/verify takes and refuses. In script/sandbox, where keys and their agent are gone with it.
#
#   tests/package/verify_test.sh VERSION_ORDER
#
# VERSION_ORDER compares build versions as zentrix does.
set -eu

# shellcheck source=tests/package/lib.sh
. "$(dirname "$0")/lib.sh"
export TMPDIR=$work/private
mkdir -m 700 elsewhere private

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
    [ "$(echo "$TMPDIR"/*)" = "$TMPDIR/*" ] || complain "left behind for $*: $(ls "$TMPDIR")"
}

fingerprint() {
    gpg --batch --list-keys --with-colons "$1" 2>>"$work/gpg.log" | sed -n '/^fpr:/{s/^fpr:*//;s/:.*//;p;q}'
}

# sign KEY FILE OPTION...
sign() {
    local key=$1 file=$2
    shift 2
    gpg --batch -q --yes --local-user "$key" --armor --detach-sign "$@" --output "$file.asc" "$file" \
        2>>"$work/gpg.log"
}

# A whole package p/ of its own directory.
fresh() {
    rm -rf p p.tar.gz*
    mkdir -p p/tools
    echo 7.12b.4.3a >p/BuildVersion.txt
    echo firmware >p/3C01bc.bin
    echo program | tee p/zentrix p/lnxfwvt2 >p/tools/zentrix-report
    chmod -R go-w p
    chmod +x p/{zentrix,lnxfwvt2,tools/zentrix-report}
    (cd p && sha256sum 3C01bc.bin BuildVersion.txt lnxfwvt2 tools/zentrix-report zentrix >SHA256SUMS)
    sign good p/SHA256SUMS
}

# archive TAR_OPTION...
archive() {
    tar -czf p.tar.gz --owner=0 --group=0 "$@" p
    sign good p.tar.gz
}

key good --faked-system-time '20240101T000000!'
key other
key young --faked-system-time '20400101T000000!'
expires=2024-06-01 key expired --faked-system-time '20240101T000000!'
cat good.gpg other.gpg >both.gpg
sed 's/^:---/---/' "gnupg/openpgp-revocs.d/$(fingerprint other).rev" >revocation
gpg --batch -q --homedir elsewhere --import other.gpg revocation
gpg --batch -q --homedir elsewhere --export >revoked.gpg

# ---- Whole ones.

fresh
archive
for package in p p/ ./p "$work/p" p.tar.gz; do
    expect 0 "build 7.12b.4.3a, whole, signed on $(date -u +%F) by $(fingerprint good)" "$package" good.gpg
    expect 0 "who made it is not known" --unsigned "$package"
done
expect 0 whole p both.gpg
odd=$'-x y\n'
mkdir -- "$odd"
cp -r p "./$odd/-p q"
cp p.tar.gz p.tar.gz.asc good.gpg "./$odd"
expect 0 whole -- "$odd/-p q" "$odd/good.gpg"
expect 0 whole -- "$odd/p.tar.gz" good.gpg
# What a caller's surroundings would have tools do.
for setting in TAR_OPTIONS=--owner=9 POSIXLY_CORRECT=1 GNUPGHOME=/nowhere GZIP=-l CDPATH=/ BASH_ENV=/nowhere; do
    env "$setting" "$tree/script/verify" p.tar.gz good.gpg >/dev/null 2>err || complain "$setting: $(cat err)"
done

# ---- Signatures: what is signed, by whom, of the directory and of the archive.

expect 1 "signed by another key, none of the keyring's: SHA256SUMS.asc" p other.gpg
expect 1 "signed by another key, none of the keyring's: p.tar.gz.asc" p.tar.gz other.gpg
# A line is KEY OPTION... and what is said of the signature that it makes.
while IFS='|' read -r by message; do
    # shellcheck disable=SC2086 # options
    sign ${by%% *} p/SHA256SUMS ${by#"${by%% *}"}
    expect 1 "$message: SHA256SUMS.asc" p "${by%% *}.gpg"
done <<'END'
expired --faked-system-time 20240201T000000!|(EXPKEYSIG)
young --faked-system-time 20400201T000000!|
good --faked-system-time 20400201T000000!|signed in the future, on 2040-02-01
good --digest-algo RIPEMD160|by its method or its date
good --digest-algo SHA1|by its method or its date
good --textmode|not a signature of a file
good --default-sig-expire 1 --faked-system-time 20240201T000000!|(EXPSIG)
END
fresh
sign other p/SHA256SUMS
expect 1 "(REVKEYSIG): SHA256SUMS.asc" p revoked.gpg
cp p/SHA256SUMS.asc second
sign good p/SHA256SUMS
cat p/SHA256SUMS.asc second | gpg --batch -q --dearmor >one
gpg --batch -q --dearmor <second >>one
cp one p/SHA256SUMS.asc
expect 1 "not one signature: SHA256SUMS.asc" p both.gpg
# A message that holds the signed text, whatever stands in the file beside it.
gpg --batch -q --yes --local-user good --armor --sign --output p/SHA256SUMS.asc p/SHA256SUMS
expect 1 "not one signature: SHA256SUMS.asc" p good.gpg
echo text >p/SHA256SUMS.asc
expect 1 "not one signature: SHA256SUMS.asc" p good.gpg
rm p/SHA256SUMS.asc
expect 1 "not one signature: SHA256SUMS.asc" p good.gpg
expect 0 whole --unsigned p
archive
expect 1 "not one signature: SHA256SUMS.asc" p.tar.gz good.gpg
printf x >>p.tar.gz
expect 1 "changed since it was signed: p.tar.gz" p.tar.gz good.gpg
rm p.tar.gz.asc
expect 1 "not one signature: p.tar.gz.asc" p.tar.gz good.gpg

# ---- Contents, of a directory and of an archive that bears a good signature nevertheless. A line is
# what is done in the package, and what is said.

mode="a link, of another user, or of a mode that lets others write or lends rights"
while IFS='|' read -r change message; do
    fresh
    (cd p && eval "$change")
    expect 1 "${message/MODE/$mode}" --unsigned p
    archive --xattrs --xattrs-include='*'
    expect 1 "${message/MODE/$mode}" p.tar.gz good.gpg
done <<'END'
echo more >>zentrix|changed: zentrix
rm zentrix|missing: zentrix
rm SHA256SUMS|missing: SHA256SUMS
: >SHA256SUMS; sign good SHA256SUMS|added: 3C01bc.bin
sed -i 's,zentrix$,../zentrix,' SHA256SUMS; sign good SHA256SUMS|missing: ../zentrix
sed -i 's,zentrix$,@,' SHA256SUMS; mv zentrix @; sign good SHA256SUMS|added
sed -i '$s/^/SHA256 (/' SHA256SUMS; sign good SHA256SUMS|missing
cat SHA256SUMS >s; cat s >>SHA256SUMS; rm s; sign good SHA256SUMS|missing: 3C01bc.bin
echo '#' >>SHA256SUMS; sign good SHA256SUMS|missing:
: >BuildVersion.txt; sed -i '/Build/d' SHA256SUMS; sha256sum BuildVersion.txt >>SHA256SUMS; sign good SHA256SUMS|no build version
rm zentrix; mkdir zentrix; chmod 755 zentrix|not executable
: >SHA256SUMS.bak|added: SHA256SUMS.bak
: >.hidden|added
: >'zentrix '|added
: >$'zentrix\n'|added
: >$'a\n0  zentrix'|added
: >'"x" 0'|added
: >-c|added
: >tools/more|added: tools/more
mkdir -m 755 empty|added: empty
mkdir -m 755 .d; : >.d/x|added
for ((i = 0; i < 1001; i++)); do : >f$i; done|more than 1000 entries
mkfifo pipe|MODE: block
mv zentrix ../z; ln -s ../z zentrix|MODE: block
chmod g+w zentrix|MODE: block
chmod o+w tools|MODE: block
chmod g+w .|MODE: block
chmod u+s zentrix|MODE: block
chmod g+s tools|MODE: block
setcap cap_net_raw+ep zentrix|MODE: block
chmod -x zentrix|not executable
chmod -x lnxfwvt2|not executable
chmod -x tools/zentrix-report|not executable
END
fresh
chown 12 p/zentrix
expect 1 "$mode" p good.gpg
archive --owner=12
expect 1 "$mode" p.tar.gz good.gpg

# What an archive alone can be: a line makes it of p/. Signed it must be refused as well.
while IFS='|' read -r make message; do
    fresh
    eval "$make"
    sign good p.tar.gz
    expect 1 "$message" --unsigned p.tar.gz
    expect 1 "$message" p.tar.gz good.gpg
done <<'END'
ln p/zentrix p/hard; archive|a link
truncate -s 2G p/zentrix; archive --sparse|more than 1000 entries or 1073741824 bytes
tar -cf p.tar p; tar -rf p.tar p/zentrix; gzip p.tar|twice in the archive
: >outside; tar -czf p.tar.gz p outside|added
: >outside; tar -czPf p.tar.gz p "$work/outside"|added
tar -czPf p.tar.gz p p/../good.gpg|added
tar -C p -czf p.tar.gz .|added
archive; printf x >>p.tar.gz|damaged
tar -cf p.tar p; printf x >>p.tar; gzip p.tar|bytes behind the archive's end
archive; cp p.tar.gz q; cat q >>p.tar.gz|bytes behind the archive's end
archive; head -c 150 p.tar.gz >q; mv q p.tar.gz|damaged
echo text >p.tar.gz|damaged
echo text >q; gzip -c q >p.tar.gz|damaged
END

# ---- No way back: what is older than asked for, by zentrix's own comparison over random pairs.

fresh
expect 0 whole --at-least 7.12b.4.3a p good.gpg
expect 1 "an older build" --at-least 7.12b.4.3b p good.gpg
expect 1 "an older build" --at-least 7.12b.10.3a --unsigned p
expect 2 "no version: 7.12b.4" --at-least 7.12b.4 p good.gpg
eval "$(sed -n '/^sortable() {/,/^}/p' "$tree/script/verify")"
# shellcheck disable=SC2034 # taken by their names
{
    numbers=(0 7 007 12 3 2147483647 2147483648 99999999999999999999 '')
    letters=(a b B z Z)
    dots=(. . . . .. '')
    thirds=(4 04 -3 +5 ' 6' 4x x -2147483649 99999999999)
}
# Adds any element of a list.
add() {
    local -n list=$1
    text+=${list[RANDOM % ${#list[@]}]}
}
RANDOM=1
for ((i = 0; i < 300; i++)); do
    text=
    for part in numbers dots numbers letters dots thirds dots numbers letters; do add $part; done
    versions[i]=$text
    ranks[i]=$(LC_ALL=C sortable "$text") || ranks[i]=
done
for ((pair = 0; pair < 3000; pair++)); do
    i=$((RANDOM % 300)) j=$((RANDOM % 300)) older=1
    [[ -z ${ranks[i]} || -z ${ranks[j]} || ${ranks[i]} < ${ranks[j]} ]] || older=0
    echo "${versions[i]}|${versions[j]}" >&3
    echo "${versions[i]}|${versions[j]} $older"
done 3>pairs >compared
"$1" <pairs | diff - compared || complain "zentrix compares otherwise"
[ "$(grep -c '0$' compared)" -gt 100 ] || complain "too few versions"

# ---- What can't be told.

archive
chmod o+w good.gpg
expect 2 "so the keyring proves nothing: good.gpg" p good.gpg
chmod o-w good.gpg
chmod g+w p.tar.gz
expect 1 "others may write it" p.tar.gz good.gpg
chmod g-w p.tar.gz
# gpgv would judge by the first copy, or find no key where text comes first.
cat other.gpg revoked.gpg >twice.gpg
{ echo text && gpg --batch -q --export --armor good; } >armored.gpg
for keyring in twice.gpg armored.gpg; do
    expect 2 "gpg --dearmor converts it), or damaged, or has a key twice" p $keyring
done
expect 2 "no keyring can be read" p nowhere.gpg
expect 2 "no such file or directory: nowhere" nowhere good.gpg
expect 2 "see --help" p
expect 2 "see --help" --unsigned p good.gpg
expect 2 "see --help" '' good.gpg
mkdir bin
for name in env bash tar gzip sha256sum stat cat awk sed find sort cut diff cmp cp mktemp rm mkdir realpath tail tr; do
    ln -s "$(type -P $name)" bin
done
path=$work/bin expect 2 "there is no gpgv here" p good.gpg
path=$work/bin expect 0 whole --unsigned p
path=:$PATH expect 2 "PATH has a directory that isn't absolute" --unsigned p
! "$tree/script/verify" p good.gpg >/dev/full 2>/dev/null || complain "an answer that nobody got is a yes"

[ $failures = 0 ]
