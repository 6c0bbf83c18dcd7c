# shellcheck shell=sh
# What the tests of the installation share.  Sourced; makes the scratch folder $work, which goes at
# the end, as do the processes in $running.
work=$(mktemp -d)
running=
# Unquoted: several processes.
# shellcheck disable=SC2086
trap '[ -z "$running" ] || kill $running 2>/dev/null; rm -rf "$work"' EXIT

fail() { echo "FAILED: $*"; exit 1; }

# same NAME EXPECTED GOT: the two texts are equal.
same() {
    printf '%s\n' "$2" >"$work/expected"
    printf '%s\n' "$3" >"$work/got"
    diff -u "$work/expected" "$work/got" || fail "$1"
}

# needs PROGRAM...: without these the test counts as skipped.
needs() {
    for program; do
        command -v "$program" >/dev/null && continue
        echo "SKIPPED: there is no $program here"
        exit 77
    done
}

# serve AGENTSIM OPTION...: starts a stand-in Agent and waits until it serves.
serve() {
    "$@" >"$work/agentsim" 2>&1 &
    running="$running $!"
    until_found serving "$work/agentsim"
}

# until_found TEXT FILE: waits for a line with TEXT, 10 seconds at most.
until_found() {
    tries=0
    until grep -qs -- "$1" "$2"; do
        tries=$((tries + 1))
        [ $tries -lt 200 ] || fail "\"$1\" does not come: $(cat "$2")"
        sleep 0.05
    done
}
