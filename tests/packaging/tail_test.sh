#!/bin/sh
# tail_test.sh RUKLOG AGENTSIM SOURCE: a logger that reads "ruklog show tail" from a pipe gets each
# line when it happens, not when a buffer is full.
# Runs with a /var/tmp of its own.
set -eu
ruklog=$1
agentsim=$2
. "$3/tests/packaging/common.sh"
needs logger

mkfifo "$work/events" "$work/pipe"
exec 3<>"$work/events"
# One entry from the start: a tail of an empty log waits for numbers that only a full one reaches.
serve "$agentsim" --preload 1 --feed "$work/events"

logger --no-act --socket-errors=off --stderr --tag ruklog <"$work/pipe" 2>"$work/logged" &
running="$running $!"
"$ruklog" show tail >"$work/pipe" &
running="$running $!"
until_found 'ruklog: Timestamp ' "$work/logged"

for event in "fan 2 is slow" "fan 2 has stopped"; do
    grep -q "$event" "$work/logged" && fail "\"$event\" is there before it happens"
    echo "Warning: $event" >&3
    until_found "ruklog: .* Warning $event" "$work/logged"
done
echo "the logger got 2 events as they happened"
