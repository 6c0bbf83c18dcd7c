# What the tests of the installation share.  Sourced; needs the variable "work", a scratch folder.

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
    agent=$!
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
