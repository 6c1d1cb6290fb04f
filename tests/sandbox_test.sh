#!/usr/bin/env bash
# What script/sandbox promises.
#
#   tests/sandbox_test.sh SANDBOX
# shellcheck disable=SC2016 # it is to expand inside
set -eu

sandbox=$1
tests=$(cd "$(dirname "$0")" && pwd)
"$sandbox" --whole true 2>/dev/null || exit 77
failures=0

# promised STATUS ARGUMENT...
promised() {
    local wanted=$1 status=0
    shift
    "$sandbox" --whole "$@" >/dev/null 2>&1 || status=$?
    [ "$status" = "$wanted" ] || {
        echo "FAILED: $status instead of $wanted: $*" >&2
        failures=$((failures + 1))
    }
}

# ended SIGNAL STATUS: sent to the sandbox's own process; nothing inside goes on.
ended() {
    local status=0 gone=
    env --default-signal=INT "$sandbox" --whole sh -c 'trap "" INT TERM; sleep 61.7 & sleep 61.7' 2>/dev/null &
    until pgrep -f 'sleep 61\.7' >/dev/null; do sleep 0.1; done
    kill -s "$1" $!
    wait $! || status=$?
    for _ in {1..50}; do
        pgrep -f 'sleep 61\.7' >/dev/null || { gone=yes && break; }
        sleep 0.1
    done
    [ "$status$gone" = "$2yes" ] || {
        echo "FAILED: $1 gave $status; gone: ${gone:-no}" >&2
        failures=$((failures + 1))
    }
}

promised 0 --ro "$tests:/shown dir" test -e "/shown dir/unit"
promised 1 --ro "$tests:/shown" touch /shown/x
for path in /etc/x /usr/x /proc/sys/vm/swappiness; do
    promised 1 touch "$path"
done
promised 0 sh -c 'touch /tmp/x /var/log/x /x && [ "$(ls /var/log)" = x ]'
promised 2 ls "$tests"
promised 0 --chdir /usr/bin test -e env
promised 0 sh -c 'mount -t tmpfs none /root && [ "$(id -u)" = 0 ]'
promised 7 sh -c 'exit 7'
promised 143 sh -c 'kill -TERM $$'
promised 125 --ro "$tests/nowhere" true
promised 125 --nonsense true
ended TERM 143
ended KILL 137
ended INT 130

[ $failures = 0 ]
