#!/usr/bin/env bash
# A run, its log, adapters.json from the log, the same run on those: the same console.
#
# Arguments: the directory of fleets, and that of the build. Works only inside the sandbox.
# What logs don't tell is seen by none of these runs: adapters that the package doesn't support, IDs
# of vendors, the case of the library's MACs, and wrong values of YB.
set -eu

fleets=$1 build=$2
work=/tmp/rehearsal

fail() {
    echo "FAILED: $*" >&2
    exit 1
}

# run DIR NAME OPTION...: the console goes to DIR.NAME.console, the log to DIR.NAME.log.
run() {
    local dir=$1 name=$1.$2
    shift 2
    rm -rf /var/log/Marvek_Support
    (cd "$dir" && LD_LIBRARY_PATH=$dir ./zentrix "$@") >"$name.console" 2>&1 || true
    mv /var/log/Marvek_Support/kvlnfwup.log "$name.log"
}

# package FLEET DIR
package() {
    rm -rf "$2"
    mkdir -p "$2"
    cp "$build/zentrix" "$build/lnxfwvt2" "$build/libkvmapi.so.6" "$2"
    (cd "$2" && "$build/mkimage" --fleet "$1")
}

# refused WHY LOG...
refused() {
    local why=$1 said
    shift
    ! said=$("$build/mkadapters" "$@" 2>&1) || fail "$why: adapters all the same"
    [[ $said = "mkadapters: ${!#}: "*"$why"* ]] || fail "$why: $said"
}

# rehearse FLEET NAME...: gives the second package the adapters of these runs of the first.
rehearse() {
    package "$1" "$work/second"
    shift
    set -- "${@/#/$work/first.}"
    "$build/mkadapters" "${@/%/.log}" >"$work/second/adapters.json"
}

# compare FLEET NAME OPTION...: a run of the second package with the first one's.
compare() {
    local fleet=$1 name=$2
    shift 2
    run "$work/second" "$name" "$@"
    [ "$(<"$work/first.$name.console")" = "$(<"$work/second.$name.console")" ] ||
        fail "$fleet $name: another console: $(cat "$work"/{first,second}."$name.console")"
}

round_trips() {
    local fleet=$1
    package "$fleet" "$work/first"
    if [ "${fleet##*/}" = duplicate-macs ]; then
        run "$work/first" v -v
        refused 'lists no adapters' "$work/first.v.log"
    fi
    run "$work/first" v -v
    run "$work/first" dir -dir
    run "$work/first" update
    run "$work/first" after -v
    rehearse "$fleet" dir
    compare "$fleet" dir -dir
    rehearse "$fleet" update
    compare "$fleet" update
    # A table doesn't show the word MFW in the line of another component.
    [ "${fleet##*/}" != corrupt ] || return 0
    rehearse "$fleet" v
    compare "$fleet" v -v
    rehearse "$fleet" dir after
    compare "$fleet" after -v
    grep -q '"line"' "$work/second/adapters.json" || fail "$fleet: the earlier log's lines are gone"
}

mkdir -p "$work"
for fleet in "$fleets"/*; do
    round_trips "$fleet"
done

# A version behind a letter, words of two components, one within a word, an earlier one in a later line.
cp -r "$fleets/one" "$work/odd"
cat >"$work/odd/adapters.json" <<'.'
{"adapters": [{"vendor": "1D2B", "device": "3C01", "subsystemVendor": "1E57", "subsystem": "0B21", "bus": 1,
  "ports": [{"mac": "020000000001", "driver": "2.1.6"}], "components": {
    "bc": {"version": "7.10.4", "line": " 1 bc1 UMP v"}, "ncsi": {"version": "2.0.8", "line": " 2 NCSI_E -"},
    "ump": {"version": "5.0", "line": " 3 xUMPx "}, "ipmi": {"version": "1.2", "line": " 4 MFW1 "},
    "mfw1": {"version": "3", "line": " 5 mfw1 "}}}]}
.
package "$work/odd" "$work/first"
run "$work/first" v -v
run "$work/first" dir -dir
rehearse "$work/odd" dir
compare odd v -v
grep -q 'Assumed, because no log tells it: vendor and subsystem vendor, subsystem, a bus of its own, no stamp' \
    "$work/second/adapters.json" || fail "assumed, and not a word of it: $(<"$work/second/adapters.json")"

# Nothing is made of what can't be one server.
log=$work/first.dir.log
sed 's/020000000001/02000000001/' "$log" >"$work/digits"
sed 's/020000000001/020000000009/' "$log" >"$work/mac"
sed 's/3C01/3C02/' "$log" >"$work/id"
refused 'twelve hexadecimal digits' "$work/digits"
refused "another server's" "$log" "$work/mac"
refused "another server's" "$log" "$work/id"
refused '' "$work/none.log"

# The images are newer than what they replace, whatever is known.
package "$fleets/rack" "$work/first"
run "$work/first" dir -dir
rehearse "$fleets/rack" dir
rm "$work"/second/*.bin
(cd "$work/second" && "$build/mkimage" --newer)
run "$work/second" f -f
! grep -E 'failed|not found|No update' "$work/second.f.console" || fail "an image that isn't right"
