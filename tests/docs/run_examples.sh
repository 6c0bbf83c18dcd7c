#!/usr/bin/env bash
# run_examples.sh FILE PROGRAMS: runs the examples that FILE shows and compares what they print.
#
# FILE is a Markdown file or a manual page.  An example is a block with a marker before it:
#   Markdown:     <!-- run: agentsim OPTIONS -->   then ```console ... ```
#   manual page:  .\" run: agentsim OPTIONS        then .Bd ... .Ed
# Its lines are "$ command", each followed by the output expected.  The block is run against a
# fresh stand-in Agent with these options; "run: shell" runs it with none.  A command whose
# output ends in a line "^C" is ended once it has printed the lines before.  The marker
# "program: NAME.c" makes ./NAME of a block of C for the blocks that follow.  A block without a
# marker is not run.  Times and processors of entries are masked on both sides.  Commands run in a
# folder that looks like the project's root.
#
# PROGRAMS is the folder of ruklog, ruklog-agentsim and libruklog.so.  /var/tmp must be private;
# tests/support/in_private_var_tmp.sh makes it so.
set -euo pipefail
[ $# -eq 2 ] || { echo "usage: run_examples.sh FILE PROGRAMS"; exit 2; }
file=$(realpath "$1")
programs=$(realpath "$2")
root=$(realpath "$(dirname "$0")/../..")
work=$(mktemp -d)
here=$work/here
mkdir "$here"
ln -s "$root"/* "$here"
export PATH="$programs:$PATH" TZ=UTC LC_ALL=C
agent=
commands=0 failures=0

stop_agent() {
    [ -n "$agent" ] || return 0
    kill "$agent" 2>/dev/null || true
    wait "$agent" || true
    agent=
}
trap 'stop_agent; rm -rf "$work"' EXIT

fail() {
    printf '%s:%s: %s\n' "$file" "$1" "$2"
    failures=$((failures + 1))
}

# Prints the marked blocks, a letter before each line: M its marker, C a command, O output or a
# program's line, E its end; X tells of a marker that marks nothing.  M, C and X have the line's
# number and a blank behind them.
marked_blocks() {
    awk '
    function unescape(text) {
        sub(/^\\&/, "", text)
        gsub(/\\\(aq/, "\047", text)
        gsub(/\\\(ha/, "^", text)
        gsub(/\\-/, "-", text)
        gsub(/\\e/, "\\", text)
        return text
    }
    BEGIN { is_page = ARGV[1] !~ /\.md$/ }
    !inside && /^(<!--|\.\\") (run|program): / {
        if (marker) print "X" marker_line
        marker = $0
        sub(/^[^ ]* /, "", marker)
        sub(/ *-->$/, "", marker)
        marker_line = NR
        next
    }
    !inside && marker && (is_page ? /^\.Bd / : /^```(console|c)$/) {
        inside = 1
        print "M" marker_line " " marker
        next
    }
    !inside && marker && NF { print "X" marker_line; marker = "" }
    !inside { next }
    is_page ? /^\.Ed/ : /^```$/ { inside = 0; marker = ""; print "E"; next }
    is_page { $0 = unescape($0) }
    /^\$ / && marker ~ /^run/ { print "C" NR " " substr($0, 3); next }
    { print "O" $0 }
    END { if (marker) print "X" marker_line }
    ' "$file"
}

# Entries begin with a time of 22 characters, a number and a processor.
mask() {
    sed -E 's/^[A-Z][a-z]{2} [ 0-9][0-9] [0-9:]{8}\.[0-9]{6}( +[0-9]+) +[0-9]+ /<time>\1 <cpu> /'
}

# as_expected: whether out is what expected says; difference tells what is not.
as_expected() { diff -u "$work/expected" <(mask <"$work/out") >"$work/difference"; }

start_agent() { # LINE OPTIONS
    local ready=
    # The options are words of a shell, as on a command line.
    exec 3< <(cd "$here" && eval "exec ruklog-agentsim $2" 2>&1)
    agent=$!
    read -r -t 20 ready <&3 || true
    case $ready in
    *serving*) ;;
    *) fail "$1" "the stand-in Agent did not start: $ready" ;;
    esac
}

# Runs a command that goes on for ever until it has printed what is expected.
follow() { # COMMAND
    : >"$work/out"
    (cd "$here" && eval "exec $1") </dev/null >"$work/out" 2>&1 &
    local follower=$! tries
    for ((tries = 0; tries < 200; tries++)); do
        as_expected && break
        [ "$(wc -l <"$work/out")" -le "$(wc -l <"$work/expected")" ] || break
        sleep 0.05
    done
    kill "$follower"
    wait "$follower" || true
}

check_command() { # LINE COMMAND, the expected output in raw
    commands=$((commands + 1))
    if [ "$(tail -n 1 "$work/raw")" = '^C' ]; then
        sed '$d' "$work/raw" | mask >"$work/expected"
        follow "$2"
    else
        mask <"$work/raw" >"$work/expected"
        (cd "$here" && eval "$2") </dev/null >"$work/out" 2>&1 || true
    fi
    as_expected || { fail "$1" "$2"; tail -n +3 "$work/difference"; }
}

compile() { # LINE NAME.c, the program in raw
    commands=$((commands + 1))
    cp "$work/raw" "$here/$2"
    # Linked as C++, since a library that was built for a sanitizer needs that one's C++ part.
    # Unquoted: several flags.
    # shellcheck disable=SC2086
    { "${CC:-cc}" -std=c11 -Wall -Wextra -Werror ${CFLAGS:-} -I "$root/include" \
        -c "$here/$2" -o "$work/object.o" &&
        "${CXX:-c++}" ${CFLAGS:-} "$work/object.o" -o "$here/${2%.c}" \
            -L "$programs" -Wl,-rpath,"$programs" -lruklog; } ||
        fail "$1" "$2 does not compile"
}

# What a block has gathered is run when the next command or the block's end comes.
finish_command() {
    [ -z "$command" ] || check_command "$at" "$command"
    command=
    : >"$work/raw"
}

begin_block() { # LINE MARKER
    at=$1 program=
    : >"$work/raw"
    case $2 in
    'run: agentsim'*) start_agent "$1" "${2#run: agentsim}" ;;
    'run: shell') ;;
    'program: '*.c) program=${2#program: } ;;
    *) fail "$1" "unknown marker: $2" ;;
    esac
}

end_block() {
    if [ -n "$program" ]; then
        compile "$at" "$program"
    elif [ -z "$command" ]; then
        fail "$at" "the block shows no command"
    fi
    finish_command
    stop_agent
}

command='' program='' at=0
while IFS= read -r line <&4; do
    text=${line:1}
    case $line in
    M*) begin_block "${text%% *}" "${text#* }" ;;
    C*) finish_command; at=${text%% *} command=${text#* } ;;
    O*) printf '%s\n' "$text" >>"$work/raw" ;;
    E) end_block ;;
    X*) fail "$text" "no whole block follows this marker" ;;
    esac
done 4< <(marked_blocks)

[ "$commands" -gt 0 ] || fail 1 "no example is marked to be run"
printf '%s: %d examples, %d failed\n' "$(basename "$file")" "$commands" "$failures"
[ "$failures" -eq 0 ]
