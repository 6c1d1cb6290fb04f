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
work=$(mktemp -d)
trap 'rm -r "$work"' EXIT

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

# ended SIGNAL STATUS: sent to the sandbox's own process once the command runs. The pipe ends with
# the last process that was started inside.
ended() {
    local status=0 rest=0
    exec 3< <(exec env --default-signal=INT "$sandbox" --whole \
        sh -c 'trap "" INT TERM; sleep 60 & echo runs; sleep 60')
    read -r -t 30 -u 3 || true
    kill -s "$1" $!
    wait $! || status=$?
    read -r -t 10 -u 3 || rest=$?
    [ "$status $rest" = "$2 1" ] || {
        echo "FAILED: $1 gave $status instead of $2, and what ran inside: $rest instead of 1" >&2
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
promised 0 --mounts sh -c 'mount -t tmpfs none /root && chown 12 /tmp && [ "$(id -u)" = 0 ]'
# What is shown read-only stays so: outside, a root's file must not appear.
mkdir "$work/shown"
# In a machine within a sandbox, as script/fresh makes one, no namespace below can be had.
! bwrap --unshare-user --uid 0 --gid 0 --disable-userns --ro-bind / / true 2>/dev/null ||
    promised 1 --ro "$work/shown:/shown" sh -c 'mount -o remount,rw,bind /shown; touch /shown/x'
promised 1 unshare --user --map-root-user --mount true
promised 7 sh -c 'exit 7'
promised 143 sh -c 'kill -TERM $$'
promised 125 --ro "$tests/nowhere" true
promised 125 --nonsense true
ended TERM 143
ended KILL 137
ended INT 130

[ $failures = 0 ]
