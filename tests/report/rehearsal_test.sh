#!/usr/bin/env bash
# A run, its log, adapters.json from the log, the same run on those: the same console.
#
#   tests/report/rehearsal_test.sh FLEETS BUILD      (inside the sandbox)
#
# Nothing is left out of the comparison. What logs don't tell is seen by none of these runs: the
# adapters that the package doesn't support, IDs of vendors, the case of the library's MACs, and of
# YB its wrong values.
set -eu

fleets=$1 build=$2
work=/tmp/rehearsal
failures=0

failed() {
    echo "FAILED: $*" >&2
    failures=$((failures + 1))
}

# run DIR OPTION...: the console goes to DIR.console, the log to DIR.log.
run() {
    local dir=$1
    shift
    rm -rf /var/log/Marvek_Support
    (cd "$dir" && LD_LIBRARY_PATH=$dir ./zentrix "$@") >"$dir.console" 2>&1 || true
    mv /var/log/Marvek_Support/kvlnfwup.log "$dir.log"
}

# package FLEET DIR
package() {
    mkdir "$2"
    (cd "$2" && "$build/mkimage" --fleet "$fleets/$1" &&
        cp "$build/zentrix" "$build/lnxfwvt2" "$build/libkvmapi.so.6" .)
}

adapters() {
    "$build/zentrix-report" --adapters "$@"
}

# round_trip FLEET OPTION...
round_trip() {
    local fleet=$1 first=$work/first second=$work/second
    shift
    rm -rf "$work"
    mkdir "$work"
    package "$fleet" "$first"
    if [ "$fleet" = duplicate-macs ]; then
        run "$first" -v
        ! adapters "$first.log" >/dev/null 2>&1 || failed "$fleet: adapters from a log that lists none"
    fi
    run "$first" "$@"
    package "$fleet" "$second"
    adapters --output "$second/adapters.json" "$first.log" || failed "$fleet $*: no adapters"
    run "$second" "$@"
    [ "$(<"$first.console")" = "$(<"$second.console")" ] || {
        failed "$fleet $*: the rehearsal shows another console"
        tail -n 99 "$first.console" "$second.console" >&2
    }
}

for fleet in "$fleets"/*/; do
    fleet=${fleet%/}
    for option in '' -v -dir; do
        # A table doesn't show the word MFW in the line of another component.
        [ "$fleet $option" != "$fleets/corrupt -v" ] || continue
        # shellcheck disable=SC2086 # none or one
        round_trip "${fleet##*/}" $option
    done
done

# The images are newer than what they replace, whatever is known.
package rack "$work/third"
run "$work/third" -dir
adapters --output "$work/third/adapters.json" "$work/third.log"
rm "$work"/third/*.bin
(cd "$work/third" && "$build/mkimage" --newer)
run "$work/third" -f
! grep -E 'failed|not found|No update' "$work/third.console" || failed "an image that isn't right"
[ $failures = 0 ]
