#!/usr/bin/env bash
# bash_test.sh PROGRAMS: what bash offers for ruklog and ruklog-agentsim.
set -euo pipefail
programs=$1
here=$(realpath "$(dirname "$0")")
failures=0
# shellcheck disable=SC1091
source "$here/../../completions/ruklog.bash"
# shellcheck disable=SC1091
source "$here/../../completions/ruklog-agentsim.bash"

# Only a shell that completes has it.
compopt() { :; }

# offered WORD...: completes the last word of a line, with the function that bash would call.
offered() {
    local registered
    registered=$(complete -p "$1")
    COMP_WORDS=("$@") COMP_CWORD=$(($# - 1)) COMP_LINE="$*"
    COMP_POINT=${#COMP_LINE}
    COMPREPLY=()
    registered=${registered##*-F }
    "${registered%% *}" "$1" "${COMP_WORDS[COMP_CWORD]}" "${COMP_WORDS[COMP_CWORD - 1]}"
}

# expect OFFERS WORD...
expect() {
    local expected=$1
    shift
    offered "$@"
    if [ "${COMPREPLY[*]}" != "$expected" ]; then
        printf 'line:     %s\nexpected: %s\noffered:  %s\n' "$*" "$expected" "${COMPREPLY[*]}"
        failures=$((failures + 1))
    fi
}

all_levels='all none default error notice warning info debug temp packet log'

# The grammar, with a table that holds odd names.
PATH="$here/fake:$programs:$PATH"
expect 'help show start stop resume clear debug' ruklog ''
expect 'show start stop' ruklog s
expect 'clear' ruklog clear
expect '' ruklog x
expect 'info all last tail debug' ruklog show ''
expect 'info all last tail debug' ruklog SHOW ''
expect 'tail' ruklog show t
expect '' ruklog show last ''
expect '' ruklog show debug ''
expect '' ruklog help ''
expect '' ruklog start ''
expect '' ruklog stop 1
expect '' ruklog resume ''
expect '' ruklog clear ''
expect 'all flow flood mac-table.v2/a:b a_name_longer_than_20_columns' ruklog debug ''
expect 'flow flood' ruklog debug fl
expect 'all a_name_longer_than_20_columns' ruklog debug a
expect '' ruklog debug '*'
expect "$all_levels" ruklog debug flow ''
expect "$all_levels" ruklog DEBUG flow ''
expect "$all_levels" ruklog debug flow none e ''
expect 'default debug' ruklog debug flow de
expect '-all -none -default -error -notice -warning -info -debug -temp -packet -log' \
    ruklog debug flow -
expect '-warning' ruklog debug all all -w

# No Agent, then an Agent, with the tool itself.
PATH="$programs:${PATH#"$here/fake:"}"
expect 'all' ruklog debug ''
work=$(mktemp -d)
ruklog-agentsim >"$work/said" &
agent=$!
trap 'kill "$agent"; rm -rf "$work"' EXIT
for ((tries = 0; tries < 200; tries++)); do
    grep -q serving "$work/said" && break
    sleep 0.05
done
expect 'all kern user daemon auth syslog cron local flow port bridge vxlan mirror timer' \
    ruklog debug ''
expect 'port' ruklog debug po

# The stand-in Agent's options are those of its help, and some have values.
expect "$(ruklog-agentsim --help | LC_ALL=C sed -En 's/^  (--[a-z-]+).*/\1/p' | sort | xargs)" \
    ruklog-agentsim ''
expect '--preload' ruklog-agentsim --pr
expect '--kmsg' ruklog-agentsim --rate 5 --k
expect '' ruklog-agentsim --rate ''
expect '' ruklog-agentsim --rate = ''
cd "$work"
touch events.txt extra.txt
expect 'events.txt' ruklog-agentsim --feed ev
expect 'events.txt' ruklog-agentsim --feed = ev
expect 'extra.txt' ruklog-agentsim --kmsg --socket ex
mapfile -t files < <(compgen -f)
expect "${files[*]}" ruklog-agentsim --feed =

[ "$failures" -eq 0 ]
