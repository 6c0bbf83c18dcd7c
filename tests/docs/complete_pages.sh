#!/usr/bin/env bash
# complete_pages.sh MANUAL PROGRAMS: the pages tell of every command, option and header, and of no
# other.
set -euo pipefail
export LC_ALL=C # [a-z] are the letters of ASCII
manual=$1 programs=$2
root=$(realpath "$(dirname "$0")/../..")
status=0

# The two lists, a name a line, must be the same.
same() { # WHAT THERE-IS WRITTEN
    if [ -z "$2" ] || ! diff -u --label "what there is" <(sort -u <<<"$2") --label "$1" <(sort -u <<<"$3"); then
        echo "$1: the lists differ"
        status=1
    fi
}

"$programs/ruklog-agentsim" >/dev/null &
agent=$!
trap 'kill "$agent"' EXIT
for ((tries = 0; tries < 200; tries++)); do
    "$programs/ruklog" show >/dev/null && break
    sleep 0.05
done

# Keywords begin a line of the help and end before an argument, which may also be "cookie".
same "commands in ruklog.1" \
    "$("$programs/ruklog" help | sed -En '3,$ { s/^([a-z][a-z ]*[a-z]).*/\1/; s/ cookie$//; /^[a-z]/p }' | grep -vx show)" \
    "$(sed -En '/^\.Sh COMMANDS/,/^\.Sh OUTPUT/ { /^\.It Cm (help|all|none|default)( |$)/d; s/^\.It Cm ([a-z ]*[a-z])( Op| Ar|$).*/\1/p }' \
        "$manual/ruklog.1")"

same "options in ruklog-agentsim.8" \
    "$("$programs/ruklog-agentsim" --help | sed -En 's/^  --([a-z-]+).*/\1/p')" \
    "$(sed -En 's/\\-/-/g; s/^\.It Fl Fl ([a-z-]+).*/\1/p' "$manual/ruklog-agentsim.8")"

same "headers in libruklog.3" \
    "$(cd "$root/include" && printf '%s\n' ruk/*.h)" \
    "$(sed -En 's/^\.(It )?In (ruk\/[a-z_]+\.h).*/\2/p' "$manual/libruklog.3")"

exit "$status"
